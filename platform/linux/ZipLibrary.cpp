#include "platform/ZipLibrary.h"

#include "platform/RuntimeError.h"
#include "platform/linux/ExecuteBits.h"
#include "platform/linux/HostPath.h"
#include "platform/linux/MemberReader.h"
#include "platform/linux/TargetFolder.h"
#include "platform/zip/ZipDirectory.h"
#include "platform/zip/ZipRules.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>

namespace korlan {
namespace {

// Stored, deflated, bzip2. Of the newer methods the archive itself says how much memory they take, up to 4 GB.
bool MethodIsKnown(std::uint32_t method) {
    return method == 0 || method == 8 || method == 12;
}

ListedMember Listed(const ZipMember& member) {
    const std::time_t modified = member.modified;
    std::tm local{};
    localtime_r(&modified, &local);
    return {member.name,      member.size,   member.packed, local.tm_year + 1900,
            local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min};
}

class Extraction {
public:
    Extraction(const std::string& archivePath, USERFUNCTIONS& functions)
        : file_(archivePath), functions_(functions), questions_(functions) {}

    ZipOutcome Run(const std::string& folder);

private:
    void TakeMember(const TargetFolder& folder, const ZipMember& member);
    ZipOutcome ExtractMember(const TargetFolder& folder, const TargetName& target, const ZipMember& member);
    ZipOutcome WriteMember(const ZipMember& member, MemberReader& reader, MemberReader::End end, std::string_view block,
                           NewFile& file);
    MemberReader::End FirstBlock(const ZipMember& member, MemberReader& reader, std::string_view& block);
    void LeaveOut(const ZipMember& member, ZipOutcome outcome, const char* reason);
    void Yield();
    void Print(const std::string& text) {
        if (functions_.print) functions_.print(text);
    }

