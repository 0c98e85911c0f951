#include "platform/linux/FolderIndex.h"

#include <dirent.h>
#include <linux/magic.h>
#include <sys/inotify.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <memory>

namespace korlan {
namespace {

// File systems of this machine: nobody changes them but through it, and it tells of each change. On others the change
// may come from elsewhere.
bool TellsOfChanges(int folder) {
    struct statfs system {};
    if (fstatfs(folder, &system) != 0) return false;
    constexpr unsigned long kXfs = 0x58465342, kF2fs = 0xF2F52010;
    const auto type = static_cast<unsigned long>(system.f_type);
    return type == EXT4_SUPER_MAGIC || type == BTRFS_SUPER_MAGIC || type == TMPFS_MAGIC ||
           type == OVERLAYFS_SUPER_MAGIC || type == kXfs || type == kF2fs;
}

} // namespace

const std::string& FolderIndex::Choose(const Names& names, const std::string& name) {
    const auto [first, last] = names.equal_range(name);
    return first == last || std::find(first, last, name) != last ? name : *std::min_element(first, last);
}

std::optional<std::string> FolderIndex::KnownSpelling(const std::string& hostFolder, const std::string& name) {
    if (!paths_.contains(hostFolder)) return std::nullopt;
    TakeNotices();
    struct stat status {};
    const auto path = paths_.find(hostFolder);
    if (path == paths_.end() || stat(hostFolder.c_str(), &status) != 0) return std::nullopt;
    const auto folder = folders_.find(path->second);
    if (folder == folders_.end() || folder->first != Identity(status.st_dev, status.st_ino)) return std::nullopt;
    return Choose(folder->second, name);
}

std::string FolderIndex::Spelling(const std::string& hostFolder, const std::string& name) {
    if (auto known = KnownSpelling(hostFolder, name)) return *known;
    return Choose(ReadFolder(hostFolder), name);
}

// The watch begins before the reading, so a change in between is told.
const FolderIndex::Names& FolderIndex::ReadFolder(const std::string& hostFolder) {
    constexpr std::size_t kMostFolders = 256;
    unwatched_.clear();
    TakeNotices(); // of a folder that has gone: the new one may have its identity
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(hostFolder.c_str()), closedir);
    struct stat status {};
    if (!folder || fstat(dirfd(folder.get()), &status) != 0) return unwatched_;
    int watch = -1;
    if (TellsOfChanges(dirfd(folder.get()))) {
        if (paths_.size() >= kMostFolders) ForgetAll();
        if (!notices_) notices_ = FileHandle(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
        watch = inotify_add_watch(notices_.Descriptor(), hostFolder.c_str(),
                                  IN_CREATE | IN_DELETE | IN_MOVE | IN_DELETE_SELF | IN_ONLYDIR);
    }
    const Identity identity(status.st_dev, status.st_ino);
    if (watch >= 0) paths_[hostFolder] = watches_[watch] = identity;
    Names& names = watch >= 0 ? folders_[identity] : unwatched_;
    names.clear();
    while (const dirent* entry = readdir(folder.get())) names.emplace(entry->d_name);
    return names;
}

void FolderIndex::TakeNotices() {
    constexpr std::size_t kLargest = sizeof(inotify_event) + NAME_MAX + 1;
    std::array<char, 16'384> block;
    for (;;) {
        const ssize_t got = read(notices_.Descriptor(), block.data(), block.size());
        for (ssize_t at = 0; at < got;) {
            inotify_event event{};
            std::memcpy(&event, &block[static_cast<std::size_t>(at)], sizeof event);
            at += static_cast<ssize_t>(sizeof event);
            if ((event.mask & IN_Q_OVERFLOW) != 0) return ForgetAll();
            TakeNotice(event.wd, event.mask, event.len > 0 ? &block[static_cast<std::size_t>(at)] : "");
            at += event.len;
        }
        if (got < static_cast<ssize_t>(block.size() - kLargest)) return; // that was all
    }
}

void FolderIndex::TakeNotice(int watch, unsigned what, const std::string& name) {
    const auto watched = watches_.find(watch);
    if (watched == watches_.end()) return;
    if ((what & (IN_IGNORED | IN_DELETE_SELF)) != 0) {
        folders_.erase(watched->second);
        watches_.erase(watched);
        return;
    }
    const auto folder = folders_.find(watched->second);
    if (folder == folders_.end()) return;
    Names& names = folder->second;
    const auto [first, last] = names.equal_range(name);
    const auto there = std::find(first, last, name);
    if ((what & (IN_CREATE | IN_MOVED_TO)) != 0 && there == last) names.insert(name);
    if ((what & (IN_DELETE | IN_MOVED_FROM)) != 0 && there != last) names.erase(there);
}

void FolderIndex::ForgetAll() {
    *this = FolderIndex();
}

} // namespace korlan
