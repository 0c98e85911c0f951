#include "platform/linux/HostPath.h"

#include "platform/AsciiText.h"
#include "platform/RuntimeError.h"
#include "platform/TextCase.h"
#include "platform/linux/ChangeStamp.h"
#include "platform/linux/HostError.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace korlan {
namespace {

// --- Spelling of names -----------------------------------------------------------------------------------------------

// File systems of this machine that are known to stamp a folder at each change of its names. On any other a listing is
// read anew whenever it is asked for.
bool StampsItsFolders(int folder) {
    struct statfs system {};
    if (fstatfs(folder, &system) != 0) return false;
    constexpr unsigned long kXfs = 0x58465342, kF2fs = 0xF2F52010;
    const auto type = static_cast<unsigned long>(system.f_type);
    return type == EXT4_SUPER_MAGIC || type == BTRFS_SUPER_MAGIC || type == TMPFS_MAGIC ||
           type == OVERLAYFS_SUPER_MAGIC || type == kXfs || type == kF2fs;
}

// Keeps the listings of folders. One is kept only when the folder's stamp had settled before it was read, and used only
// while the folder still has that stamp: an old listing can therefore not hide a new file.
class ListingCache {
public:
    // The spelling of that name in the folder, the first in byte order; nothing when there is none.
    std::optional<std::string> Find(const std::string& hostFolder, const std::string& foldedName) {
        const std::int64_t now = ChangeStamp::Now();
        struct stat status {};
        if (stat(hostFolder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return std::nullopt;
        auto known = listings_.find(Identity(status));
        if (known == listings_.end() || known->second.stamp != ChangeStamp::Of(status)) {
            const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(hostFolder.c_str()), closedir);
            if (!folder || fstat(dirfd(folder.get()), &status) != 0) return std::nullopt;
            const ChangeStamp stamp = ChangeStamp::Of(status);
            if (!stamp.Settled(now) || !StampsItsFolders(dirfd(folder.get()))) return Scan(folder.get(), foldedName);
            if (listings_.size() >= kMostFolders) listings_.clear();
            known = listings_.insert_or_assign(Identity(status), Read(folder.get(), stamp)).first;
        }
        const auto spelling = known->second.spellingOf.find(foldedName);
        if (spelling == known->second.spellingOf.end()) return std::nullopt;
        return spelling->second;
    }

private:
    struct Listing {
        ChangeStamp stamp;
        std::unordered_map<std::string, std::string> spellingOf; // by the name in upper case
    };

    static std::pair<dev_t, ino_t> Identity(const struct stat& status) { return {status.st_dev, status.st_ino}; }

    static void TakeFirst(std::string& spelling, const char* other) {
        if (spelling.empty() || other < spelling) spelling = other;
    }

    static Listing Read(DIR* folder, const ChangeStamp& stamp) {
        Listing listing{stamp, {}};
        while (const dirent* entry = readdir(folder))
            TakeFirst(listing.spellingOf[UpperCaseText(entry->d_name)], entry->d_name);
        return listing;
    }

    static std::optional<std::string> Scan(DIR* folder, const std::string& foldedName) { // for a folder in motion
        std::string spelling;
        while (const dirent* entry = readdir(folder))
            if (UpperCaseText(entry->d_name) == foldedName) TakeFirst(spelling, entry->d_name);
        return spelling.empty() ? std::nullopt : std::optional(spelling);
    }

    static constexpr std::size_t kMostFolders = 256;
    std::map<std::pair<dev_t, ino_t>, Listing> listings_;
};

bool IsThere(const std::string& hostPath) {
    struct stat status {};
    return lstat(hostPath.c_str(), &status) == 0;
}

// --- Drives ----------------------------------------------------------------------------------------------------------

std::string DrivesFolder() {
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return std::string(value ? value : "");
    };
    if (std::string folder = variable("KLN_DRIVES"); !folder.empty()) return folder;
    if (const std::string prefix = variable("WINEPREFIX"); !prefix.empty()) return prefix + "/dosdevices";
    return variable("HOME") + "/.wine/dosdevices";
}

std::string RealPath(const std::string& hostPath) { // "" when it is not there
    const std::unique_ptr<char, void (*)(void*)> real(realpath(hostPath.c_str(), nullptr), std::free);
    return real ? std::string(real.get()) : std::string();
}

bool IsLetter(char letter) {
    return UpperAscii(letter) >= 'A' && UpperAscii(letter) <= 'Z';
}

// The folders that links lead to, "" for a link that leads nowhere. Kept while the link itself stays as it is.
class LinkCache {
public:
    std::string Target(const std::string& link) {
        const std::int64_t now = ChangeStamp::Now();
        struct stat status {};
        if (lstat(link.c_str(), &status) != 0) return {};
        const ChangeStamp stamp = ChangeStamp::Of(status);
        const auto known = targets_.find(link);
        if (known != targets_.end() && known->second.first == stamp) return known->second.second;
        std::string target = RealPath(link);
        if (!target.empty() && stamp.Settled(now)) targets_.insert_or_assign(link, std::pair(stamp, target));
        return target;
    }

private:
    std::map<std::string, std::pair<ChangeStamp, std::string>> targets_;
};

// The host folder of a drive without a slash at its end ("" for the root); nothing when there is no such drive.
std::optional<std::string> DriveRoot(char letter) {
    static LinkCache links;
    const std::string folder = DrivesFolder() + "/";
    const char upper = UpperAscii(letter);
    for (const char spelling : {LowerAscii(upper), upper}) {
        const std::string root = links.Target(folder + spelling + ":");
        if (!root.empty()) return root == "/" ? std::string() : root;
    }
    if (upper == 'Z') return std::string();
    return std::nullopt;
}

std::vector<std::pair<char, std::string>> AllDrives() {
    std::vector<std::pair<char, std::string>> drives;
    const std::string folder = DrivesFolder();
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), closedir);
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        if (name.size() != 2 || name[1] != ':' || !IsLetter(name[0])) continue;
        if (auto root = DriveRoot(name[0])) drives.emplace_back(UpperAscii(name[0]), std::move(*root));
    }
    if (std::none_of(drives.begin(), drives.end(), [](const auto& drive) { return drive.first == 'Z'; }))
        drives.emplace_back('Z', "");
    std::sort(drives.begin(), drives.end());
    return drives;
}

