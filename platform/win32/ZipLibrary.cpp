#include "platform/ZipLibrary.h"

#include "platform/FileSystem.h"
#include "platform/RuntimeError.h"
#include "platform/TextCase.h"
#include "platform/win32/FileHandle.h"
#include "platform/win32/MemberData.h"
#include "platform/zip/ZipDirectory.h"
#include "platform/zip/ZipRules.h"

#include <ctime>
#include <random>
#include <utility>

namespace korlan {
namespace {

std::wstring PathOrNone(const std::string& path) { // "" when it is none
    try {
        return FilePath(path);
    } catch (const RuntimeError&) {
        return {};
    }
}

// Makes the folder with its parents; what cannot be made shows when a file is.
void MakeFolders(const std::string& path) {
    if (HasParentComponent(path)) return;
    for (std::size_t end = path.find_first_of("\\/"); end != std::string::npos; end = path.find_first_of("\\/", end + 1))
        CreateDirectoryW(PathOrNone(path.substr(0, end)).c_str(), nullptr);
    CreateDirectoryW(PathOrNone(path).c_str(), nullptr);
}

constexpr std::size_t kLongestName = 255; // UTF-16 units

// Names that the system takes for devices in every folder, whatever extension they have.
bool NamesADevice(const std::string& name) {
    const std::string stem = UpperCaseText(name.substr(0, name.find('.')));
    const std::string plain = stem.substr(0, stem.find_last_not_of(' ') + 1);
    if (plain == "CON" || plain == "PRN" || plain == "AUX" || plain == "NUL" || plain == "CONIN$" || plain == "CONOUT$")
        return true;
    return plain.size() == 4 && (plain.starts_with("COM") || plain.starts_with("LPT")) && plain[3] >= '0' &&
           plain[3] <= '9';
}

ListedMember Listed(const ZipMember& member) {
    const auto modified = static_cast<std::time_t>(member.modified);
    const std::tm* const local = std::localtime(&modified);
    const std::tm clock = local ? *local : std::tm{};
    return {member.name,       member.size,   member.packed, clock.tm_year + 1900,
            clock.tm_mon + 1, clock.tm_mday, clock.tm_hour, clock.tm_min};
}

// The extraction folder: which names are in it, and how a member comes there whole or not at all.
class TargetFolder {
public:
    explicit TargetFolder(const std::string& folder) : folder_(folder + "\\") {}

    // The spelling under which the name is there, else the name itself.
    std::string Spelling(const std::string& name) const {
        WIN32_FIND_DATAW found{};
        const HANDLE search = name.find_first_of("*?") == std::string::npos
                                  ? FindFirstFileW(Path(name).c_str(), &found)
                                  : INVALID_HANDLE_VALUE;
        if (search == INVALID_HANDLE_VALUE) return name;
        FindClose(search);
        return Narrow(found.cFileName);
    }

    DWORD Attributes(const std::string& name) const { return GetFileAttributesW(Path(name).c_str()); }
    bool IsThere(const std::string& name) const { return Attributes(name) != INVALID_FILE_ATTRIBUTES; }
    bool IsFolder(const std::string& name) const {
        return IsThere(name) && (Attributes(name) & FILE_ATTRIBUTE_DIRECTORY) != 0;
    }

    // Opens a new file under a name of no other file; invalid when the folder refuses.
    FileHandle Create(std::string& temporaryName) const {
        for (int attempt = 0; attempt < 100; ++attempt) {
            temporaryName = ".klnunzip" + std::to_string(std::random_device{}());
            FileHandle file(Path(temporaryName), GENERIC_WRITE, CREATE_NEW);
            if (file || GetLastError() != ERROR_FILE_EXISTS) return file;
        }
        return {};
    }

    void Remove(const std::string& temporaryName) const { DeleteFileW(Path(temporaryName).c_str()); }

    // Gives the closed file its name; 0 or the system's error. A library that runs, this program's own among them, can
    // be renamed but not replaced: it goes aside as NAME.old, which the next one of that name clears away.
    DWORD Install(const std::string& temporaryName, const std::string& name) const {
        const std::wstring from = Path(temporaryName), to = Path(name), aside = Path(name + ".old");
        const DWORD before = Attributes(name);
        if (IsThere(name)) SetFileAttributesW(to.c_str(), FILE_ATTRIBUTE_NORMAL);
        if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING)) return 0;
        const DWORD error = GetLastError();
        const bool inUse = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
        if (inUse && MoveFileExW(to.c_str(), aside.c_str(), MOVEFILE_REPLACE_EXISTING)) {
            if (MoveFileExW(from.c_str(), to.c_str(), 0)) return DeleteFileW(aside.c_str()), 0;
            MoveFileExW(aside.c_str(), to.c_str(), 0);
        }
        if (IsThere(name)) SetFileAttributesW(to.c_str(), before);
        return error;
    }

private:
    std::wstring Path(const std::string& name) const { return FilePath(folder_ + name); }
    std::string folder_;
};

