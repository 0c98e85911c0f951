#include "platform/linux/TargetFolder.h"

#include "platform/RuntimeError.h"
#include "platform/linux/ExecuteBits.h"
#include "platform/linux/HostPath.h"
#include "platform/zip/ZipRules.h"

#include <dirent.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>

namespace korlan {
namespace {

// Once a folder and process: only one process of this program is at work for a user.
void RemoveLeftOvers(const std::string& hostFolder, int folder) {
    static std::set<std::string> done;
    if (!done.insert(hostFolder).second) return;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(hostFolder.c_str()), closedir);
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr)
        if (std::string_view(entry->d_name).starts_with(kTemporaryMember)) unlinkat(folder, entry->d_name, 0);
}

} // namespace

TargetFolder::TargetFolder(const std::string& path) {
    try {
        path_ = HostPath(path);
    } catch (const RuntimeError&) { // no such drive
        return;
    }
    constexpr int kFlags = O_RDONLY | O_DIRECTORY;
    folder_ = FileHandle(path_, kFlags);
    if (!folder_ && !HasParentComponent(path)) {
        std::error_code error; // shows again when the folder is opened
        std::filesystem::create_directories(path_, error);
        folder_ = FileHandle(path_, kFlags);
    }
    if (folder_) RemoveLeftOvers(path_, folder_.Descriptor());
}

TargetName TargetFolder::Find(const std::string& name) const {
    TargetName target;
    target.spelling = SpellingInFolder(path_, name);
    struct stat status {};
    target.there = fstatat(Descriptor(), target.spelling.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    target.folder = S_ISDIR(status.st_mode);
    target.executable = target.there ? ExecuteBits(status) : ErasedExecuteBits(path_ + "/" + target.spelling);
    return target;
}

NewFile* NewFile::underWay = nullptr;

NewFile::NewFile(const TargetFolder& folder, mode_t executable) : folder_(folder.Descriptor()) {
    [[maybe_unused]] static const int registered = std::at_quick_exit([] {
        if (underWay) underWay->Remove();
    });
    static unsigned made = 0;
    do {
        name_ = std::string(kTemporaryMember) + std::to_string(getpid()) + "-" + std::to_string(++made);
        constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        file_ = FileHandle(openat(folder_, name_.c_str(), kFlags, 0666 | executable));
    } while (!file_ && errno == EEXIST);
    if (file_)
        underWay = this;
    else
        name_.clear();
}

NewFile::~NewFile() {
    Remove();
}

void NewFile::Remove() {
    if (!name_.empty()) unlinkat(folder_, name_.c_str(), 0);
    name_.clear();
    if (underWay == this) underWay = nullptr;
}

int NewFile::Install(const std::string& name, std::int64_t modified) {
    const timespec times[2] = {{modified, 0}, {modified, 0}};
    if (futimens(file_.Descriptor(), times) != 0) return errno;
    if (const int error = file_.Close(); error != 0) return error;
    if (renameat(folder_, name_.c_str(), folder_, name.c_str()) != 0) return errno;
    name_.clear();
    return 0;
}

} // namespace korlan
