#include "platform/linux/HostPath.h"

#include "platform/AsciiText.h"
#include "platform/RuntimeError.h"
#include "platform/linux/FolderIndex.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace korlan {
namespace {

FolderIndex& Index() {
    static FolderIndex index;
    return index;
}

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

// The host folder of a drive without a slash at its end ("" for the root); nothing when there is no such drive.
// A link that leads somewhere is followed once: drives stay where they are while the program runs.
std::optional<std::string> DriveRoot(char letter) {
    static std::string drives;
    static std::map<char, std::string> roots;
    if (std::string folder = DrivesFolder(); folder != drives) {
        drives = std::move(folder);
        roots.clear();
    }
    const char upper = UpperAscii(letter);
    std::string& root = roots[upper];
    for (const char spelling : {LowerAscii(upper), upper})
        if (root.empty()) root = RealPath(drives + "/" + spelling + ":");
    if (!root.empty()) return root == "/" ? std::string() : root;
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
    if (!folder) throw RuntimeError(kErrPathNotFound);
    return WindowsPath(folder.get());
}

struct SplitPath {
    char drive = 0;   // upper case
    std::string rest; // of the path: the names, a slash before each
};

// Windows takes one dot off the end of any name in a path, and all dots and blanks off the end of the last one. (".."
// and the like are names of their own.)
std::string_view WithoutTail(std::string_view name, bool last) {
    const std::size_t length = name.find_last_not_of(" .") + 1; // npos + 1 is 0
    if (length == 0) return name;
    if (last) return name.substr(0, length);
    return name.ends_with('.') && name[name.size() - 2] != '.' ? name.substr(0, name.size() - 1) : name;
}

std::string_view FolderOf(std::string_view path) {
    return path.substr(0, path.rfind('/'));
}

void AppendNames(std::string_view path, std::string& rest) {
    while (!path.empty()) {
        const std::size_t end = std::min(path.find_first_of("\\/"), path.size());
        const std::string_view name = WithoutTail(path.substr(0, end), end == path.size());
        path.remove_prefix(std::min(end + 1, path.size()));
        if (name == "..")
            rest.resize(FolderOf(rest).size());
        else if (!name.empty() && name != ".")
            rest.append("/").append(name);
    }
}

SplitPath Split(std::string_view path) {
    const auto isSlash = [](char character) { return character == '\\' || character == '/'; };
    if (path.find('\0') != std::string_view::npos) throw RuntimeError(kErrPathNotFound);
    if (path.size() >= 2 && isSlash(path[0]) && isSlash(path[1])) throw RuntimeError(kErrPathNotFound);

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
        if (fromCurrent) AppendNames(std::string_view(current).substr(2), split.rest);
    }
    AppendNames(path, split.rest);
    return split;
}

std::string RootOf(const SplitPath& split) {
    auto root = DriveRoot(split.drive);
    if (!root) throw RuntimeError(kErrPathNotFound);
    return *std::move(root);
}

// Finds what lies at `rest` under `root`, whatever the case of its letters.
std::string Find(const std::string& root, std::string_view rest) {
    if (rest.empty()) return root;
    const std::string_view folderRest = FolderOf(rest);
    const std::string name(rest.substr(folderRest.size() + 1));
    std::string folder = root + std::string(folderRest) + "/";
    if (const auto known = Index().KnownSpelling(folder, name)) return folder + *known;
    if (IsThere(folder + name)) return folder + name;
    if (!IsThere(folder)) folder = Find(root, folderRest) + "/";
    return folder + Index().Spelling(folder, name);
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
        if (!folder) throw RuntimeError(kErrPathNotFound);
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

std::string SpellingInFolder(const std::string& hostFolder, const std::string& name) {
    if (auto known = Index().KnownSpelling(hostFolder + "/", name)) return *known;
    return IsThere(hostFolder + "/" + name) ? name : Index().Spelling(hostFolder + "/", name);
}

std::string HostPath(const std::string& windowsPath) {
    const SplitPath split = Split(windowsPath);
    const std::string path = Find(RootOf(split), split.rest);
    return path.empty() ? "/" : path;
}

std::string LikelyHostPath(const std::string& windowsPath) {
    const SplitPath split = Split(windowsPath);
    std::string path = RootOf(split).append(split.rest);
    const std::size_t name = path.rfind('/') + 1; // npos + 1 is 0
    if (const auto known = Index().KnownSpelling(path.substr(0, name), path.substr(name)))
        path.replace(name, std::string::npos, *known);
    return path;
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