void SetModified(const FileHandle& file, std::int64_t seconds) {
    constexpr std::int64_t kTicksPerSecond = 10'000'000, kSecondsTo1970 = 11'644'473'600; // ticks from 1601
    const auto ticks = static_cast<std::uint64_t>((seconds + kSecondsTo1970) * kTicksPerSecond);
    const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SetFileTime(file.Get(), nullptr, nullptr, &time);
}

struct NameLists {
    const std::vector<std::string>& include;
    const std::vector<std::string>& exclude;

    bool Want(const std::string& member) const {
        return (include.empty() || std::ranges::find(include, member) != include.end()) &&
               std::ranges::find(exclude, member) == exclude.end();
    }
};

class Extraction {
public:
    Extraction(NameLists lists, USERFUNCTIONS& functions) : lists_(lists), functions_(functions) {}

    Outcome Run(const DCL& options);

private:
    void TakeMember(const ZipMember& member, std::uint64_t dataBegin);
    void ExtractMember(const ZipMember& member, std::uint64_t dataBegin, const std::string& name);
    Outcome WriteMember(const ZipMember& member, std::uint64_t dataBegin, const FileHandle& file);
    Outcome TryToWrite(const ZipMember& member, std::uint64_t dataBegin, const FileHandle& file);
    bool AskPassword(const ZipMember& member);
    bool MayReplace(const ZipMember& member);
    void LeaveOut(const ZipMember& member, Outcome outcome, const char* reason);
    void Note(Outcome outcome) {
        if (Gravity(outcome) > Gravity(outcome_)) outcome_ = outcome;
    }
    bool Ended() const { return outcome_ == Outcome::CannotWrite || outcome_ == Outcome::Stopped; }
    void Print(const std::string& text) {
        if (functions_.print) functions_.print(text);
    }

    NameLists lists_;
    USERFUNCTIONS& functions_;
    FileHandle file_;
    std::unique_ptr<TargetFolder> folder_;
    bool replaceAll_ = false, replaceNone_ = false;
    std::string password_;      // the last one given
    bool skipPasswords_ = false;
    std::int32_t wrongPasswords_ = 0; // since the last member that opened
    Outcome outcome_ = Outcome::Well;
};

Outcome Extraction::Run(const DCL& options) {
    Print("Archive:  " + options.lpszZipFN + "\n");
    const std::wstring path = PathOrNone(options.lpszZipFN);
    LARGE_INTEGER size{};
    if (!path.empty()) file_ = FileHandle(path, GENERIC_READ, OPEN_EXISTING);
    if (!file_ || !GetFileSizeEx(file_.Get(), &size)) return Outcome::NoArchive;
    const auto members = ReadZipDirectory(static_cast<std::uint64_t>(size.QuadPart), [this](auto offset, auto count) {
        return file_.ReadAt(offset, count);
    });
    if (!members) return file_.ReadAt(0, 2) == "PK" ? Outcome::Damaged : Outcome::NoArchive;
    if (members->empty()) return Outcome::Warning;
    MakeFolders(options.lpszExtractDir);
    if (!FolderExists(options.lpszExtractDir)) return Outcome::CannotWrite;
    folder_ = std::make_unique<TargetFolder>(options.lpszExtractDir);
    for (const auto& [dataBegin, member] : *members)
        if (!Ended()) TakeMember(member, dataBegin);
    return outcome_;
}

void Extraction::TakeMember(const ZipMember& member, std::uint64_t dataBegin) {
    if (IsSeparator(member.name.empty() ? ' ' : member.name.back()) || member.folder) return;
    if (!lists_.Want(member.name)) return;
    if (member.special) return LeaveOut(member, Outcome::Warning, "is not a file");
    const std::string name = LastComponent(member.name);
    if (!MayNameAFile(name) || NamesADevice(name) || Wide(name).size() > kLongestName)
        return LeaveOut(member, Outcome::Warning, "has no name a file may have");
    if (functions_.message) functions_.message(Listed(member));
    const std::string target = folder_->Spelling(name);
    if (folder_->IsFolder(target)) return LeaveOut(member, Outcome::Warning, "has the name of a folder");
    if (!MethodIsKnown(member.method)) return LeaveOut(member, Outcome::NoMethod, "is packed by an unknown method");
    if (folder_->IsThere(target) && !MayReplace(member)) return;
    ExtractMember(member, dataBegin, target);
}

