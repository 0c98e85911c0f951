#include "platform/ZipLibrary.h"

#include "platform/RuntimeError.h"
#include "platform/TextCase.h"
#include "platform/linux/FileHandle.h"
#include "platform/linux/HostPath.h"
#include "platform/zip/ZipDirectory.h"
#include "platform/zip/ZipRules.h"

#include <archive.h>
#include <archive_entry.h>
#include <dirent.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <memory>
#include <random>
#include <unordered_map>

namespace korlan {
namespace {

using ArchiveReader = std::unique_ptr<archive, int (*)(archive*)>;

constexpr std::size_t kBlock = 131'072; // bytes read from the archive at a time

// Stored, deflated, bzip2, LZMA, XZ, PPMd, and the mark of AES encryption, whose real method lies elsewhere.
bool MethodIsKnown(std::uint32_t method) {
    constexpr std::array<std::uint32_t, 7> kMethods{0, 8, 12, 14, 95, 98, 99};
    return std::ranges::find(kMethods, method) != kMethods.end();
}

std::string HostPathOrNone(const std::string& path) { // "" when its drive is not there
    try {
        return HostPath(path);
    } catch (const RuntimeError&) {
        return {};
    }
}

FileHandle OpenFolder(const std::string& path) {
    const std::string host = HostPathOrNone(path);
    if (host.empty()) return FileHandle();
    std::error_code error; // shows again when the folder is opened
    if (!HasParentComponent(path)) std::filesystem::create_directories(host, error);
    return FileHandle(host, O_RDONLY | O_DIRECTORY);
}

std::string ReadAt(int file, std::uint64_t offset, std::size_t count) {
    std::string bytes(count, '\0');
    std::size_t have = 0;
    while (have < bytes.size()) {
        const ssize_t got = pread(file, bytes.data() + have, bytes.size() - have, static_cast<off_t>(offset + have));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        have += static_cast<std::size_t>(got);
    }
    bytes.resize(have);
    return bytes;
}

ListedMember Listed(const ZipMember& member) {
    const std::time_t modified = member.modified;
    std::tm local{};
    localtime_r(&modified, &local);
    return {member.name,      member.size,   member.packed, local.tm_year + 1900,
            local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min};
}

// The extraction folder: which names are in it, and how a member comes there whole or not at all.
class TargetFolder {
public:
    explicit TargetFolder(FileHandle folder) : folder_(std::move(folder)) {}

    // The spelling under which the name is there, else the name itself.
    const std::string& Spelling(const std::string& name) {
        if (IsThere(name)) return name;
        if (!listed_) List();
        const auto found = spellingOf_.find(UpperCaseText(name));
        return found == spellingOf_.end() ? name : found->second;
    }