// --- Paths -----------------------------------------------------------------------------------------------------------

std::string CurrentWindowsFolder() {
    const std::unique_ptr<char, void (*)(void*)> folder(getcwd(nullptr, 0), std::free);
    if (!folder) RaiseFileError(kErrPathNotFound);
    return WindowsPath(folder.get());
}

struct SplitPath {
    char drive = 0; // upper case
    std::vector<std::string> components;
};

void AppendComponents(std::string_view path, std::vector<std::string>& components) {
    while (!path.empty()) {
        const std::size_t end = std::min(path.find_first_of("\\/"), path.size());
        std::string_view component = path.substr(0, end);
        if (component.size() > 1 && component.ends_with('.') && component[component.size() - 2] != '.')
            component.remove_suffix(1); // Windows takes one dot off the end of any name in a path
        path.remove_prefix(std::min(end + 1, path.size()));
        if (component == "..") {
            if (!components.empty()) components.pop_back();
        } else if (!component.empty() && component != ".") {
            components.emplace_back(component);
        }
    }
}

// Blanks and dots at the end of a path are not part of its last name. (".." and the like are names of their own.)
std::string_view WithoutTrailingDots(std::string_view path) {
    const std::size_t start = path.find_last_of("\\/:") + 1; // npos + 1 is 0
    const std::size_t last = path.find_last_not_of(" .");
    if (last == std::string_view::npos || last < start) return path;
    return path.substr(0, last + 1);
}

SplitPath Split(std::string_view path) {
    const auto isSlash = [](char character) { return character == '\\' || character == '/'; };
    if (path.find('\0') != std::string_view::npos) RaiseFileError(kErrPathNotFound);
    if (path.size() >= 2 && isSlash(path[0]) && isSlash(path[1])) RaiseFileError(kErrPathNotFound);
    path = WithoutTrailingDots(path);

    SplitPath split;
    if (path.size() >= 2 && path[1] == ':' && IsLetter(path[0])) {
        split.drive = UpperAscii(path[0]);
        path.remove_prefix(2);
    }
    if (split.drive == 0 || path.empty() || !isSlash(path[0])) {
        const std::string current = CurrentWindowsFolder();
        if (split.drive == 0) split.drive = current[0];
        // Only the drive in use has a current folder; on any other a relative path starts at the root.
        const bool fromCurrent = split.drive == current[0] && (path.empty() || !isSlash(path[0]));
        if (fromCurrent) AppendComponents(std::string_view(current).substr(2), split.components);
    }
    AppendComponents(path, split.components);
    return split;
}