bool Extraction::MayReplace(const ZipMember& member) {
    if (replaceAll_ || replaceNone_) return replaceAll_;
    const std::int32_t answer = functions_.replace ? functions_.replace(member.name) : kOverwriteNo;
    replaceAll_ = answer == kOverwriteAll;
    replaceNone_ = answer == kOverwriteNone;
    return replaceAll_ || answer == kOverwriteYes;
}

void Extraction::ExtractMember(const ZipMember& member, std::uint64_t dataBegin, const std::string& name) {
    Print("  inflating: " + member.name + "\n");
    std::string temporaryName;
    FileHandle file = folder_->Create(temporaryName);
    if (!file) return LeaveOut(member, Outcome::CannotWrite, "cannot be written");
    struct Remover { // whatever a callback may throw
        const TargetFolder& folder;
        const std::string& name;
        FileHandle& file;
        bool armed = true;
        ~Remover() {
            file.Close();
            if (armed) folder.Remove(name);
        }
    } remover{*folder_, temporaryName, file};

    Outcome outcome = WriteMember(member, dataBegin, file);
    SetModified(file, member.modified);
    if (!file.Close()) outcome = Outcome::CannotWrite;
    if (outcome == Outcome::Well) {
        const DWORD error = folder_->Install(temporaryName, name);
        const bool byName = error == ERROR_INVALID_NAME || error == ERROR_FILENAME_EXCED_RANGE;
        if (error != 0) outcome = byName ? Outcome::Warning : Outcome::CannotWrite;
    }
    if (outcome != Outcome::Well) {
        const bool locked = outcome == Outcome::NoPassword;
        return LeaveOut(member, outcome, locked ? "needs another password" : "is damaged or cannot be written");
    }
    remover.armed = false;
    if (functions_.service && functions_.service(member.name, member.size) != 0) Note(Outcome::Stopped);
}

// Asks for passwords until one opens the member or the user gives up.
Outcome Extraction::WriteMember(const ZipMember& member, std::uint64_t dataBegin, const FileHandle& file) {
    if (!member.encrypted) return TryToWrite(member, dataBegin, file);
    if (skipPasswords_) return Outcome::NoPassword;
    bool given = !password_.empty() || AskPassword(member);
    for (; given; given = AskPassword(member)) {
        const Outcome outcome = TryToWrite(member, dataBegin, file);
        if (outcome == Outcome::Well) wrongPasswords_ = 0;
        if (outcome != Outcome::Damaged) return outcome;
        SetFilePointer(file.Get(), 0, nullptr, FILE_BEGIN);
        SetEndOfFile(file.Get());
    }
    return Outcome::NoPassword;
}

Outcome Extraction::TryToWrite(const ZipMember& member, std::uint64_t dataBegin, const FileHandle& file) {
    const auto data = std::make_unique<MemberData>(file_, member, dataBegin, password_);
    for (std::string_view bytes = data->Next(); !bytes.empty(); bytes = data->Next())
        if (!file.Write(bytes)) return Outcome::CannotWrite;
    return data->Whole() ? Outcome::Well : Outcome::Damaged;
}

bool Extraction::AskPassword(const ZipMember& member) {
    password_.clear();
    const bool given = wrongPasswords_ < kMostWrongPasswords && functions_.password &&
                       functions_.password(password_, kLongestPassword, member.name) == kPasswordGiven;
    ++wrongPasswords_; // until it has opened the member
    skipPasswords_ = !given;
    return given;
}

void Extraction::LeaveOut(const ZipMember& member, Outcome outcome, const char* reason) {
    Print("   skipping: " + member.name + "  " + reason + "\n");
    Note(outcome);
}

} // namespace

std::int32_t Wiz_SingleEntryUnzip(std::int32_t includeCount, const std::vector<std::string>& include,
                                  std::int32_t excludeCount, const std::vector<std::string>& exclude,
                                  const DCL& options, USERFUNCTIONS& functions) {
    const std::int32_t flags = options.ExtractOnlyNewer | options.SpaceToUnderscore | options.PromptToOverwrite |
                               options.fQuiet | options.ncflag | options.ntflag | options.nvflag | options.nfflag |
                               options.nzflag | options.ndflag | options.noflag | options.naflag | options.nZIflag |
                               options.C_flag | options.fPrivilege;
    if (flags != 0 || std::cmp_not_equal(includeCount, include.size()) ||
        std::cmp_not_equal(excludeCount, exclude.size()))
        throw RuntimeError(kErrInvalidCall, "Invalid procedure call or argument");
    return static_cast<std::int32_t>(Extraction({include, exclude}, functions).Run(options));
}

void UzpVersion2(UnzipVersion& version) {
    version.version = std::string("zlib ") + zlibVersion();
}

} // namespace korlan