    ArchiveFile file_;
    USERFUNCTIONS& functions_;
    ZipQuestions questions_;
    bool passwordWaiting_ = false; // the reader has not asked for it yet
    std::chrono::steady_clock::time_point yielded_ = std::chrono::steady_clock::now();
    ZipOutcome outcome_ = ZipOutcome::Well;
};

ZipOutcome Extraction::Run(const std::string& folderPath) {
    const auto read = [this](std::uint64_t offset, std::size_t count) { return file_.Read(offset, count); };
    const auto members = ReadZipDirectory(file_.Size(), read);
    if (!members) return read(0, 2) == "PK" ? ZipOutcome::Damaged : ZipOutcome::NoArchive; // cut off
    if (members->empty()) return ZipOutcome::Warning;
    const TargetFolder folder(folderPath);
    if (!folder) return ZipOutcome::CannotWrite;
    for (const ZipMember& member : *members) {
        TakeMember(folder, member);
        if (outcome_ == ZipOutcome::CannotWrite) break;
        Yield();
    }
    return outcome_;
}

void Extraction::TakeMember(const TargetFolder& folder, const ZipMember& member) {
    if (member.kind == ZipMember::Kind::Folder) return;
    if (member.kind == ZipMember::Kind::NoFile) return LeaveOut(member, ZipOutcome::Warning, "is not a file");
    if (member.kind == ZipMember::Kind::Damaged) return LeaveOut(member, ZipOutcome::Damaged, "is damaged");
    const std::string name = FileNameOfMember(member.name);
    if (name.empty()) return LeaveOut(member, ZipOutcome::Warning, "has no name a file may have");
    if (functions_.message) functions_.message(Listed(member));
    const TargetName target = folder.Find(name);
    if (target.folder) return LeaveOut(member, ZipOutcome::Warning, "has the name of a folder");
    if (!MethodIsKnown(member.method)) return LeaveOut(member, ZipOutcome::NoMethod, "is packed by an unknown method");
    if (target.there && !questions_.MayReplace(member.name)) return;

    Print("  inflating: " + member.name + "\n");
    const ZipOutcome outcome = ExtractMember(folder, target, member);
    if (outcome == ZipOutcome::NoPassword) return LeaveOut(member, outcome, "needs another password");
    if (outcome != ZipOutcome::Well) LeaveOut(member, outcome, "is damaged or cannot be written");
}

ZipOutcome Extraction::ExtractMember(const TargetFolder& folder, const TargetName& target, const ZipMember& member) {
    passwordWaiting_ = !questions_.Password().empty();
    MemberReader reader(file_, member, [this]() -> const char* {
        return std::exchange(passwordWaiting_, false) ? questions_.Password().c_str() : nullptr;
    });
    std::string_view block;
    const MemberReader::End end = FirstBlock(member, reader, block);
    const bool program = member.executable || (end == MemberReader::End::None && IsProgram(block));
    NewFile file(folder, target.executable | (program ? mode_t{0111} : 0));
    if (!file) return ZipOutcome::CannotWrite;
    if (const ZipOutcome outcome = WriteMember(member, reader, end, block, file); outcome != ZipOutcome::Well)
        return outcome;
    if (member.encrypted) questions_.PasswordFits();
    const int error = file.Install(target.spelling, member.modified);
    if (error == ENAMETOOLONG || error == EISDIR) return ZipOutcome::Warning;
    return error == 0 ? ZipOutcome::Well : ZipOutcome::CannotWrite;
}

// Asks for passwords until one opens the member or the user gives up.
MemberReader::End Extraction::FirstBlock(const ZipMember& member, MemberReader& reader, std::string_view& block) {
    if (member.encrypted && questions_.SkipsPasswords()) return MemberReader::End::NoPassword;
    for (;;) {
        const MemberReader::End end = reader.Next(block);
        if (end != MemberReader::End::NoPassword || !member.encrypted) return end;
        passwordWaiting_ = questions_.AskPassword(member.name);
        if (!passwordWaiting_) return end;
    }
}

ZipOutcome Extraction::WriteMember(const ZipMember& member, MemberReader& reader, MemberReader::End end,
                                   std::string_view block, NewFile& file) {
    std::uint64_t left = member.size;
    for (; end == MemberReader::End::None && block.size() <= left; end = reader.Next(block)) {
        if (!file.Write(block)) return ZipOutcome::CannotWrite;
        left -= block.size();
        Yield();
    }
    if (end == MemberReader::End::OfData && left == 0) return ZipOutcome::Well;
    return member.encrypted ? ZipOutcome::NoPassword : ZipOutcome::Damaged; // the two cannot be told apart
}

void Extraction::LeaveOut(const ZipMember& member, ZipOutcome outcome, const char* reason) {
    Print("   skipping: " + member.name + "  " + reason + "\n");
    outcome_ = Graver(outcome_, outcome);
}

void Extraction::Yield() {
    constexpr std::chrono::milliseconds kBetween{20};
    const auto now = std::chrono::steady_clock::now();
    if (!functions_.service || now - yielded_ < kBetween) return;
    functions_.service();
    yielded_ = std::chrono::steady_clock::now();
}

} // namespace

std::int32_t Wiz_SingleEntryUnzip(std::int32_t includeCount, const std::vector<std::string>&, std::int32_t excludeCount,
                                  const std::vector<std::string>&, const DCL& options, USERFUNCTIONS& functions) {
    RequireNoOptions(options, includeCount | excludeCount);
    if (functions.print) functions.print("Archive:  " + options.lpszZipFN + "\n");
    std::string archivePath;
    try {
        archivePath = HostPath(options.lpszZipFN);
    } catch (const RuntimeError&) { // no such drive
        return static_cast<std::int32_t>(ZipOutcome::NoArchive);
    }
    return static_cast<std::int32_t>(Extraction(archivePath, functions).Run(options.lpszExtractDir));
}

void UzpVersion2(UnzipVersion& version) {
    version.version = archive_version_string();
}

} // namespace korlan
