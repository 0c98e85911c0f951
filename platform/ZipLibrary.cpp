#include "platform/ZipLibrary.h"

#include "platform/zip/ZipHost.h"
#include "platform/zip/ZipRules.h"

#include <ctime>

namespace korlan {
namespace {

ListedMember Listed(const ZipMember& member) {
    const auto modified = static_cast<std::time_t>(member.modified);
    const std::tm* const local = std::localtime(&modified);
    const std::tm clock = local ? *local : std::tm{};
    return {member.name,      member.size,   member.packed, clock.tm_year + 1900,
            clock.tm_mon + 1, clock.tm_mday, clock.tm_hour, clock.tm_min};
}

class Extraction {
public:
    Extraction(ZipArchive& archive, USERFUNCTIONS& functions)
        : archive_(archive), functions_(functions), questions_(functions) {}

    ZipOutcome Run(const std::string& folder);

private:
    void TakeMember(const TargetFolder& folder, const ZipMember& member);
    ZipOutcome WriteMember(const ZipMember& member, NewFile& file);
    ZipOutcome WriteEncrypted(const ZipMember& member, NewFile& file);
    void LeaveOut(const ZipMember& member, ZipOutcome outcome, const char* reason);
    void GiveWay() {
        if (functions_.service) functions_.service();
    }
    void Print(const std::string& text) {
        if (functions_.print) functions_.print(text);
    }

    ZipArchive& archive_;
    USERFUNCTIONS& functions_;
    ZipQuestions questions_;
    ZipOutcome outcome_ = ZipOutcome::Well;
};

ZipOutcome Extraction::Run(const std::string& folderPath) {
    const auto read = [this](std::uint64_t offset, std::size_t count) { return archive_.Read(offset, count); };
    const auto members = ReadZipDirectory(archive_.Size(), read);
    if (!members) return read(0, 2) == "PK" ? ZipOutcome::Damaged : ZipOutcome::NoArchive; // cut off
    if (members->empty()) return ZipOutcome::Warning;
    const auto folder = OpenTargetFolder(folderPath);
    if (!folder) return ZipOutcome::CannotWrite;
    for (const ZipMember& member : *members) {
        TakeMember(*folder, member);
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
    const TargetName target = name.empty() ? TargetName{TargetName::Kind::Refused, {}} : folder.Find(name);
    if (target.kind == TargetName::Kind::Refused)
        return LeaveOut(member, ZipOutcome::Warning, "has no name a file may have");
    if (functions_.message) functions_.message(Listed(member));
    if (target.kind == TargetName::Kind::Folder)
        return LeaveOut(member, ZipOutcome::Warning, "has the name of a folder");
    if (!archive_.Unpacks(member)) return LeaveOut(member, ZipOutcome::NoMethod, "is packed by an unknown method");
    if (target.kind == TargetName::Kind::File && !questions_.MayReplace(member.name)) return;

    Print("  inflating: " + member.name + "\n");
    const auto file = folder.Begin(target.spelling, member.executable);
    ZipOutcome outcome = member.encrypted ? WriteEncrypted(member, *file) : WriteMember(member, *file);
    if (outcome == ZipOutcome::Well && !file->Install(member.modified)) outcome = ZipOutcome::CannotWrite;
    if (outcome == ZipOutcome::NoPassword) return LeaveOut(member, outcome, "needs another password");
    if (outcome != ZipOutcome::Well) LeaveOut(member, outcome, "is damaged or cannot be written");
}

// Asks for passwords until one opens the member or the user gives up. A damaged member cannot be told from a wrong one.
ZipOutcome Extraction::WriteEncrypted(const ZipMember& member, NewFile& file) {
    if (questions_.SkipsPasswords()) return ZipOutcome::NoPassword;
    bool given = !questions_.Password().empty() || questions_.AskPassword(member.name);
    for (; given; given = questions_.AskPassword(member.name)) {
        const ZipOutcome outcome = WriteMember(member, file);
        if (outcome == ZipOutcome::Well) questions_.PasswordFits();
        if (outcome != ZipOutcome::Damaged) return outcome;
        if (!file.Restart()) return ZipOutcome::CannotWrite;
    }
    return ZipOutcome::NoPassword;
}

ZipOutcome Extraction::WriteMember(const ZipMember& member, NewFile& file) {
    const auto data = archive_.Open(member, questions_.Password());
    std::uint64_t left = member.size;
    for (std::string_view bytes = data->Next(); !bytes.empty(); bytes = data->Next()) {
        if (bytes.size() > left) return ZipOutcome::Damaged;
        if (!file.Write(bytes)) return ZipOutcome::CannotWrite;
        left -= bytes.size();
        GiveWay();
    }
    return left == 0 && data->Whole() ? ZipOutcome::Well : ZipOutcome::Damaged;
}

void Extraction::LeaveOut(const ZipMember& member, ZipOutcome outcome, const char* reason) {
    Print("   skipping: " + member.name + "  " + reason + "\n");
    outcome_ = Graver(outcome_, outcome);
}

} // namespace

std::int32_t Wiz_SingleEntryUnzip(std::int32_t includeCount, const std::vector<std::string>&, std::int32_t excludeCount,
                                  const std::vector<std::string>&, const DCL& options, USERFUNCTIONS& functions) {
    RequireNoOptions(options, includeCount | excludeCount);
    if (functions.print) functions.print("Archive:  " + options.lpszZipFN + "\n");
    const auto archive = OpenZipArchive(options.lpszZipFN);
    const ZipOutcome outcome =
        archive ? Extraction(*archive, functions).Run(options.lpszExtractDir) : ZipOutcome::NoArchive;
    return static_cast<std::int32_t>(outcome);
}

} // namespace korlan
