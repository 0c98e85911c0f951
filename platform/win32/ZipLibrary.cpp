#include "platform/ZipLibrary.h"

#include "platform/RuntimeError.h"
#include "platform/TextCase.h"
#include "platform/win32/MemberData.h"
#include "platform/win32/TargetFolder.h"
#include "platform/zip/ZipRules.h"

#include <chrono>
#include <ctime>
#include <memory>

namespace korlan {
namespace {

ListedMember Listed(const ZipMember& member) {
    const auto modified = static_cast<std::time_t>(member.modified);
    const std::tm* const local = std::localtime(&modified);
    const std::tm clock = local ? *local : std::tm{};
    return {member.name,      member.size,   member.packed, clock.tm_year + 1900,
            clock.tm_mon + 1, clock.tm_mday, clock.tm_hour, clock.tm_min};
}

// Names that the system takes for devices in every folder, whatever extension they have, and those it has no room for.
bool SystemRefuses(const std::string& name) {
    constexpr std::size_t kLongestName = 255; // UTF-16 units
    const std::string stem = UpperCaseText(name.substr(0, name.find('.')));
    const std::string plain = stem.substr(0, stem.find_last_not_of(' ') + 1);
    const bool port = plain.size() == 4 && (plain.starts_with("COM") || plain.starts_with("LPT")) && plain[3] >= '0' &&
                      plain[3] <= '9';
    return port || plain == "CON" || plain == "PRN" || plain == "AUX" || plain == "NUL" || plain == "CONIN$" ||
           plain == "CONOUT$" || name.find_first_of("*?<>|\"") != std::string::npos || Wide(name).size() > kLongestName;
}

FileHandle OpenArchive(const std::string& path) {
    try {
        return {FilePath(path), GENERIC_READ, OPEN_EXISTING};
    } catch (const RuntimeError&) { // no such path
        return {};
    }
}

class Extraction {
public:
    Extraction(FileHandle file, USERFUNCTIONS& functions)
        : file_(std::move(file)), functions_(functions), questions_(functions) {}

    ZipOutcome Run(const std::string& folder);

private:
    void TakeMember(const TargetFolder& folder, const ZipMember& member);
    ZipOutcome ExtractMember(const TargetFolder& folder, const std::string& name, const ZipMember& member);
    ZipOutcome WriteMember(const ZipMember& member, const NewFile& file);
    ZipOutcome WriteEncrypted(const ZipMember& member, const NewFile& file);
    void LeaveOut(const ZipMember& member, ZipOutcome outcome, const char* reason);
    void GiveWay();
    void Print(const std::string& text) {
        if (functions_.print) functions_.print(text);
    }

    const FileHandle file_;
    USERFUNCTIONS& functions_;
    ZipQuestions questions_;
    std::chrono::steady_clock::time_point yielded_ = std::chrono::steady_clock::now();
    ZipOutcome outcome_ = ZipOutcome::Well;
};

ZipOutcome Extraction::Run(const std::string& folderPath) {
    LARGE_INTEGER size{};
    if (!file_ || !GetFileSizeEx(file_.Get(), &size)) return ZipOutcome::NoArchive;
    const auto read = [this](std::uint64_t offset, std::size_t count) { return file_.ReadAt(offset, count); };
    const auto members = ReadZipDirectory(static_cast<std::uint64_t>(size.QuadPart), read);
    if (!members) return read(0, 2) == "PK" ? ZipOutcome::Damaged : ZipOutcome::NoArchive; // cut off
    if (members->empty()) return ZipOutcome::Warning;
    const TargetFolder folder(folderPath);
    if (!folder) return ZipOutcome::CannotWrite;
    for (const ZipMember& member : *members) {
        TakeMember(folder, member);
        if (outcome_ == ZipOutcome::CannotWrite) break;
        GiveWay();
    }
    return outcome_;
}

void Extraction::TakeMember(const TargetFolder& folder, const ZipMember& member) {
    if (member.kind == ZipMember::Kind::Folder) return;
    if (member.kind == ZipMember::Kind::NoFile) return LeaveOut(member, ZipOutcome::Warning, "is not a file");
    if (member.kind == ZipMember::Kind::Damaged) return LeaveOut(member, ZipOutcome::Damaged, "is damaged");
    const std::string name = FileNameOfMember(member.name);
    if (name.empty() || SystemRefuses(name))
        return LeaveOut(member, ZipOutcome::Warning, "has no name a file may have");
    if (functions_.message) functions_.message(Listed(member));
    const TargetName target = folder.Find(name);
    if (target.folder) return LeaveOut(member, ZipOutcome::Warning, "has the name of a folder");
    if (!MethodIsKnown(member.method)) return LeaveOut(member, ZipOutcome::NoMethod, "is packed by an unknown method");
    if (target.there && !questions_.MayReplace(member.name)) return;

    Print("  inflating: " + member.name + "\n");
    const ZipOutcome outcome = ExtractMember(folder, target.spelling, member);
    if (outcome == ZipOutcome::NoPassword) return LeaveOut(member, outcome, "needs another password");
    if (outcome != ZipOutcome::Well) LeaveOut(member, outcome, "is damaged or cannot be written");
}

ZipOutcome Extraction::ExtractMember(const TargetFolder& folder, const std::string& name, const ZipMember& member) {
    NewFile file(folder);
    if (!file) return ZipOutcome::CannotWrite;
    const ZipOutcome outcome = member.encrypted ? WriteEncrypted(member, file) : WriteMember(member, file);
    if (outcome != ZipOutcome::Well) return outcome;
    return file.Install(name, member.modified) == 0 ? ZipOutcome::Well : ZipOutcome::CannotWrite;
}

// Asks for passwords until one opens the member or the user gives up. Only the check sum at its end tells a wrong one.
ZipOutcome Extraction::WriteEncrypted(const ZipMember& member, const NewFile& file) {
    if (questions_.SkipsPasswords()) return ZipOutcome::NoPassword;
    bool given = !questions_.Password().empty() || questions_.AskPassword(member.name);
    for (; given; given = questions_.AskPassword(member.name)) {
        const ZipOutcome outcome = WriteMember(member, file);
        if (outcome == ZipOutcome::Well) questions_.PasswordFits();
        if (outcome != ZipOutcome::Damaged) return outcome;
        file.Restart();
    }
    return ZipOutcome::NoPassword;
}

ZipOutcome Extraction::WriteMember(const ZipMember& member, const NewFile& file) {
    const auto data = std::make_unique<MemberData>(file_, member, questions_.Password());
    for (std::string_view bytes = data->Next(); !bytes.empty(); bytes = data->Next()) {
        if (!file.Write(bytes)) return ZipOutcome::CannotWrite;
        GiveWay();
    }
    return data->Whole() ? ZipOutcome::Well : ZipOutcome::Damaged;
}

void Extraction::LeaveOut(const ZipMember& member, ZipOutcome outcome, const char* reason) {
    Print("   skipping: " + member.name + "  " + reason + "\n");
    outcome_ = Graver(outcome_, outcome);
}

void Extraction::GiveWay() {
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
    Extraction extraction(OpenArchive(options.lpszZipFN), functions);
    return static_cast<std::int32_t>(extraction.Run(options.lpszExtractDir));
}

void UzpVersion2(UnzipVersion& version) {
    version.version = std::string("zlib ") + zlibVersion();
}

} // namespace korlan