std::string RootOf(const SplitPath& split) {
    const auto root = DriveRoot(split.drive);
    if (!root) RaiseFileError(kErrPathNotFound);
    return *root;
}

// Finds the first `count` components under `root`, whatever the case of their letters.
std::string FindComponents(std::string path, const std::vector<std::string>& components, std::size_t count) {
    std::string exact = path;
    for (std::size_t i = 0; i < count; ++i) exact += "/" + components[i];
    if (IsThere(exact.empty() ? "/" : exact)) return exact;
    bool missing = false;
    for (std::size_t i = 0; i < count; ++i) {
        std::optional<std::string> spelling;
        if (!missing) spelling = SpellingInFolder(path, components[i]);
        missing = !spelling;
        path += "/" + (missing ? components[i] : *spelling);
    }
    return path;
}

// The rest of `path` below `root`, with its leading slash; nothing when it lies elsewhere.
std::optional<std::string_view> Below(std::string_view path, std::string_view root) {
    if (!path.starts_with(root)) return std::nullopt;
    path.remove_prefix(root.size());
    if (!path.empty() && path[0] != '/') return std::nullopt;
    return path;
}

std::string Normalised(const std::string& hostPath) {
    std::vector<std::string> components;
    if (hostPath.empty() || hostPath[0] != '/') {
        const std::unique_ptr<char, void (*)(void*)> folder(getcwd(nullptr, 0), std::free);
        if (!folder) RaiseFileError(kErrPathNotFound);
        return Normalised(std::string(folder.get()) + "/" + hostPath);
    }
    std::string normalised;
    for (std::size_t at = 0; at < hostPath.size();) {
        const std::size_t end = std::min(hostPath.find('/', at), hostPath.size());
        const std::string component = hostPath.substr(at, end - at);
        if (component == "..")
            normalised.resize(std::min(normalised.rfind('/'), normalised.size()));
        else if (!component.empty() && component != ".")
            normalised += "/" + component;
        at = end + 1;
    }
    return normalised;
}

struct DriveMatch {
    char drive = 'Z';
    std::size_t rootLength = 0;
    std::string rest;
};

DriveMatch LongestDrive(const std::string& path) {
    DriveMatch best{'Z', 0, path};
    bool found = false;
    for (const auto& [drive, root] : AllDrives()) {
        const auto rest = Below(path, root);
        if (!rest || (found && root.size() <= best.rootLength)) continue;
        best = {drive, root.size(), std::string(*rest)};
        found = true;
    }
    return best;
}

} // namespace

std::optional<std::string> SpellingInFolder(const std::string& hostFolder, std::string_view name) {
    static ListingCache cache;
    const std::string folder = hostFolder + "/";
    if (IsThere(folder + std::string(name))) return std::string(name);
    return cache.Find(folder, UpperCaseText(name));
}

std::string HostPath(const std::string& windowsPath) {
    const SplitPath split = Split(windowsPath);
    const std::string path = FindComponents(RootOf(split), split.components, split.components.size());
    return path.empty() ? "/" : path;
}

std::string HostPathAsSpelled(const std::string& windowsPath) {
    const SplitPath split = Split(windowsPath);
    if (split.components.empty()) return HostPath(windowsPath);
    return FindComponents(RootOf(split), split.components, split.components.size() - 1) + "/" + split.components.back();
}

std::string WindowsPath(const std::string& hostPath) {
    const std::string path = Normalised(hostPath);
    DriveMatch match = LongestDrive(path);
    if (match.rootLength == 0 && !path.empty()) { // perhaps it leads there through links
        const std::size_t slash = path.rfind('/');
        const std::string folder = RealPath(slash == 0 ? "/" : path.substr(0, slash));
        if (!folder.empty()) {
            DriveMatch real = LongestDrive((folder == "/" ? "" : folder) + path.substr(slash));
            if (real.rootLength > 0) match = std::move(real);
        }
    }
    std::replace(match.rest.begin(), match.rest.end(), '/', '\\');
    return std::string(1, match.drive) + ":" + (match.rest.empty() ? "\\" : match.rest);
}

bool DriveIsThere(const std::string& windowsPath) {
    const bool named = windowsPath.size() >= 2 && windowsPath[1] == ':' && IsLetter(windowsPath[0]);
    return !named || DriveRoot(windowsPath[0]).has_value();
}

} // namespace korlan
