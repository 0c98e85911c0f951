#include "platform/RuntimeError.h"
#include "platform/linux/ExecuteBits.h"
#include "platform/linux/FileHandle.h"
#include "platform/linux/HostPath.h"
#include "platform/zip/ZipHost.h"
#include "platform/zip/ZipRules.h"

#include <dirent.h>

#include <cstdlib>
#include <filesystem>
#include <set>

namespace korlan {
namespace {

// Made with its first bytes, for they tell whether it is a program. It goes with the process, too.
class HostNewFile : public NewFile {
public:
    // executable: the execute bits that it has whatever it holds
    HostNewFile(int folder, std::string spelling, mode_t executable)
        : folder_(folder), spelling_(std::move(spelling)), executable_(executable) {}
    ~HostNewFile() override { Remove(); }
    HostNewFile(const HostNewFile&) = delete;
    HostNewFile& operator=(const HostNewFile&) = delete;

    bool Write(std::string_view bytes) override {
        return IsMade(bytes) && WriteAll(file_.Descriptor(), bytes.data(), bytes.size()) == 0;
    }
    bool Restart() override {
        Remove();
        return true;
    }
    bool Install(std::int64_t modified) override {
        const timespec times[2] = {{modified, 0}, {modified, 0}};
        if (!IsMade({}) || futimens(file_.Descriptor(), times) != 0 || file_.Close() != 0) return false;
        if (renameat(folder_, name_.c_str(), folder_, spelling_.c_str()) != 0) return false;
        name_.clear();
        return true;
    }

private:
    bool IsMade(std::string_view firstBytes);
    void Remove();

    static HostNewFile* underWay;
    const int folder_;
    const std::string spelling_;
    const mode_t executable_;
    FileHandle file_;
    std::string name_; // "" when there is nothing to remove
};

HostNewFile* HostNewFile::underWay = nullptr;

bool HostNewFile::IsMade(std::string_view firstBytes) {
    [[maybe_unused]] static const int registered = std::at_quick_exit([] {
        if (underWay) underWay->Remove();
    });
    static unsigned made = 0;
    if (file_) return true;
    const mode_t mode = 0666 | executable_ | (IsProgram(firstBytes) ? mode_t{0111} : 0);
    do {
        name_ = std::string(kTemporaryMember) + std::to_string(getpid()) + "-" + std::to_string(++made);
        constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        file_ = FileHandle(openat(folder_, name_.c_str(), kFlags, mode));
    } while (!file_ && errno == EEXIST);
    if (file_)
        underWay = this;
    else
        name_.clear();
    return static_cast<bool>(file_);
}

void HostNewFile::Remove() {
    file_.Close();
    if (!name_.empty()) unlinkat(folder_, name_.c_str(), 0);
    name_.clear();
    if (underWay == this) underWay = nullptr;
}

class HostTargetFolder : public TargetFolder {
public:
    HostTargetFolder(std::string path, FileHandle folder) : path_(std::move(path)), folder_(std::move(folder)) {}

    TargetName Find(const std::string& name) const override {
        using Kind = TargetName::Kind;
        const std::string spelling = SpellingInFolder(path_, name);
        struct stat status {};
        if (Look(spelling, status)) return {S_ISDIR(status.st_mode) ? Kind::Folder : Kind::File, spelling};
        return {errno == ENAMETOOLONG ? Kind::Refused : Kind::Free, spelling};
    }
    std::unique_ptr<NewFile> Begin(const std::string& spelling, bool executable) const override {
        struct stat status {};
        const mode_t before = Look(spelling, status) ? ExecuteBits(status) : ErasedExecuteBits(path_ + "/" + spelling);
        return std::make_unique<HostNewFile>(folder_.Descriptor(), spelling, before | (executable ? mode_t{0111} : 0));
    }

private:
    bool Look(const std::string& spelling, struct stat& status) const {
        return fstatat(folder_.Descriptor(), spelling.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    }

    const std::string path_; // the host's
    const FileHandle folder_;
};

// Once a folder and process: only one process of this program is at work for a user.
void RemoveLeftOvers(const std::string& hostFolder, int folder) {
    static std::set<std::string> done;
    if (!done.insert(hostFolder).second) return;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(hostFolder.c_str()), closedir);
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr)
        if (std::string_view(entry->d_name).starts_with(kTemporaryMember)) unlinkat(folder, entry->d_name, 0);
}

} // namespace

std::unique_ptr<TargetFolder> OpenTargetFolder(const std::string& path) {
    std::string hostPath;
    try {
        hostPath = HostPath(path);
    } catch (const RuntimeError&) { // no such drive
        return nullptr;
    }
    constexpr int kFlags = O_RDONLY | O_DIRECTORY;
    FileHandle folder(hostPath, kFlags);
    if (!folder && !HasParentComponent(path)) {
        std::error_code error; // shows again when the folder is opened
        std::filesystem::create_directories(hostPath, error);
        folder = FileHandle(hostPath, kFlags);
    }
    if (!folder) return nullptr;
    RemoveLeftOvers(hostPath, folder.Descriptor());
    return std::make_unique<HostTargetFolder>(std::move(hostPath), std::move(folder));
}

} // namespace korlan
