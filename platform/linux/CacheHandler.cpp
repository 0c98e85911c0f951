// The cache is the folder that an HTTP layer of this program would keep: the user's cache folder, korlan/klnupdt.
// Nothing is ever read from it, so what cannot be read or deleted there is passed over. Every step goes from an open
// folder to a name in it, so no link put there meanwhile is followed.
#include "platform/CacheHandler.h"

#include "platform/AsciiText.h"
#include "platform/linux/FileHandle.h"
#include "platform/linux/HostPath.h"

#include <dirent.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string_view>
#include <vector>

namespace korlan {
namespace {

constexpr std::string_view kHandlerClass = "{9B0EFD60-F7B0-11D0-BAEF-00C04FC308C9}";

std::string CacheFolder() { // host path; "" when the user has no folder for caches
    const auto absolute = [](const char* variable) {
        const char* value = std::getenv(variable);
        return std::string(value && value[0] == '/' ? value : "");
    };
    if (const std::string cache = absolute("XDG_CACHE_HOME"); !cache.empty()) return cache + "/korlan/klnupdt";
    const std::string home = absolute("HOME");
    return home.empty() ? home : home + "/.cache/korlan/klnupdt";
}

// Shows every file below a folder, then the folder that held it: `visit` gets the folder's descriptor, the name in it,
// its size and whether it is itself a folder, and returns false to stop.
using Visit = std::function<bool(int folder, const char* name, std::int64_t size, bool isFolder)>;

std::vector<std::string> Names(int folder) {
    const int copy = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); // closed with `entries`
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(copy < 0 ? nullptr : fdopendir(copy), closedir);
    std::vector<std::string> names;
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr)
        if (entry->d_name != std::string_view(".") && entry->d_name != std::string_view(".."))
            names.emplace_back(entry->d_name);
    return names;
}

bool Walk(const FileHandle& folder, const Visit& visit) {
    if (!folder) return true;
    for (const std::string& name : Names(folder.Descriptor())) {
        struct stat status {};
        if (fstatat(folder.Descriptor(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) continue;
        const bool isFolder = S_ISDIR(status.st_mode);
        constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
        if (isFolder && !Walk(FileHandle(openat(folder.Descriptor(), name.c_str(), kFolder)), visit)) return false;
        if (!visit(folder.Descriptor(), name.c_str(), isFolder ? 0 : status.st_size, isFolder)) return false;
    }
    return true;
}

void WalkCache(const Visit& visit) {
    const std::string path = CacheFolder();
    if (!path.empty()) Walk(FileHandle(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW), visit);
}

class FolderCacheHandler : public CacheHandler {
public:
    void Initialize(const std::string&) override {} // one folder, whatever volume it lies on

    std::int64_t GetSpaceUsed(CacheCallback& callback) override {
        std::int64_t used = 0;
        WalkCache([&](int, const char*, std::int64_t size, bool isFolder) {
            used += size;
            return isFolder || callback.ScanProgress(used) == 0;
        });
        return used;
    }

    void Purge(std::int64_t spaceToFree, CacheCallback& callback) override {
        std::int64_t freed = 0;
        WalkCache([&](int folder, const char* name, std::int64_t size, bool isFolder) {
            if (unlinkat(folder, name, isFolder ? AT_REMOVEDIR : 0) == 0) freed += size;
            return isFolder || callback.PurgeProgress(freed, spaceToFree) == 0;
        });
    }
};

} // namespace

std::unique_ptr<CacheHandler> CreateCacheHandlerObject(const std::string& classId) {
    if (!EqualNoCase(classId, kHandlerClass)) return nullptr;
    return std::make_unique<FolderCacheHandler>();
}

std::string InternetCacheFolder() {
    const std::string folder = CacheFolder();
    return folder.empty() ? folder : WindowsPath(folder);
}

bool CacheHandlerKeyOpens() { // the handler is part of this program
    return true;
}

} // namespace korlan