    bool IsThere(const std::string& name) const {
        struct stat status {};
        return fstatat(folder_.Descriptor(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    }

    bool IsFolder(const std::string& name) const {
        struct stat status {};
        return fstatat(folder_.Descriptor(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
               S_ISDIR(status.st_mode);
    }

    // Opens a new file under a name of no other file; invalid when the folder refuses.
    FileHandle Create(std::string& temporaryName, mode_t mode) const {
        for (int attempt = 0; attempt < 100; ++attempt) {
            temporaryName = ".klnunzip" + std::to_string(std::random_device{}());
            FileHandle file(openat(folder_.Descriptor(), temporaryName.c_str(),
                                   O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
            if (file || errno != EEXIST) return file;
        }
        return FileHandle();
    }

    void Remove(const std::string& temporaryName) const { unlinkat(folder_.Descriptor(), temporaryName.c_str(), 0); }

    // Gives the closed file its time and its name; 0 or the errno value.
    int Install(const std::string& temporaryName, const std::string& name, std::int64_t modified) {
        const timespec times[2] = {{modified, 0}, {modified, 0}};
        if (utimensat(folder_.Descriptor(), temporaryName.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0 ||
            renameat(folder_.Descriptor(), temporaryName.c_str(), folder_.Descriptor(), name.c_str()) != 0)
            return errno;
        if (listed_) spellingOf_.emplace(UpperCaseText(name), name);
        return 0;
    }

private:
    void List() {
        listed_ = true;
        const std::unique_ptr<DIR, int (*)(DIR*)> entries(
            fdopendir(openat(folder_.Descriptor(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)), closedir);
        while (const dirent* entry = entries ? readdir(entries.get()) : nullptr) {
            std::string& spelling = spellingOf_[UpperCaseText(entry->d_name)];
            if (spelling.empty() || entry->d_name < spelling) spelling = entry->d_name;
        }
    }

    FileHandle folder_;
    bool listed_ = false;
    std::unordered_map<std::string, std::string> spellingOf_; // by the name in upper case
};

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
    bool ReadMembers(); // false when the reader can go no further; ends at once when the extraction has ended
    void TakeMember(archive_entry* entry);
    void ExtractMember(const ZipMember& member, const std::string& name, mode_t mode);
    Outcome WriteMember(const ZipMember& member, FileHandle& file);
    int ReadBlock(const ZipMember& member, bool first, const void*& block, std::size_t& count);
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
    static const char* NextPassword(archive*, void* extraction);

    NameLists lists_;
    USERFUNCTIONS& functions_;
    FileHandle file_;
    ArchiveReader reader_{nullptr, archive_read_free};
    ZipMembers members_;
    std::unique_ptr<TargetFolder> folder_;
    std::uint64_t done_ = 0; // members whose data begins here or before have had their turn
    bool replaceAll_ = false, replaceNone_ = false;
    std::string password_;         // the last one given
    bool passwordWaiting_ = false; // the reader has not asked for it yet
    bool skipPasswords_ = false;
    std::int32_t wrongPasswords_ = 0; // since the last member that opened
    Outcome outcome_ = Outcome::Well;
};

Outcome Extraction::Run(const DCL& options) {
    Print("Archive:  " + options.lpszZipFN + "\n");
    const std::string archivePath = HostPathOrNone(options.lpszZipFN);
    if (!archivePath.empty()) file_ = FileHandle(archivePath, O_RDONLY | O_NONBLOCK);
    if (!file_) return Outcome::NoArchive;
    struct stat status {};
    if (fstat(file_.Descriptor(), &status) != 0 || !S_ISREG(status.st_mode)) return Outcome::NoArchive;
    auto members = ReadZipDirectory(static_cast<std::uint64_t>(status.st_size), [this](auto offset, auto count) {
        return ReadAt(file_.Descriptor(), offset, count);
    });
    if (!members) {
        std::array<char, 2> mark{};
        const bool cutOff = pread(file_.Descriptor(), mark.data(), 2, 0) == 2 && mark == std::array{'P', 'K'};
        return cutOff ? Outcome::Damaged : Outcome::NoArchive;
    }
    members_ = std::move(*members);
    if (members_.empty()) return Outcome::Warning;

    FileHandle folder = OpenFolder(options.lpszExtractDir);
    if (!folder) return Outcome::CannotWrite;
    folder_ = std::make_unique<TargetFolder>(std::move(folder));

    // A member whose packed data is broken stops the reader; a new one goes on behind it.
    for (std::uint64_t before = 0; !ReadMembers() && done_ > before && !Ended();) before = done_;
    if (done_ < members_.rbegin()->first && !Ended()) Note(Outcome::Damaged);
    return outcome_;
}

bool Extraction::ReadMembers() {
    reader_.reset(archive_read_new());
    archive* const reader = reader_.get();
    if (!reader) throw std::bad_alloc();
    archive_read_support_format_zip_seekable(reader);
    archive_read_set_passphrase_callback(reader, this, NextPassword);
    passwordWaiting_ = !password_.empty();
    lseek(file_.Descriptor(), 0, SEEK_SET);
    if (archive_read_open_fd(reader, file_.Descriptor(), kBlock) != ARCHIVE_OK) {
        Note(Outcome::Damaged);
        return false;
    }
    for (;;) {
        archive_entry* entry = nullptr;
        const int result = archive_read_next_header(reader, &entry); // ARCHIVE_WARN: a name it cannot show; we can
        if (result == ARCHIVE_EOF) return true;
        if (result != ARCHIVE_OK && result != ARCHIVE_WARN) {
            Note(Outcome::Damaged);
            return false;
        }
        TakeMember(entry);
        if (Ended()) return true;
    }
}

void Extraction::TakeMember(archive_entry* entry) {
    // The reader stands where the member's data begins, or behind the target of a link.
    const auto place = static_cast<std::uint64_t>(archive_filter_bytes(reader_.get(), -1));
    const auto behind = members_.upper_bound(place);
    if (behind == members_.begin()) return Note(Outcome::Damaged);
    const auto& [dataBegin, member] = *std::prev(behind);
    if (dataBegin <= done_) return;
    done_ = dataBegin;

    const mode_t type = archive_entry_filetype(entry);
    if (type == AE_IFDIR || IsSeparator(member.name.empty() ? ' ' : member.name.back())) return;
    if (!lists_.Want(member.name)) return;
    if (type != AE_IFREG || member.special) return LeaveOut(member, Outcome::Warning, "is not a file");
    if (dataBegin != place) return LeaveOut(member, Outcome::Damaged, "is damaged");
    const std::string name = LastComponent(member.name);
    if (!MayNameAFile(name)) return LeaveOut(member, Outcome::Warning, "has no name a file may have");
    if (functions_.message) functions_.message(Listed(member));
    const std::string target = folder_->Spelling(name);
    if (folder_->IsFolder(target)) return LeaveOut(member, Outcome::Warning, "has the name of a folder");
    if (!MethodIsKnown(member.method)) return LeaveOut(member, Outcome::NoMethod, "is packed by an unknown method");
    if (folder_->IsThere(target) && !MayReplace(member)) return;
    ExtractMember(member, target, (archive_entry_perm(entry) & S_IXUSR) != 0 ? 0777 : 0666);
}

bool Extraction::MayReplace(const ZipMember& member) {
    if (replaceAll_ || replaceNone_) return replaceAll_;
    const std::int32_t answer = functions_.replace ? functions_.replace(member.name) : kOverwriteNo;
    replaceAll_ = answer == kOverwriteAll;
    replaceNone_ = answer == kOverwriteNone;
    return replaceAll_ || answer == kOverwriteYes;
}

void Extraction::ExtractMember(const ZipMember& member, const std::string& name, mode_t mode) {
    Print("  inflating: " + member.name + "\n");
    std::string temporaryName;
    FileHandle file = folder_->Create(temporaryName, mode);
    if (!file) return LeaveOut(member, Outcome::CannotWrite, "cannot be written");
    struct Remover { // whatever a callback may throw
        const TargetFolder& folder;
        const std::string& name;
        bool armed = true;
        ~Remover() {
            if (armed) folder.Remove(name);
        }
    } remover{*folder_, temporaryName};

    Outcome outcome = WriteMember(member, file);
    if (file.Close() != 0) outcome = Outcome::CannotWrite;
    if (outcome == Outcome::Well) {
        const int error = folder_->Install(temporaryName, name, member.modified);
        if (error == ENAMETOOLONG || error == EISDIR)
            outcome = Outcome::Warning;
        else if (error != 0)
            outcome = Outcome::CannotWrite;
    }
    if (outcome != Outcome::Well) {
        const bool locked = outcome == Outcome::NoPassword;
        return LeaveOut(member, outcome, locked ? "needs another password" : "is damaged or cannot be written");
    }
    remover.armed = false;
    if (functions_.service && functions_.service(member.name, member.size) != 0) Note(Outcome::Stopped);
}

Outcome Extraction::WriteMember(const ZipMember& member, FileHandle& file) {
    if (member.encrypted && skipPasswords_) return Outcome::NoPassword;
    for (std::uint64_t written = 0;;) {
        const void* block = nullptr;
        std::size_t count = 0;
        const int result = ReadBlock(member, written == 0, block, count);
        if (result == ARCHIVE_EOF) break;
        if (result != ARCHIVE_OK || written + count > member.size)
            return member.encrypted ? Outcome::NoPassword : Outcome::Damaged;
        if (WriteAll(file.Descriptor(), static_cast<const char*>(block), count) != 0) return Outcome::CannotWrite;
        written += count;
    }
    if (member.encrypted) wrongPasswords_ = 0;
    return Outcome::Well;
}

// One block of the member's data. Asks for passwords until one opens the member or the user gives up.
int Extraction::ReadBlock(const ZipMember& member, bool first, const void*& block, std::size_t& count) {
    for (;;) {
        la_int64_t offset = 0;
        const int result = archive_read_data_block(reader_.get(), &block, &count, &offset);
        if (result != ARCHIVE_FAILED || !first || !member.encrypted || !AskPassword(member)) return result;
    }
}

bool Extraction::AskPassword(const ZipMember& member) {
    if (skipPasswords_) return false;
    password_.clear();
    const bool given = wrongPasswords_ < kMostWrongPasswords && functions_.password &&
                       functions_.password(password_, kLongestPassword, member.name) == kPasswordGiven;
    ++wrongPasswords_; // until it has opened the member
    skipPasswords_ = !given;
    passwordWaiting_ = given;
    return given;
}

const char* Extraction::NextPassword(archive*, void* extraction) {
    auto& self = *static_cast<Extraction*>(extraction);
    return std::exchange(self.passwordWaiting_, false) ? self.password_.c_str() : nullptr;
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
    version.version = archive_version_string();
}

} // namespace korlan
