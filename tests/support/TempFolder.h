// A drive C: in a temporary folder, for tests that need real files. While it lives, $KLN_DRIVES names a folder of links
// with "c:" in it, and $XDG_CONFIG_HOME and $XDG_CACHE_HOME lie there too. At its end everything is as before.
// On Windows it is the prefix's real drive C: (and refuses any other Windows): what was there before stays, and is not
// among the names.
#pragma once

#include "tests/support/Host.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace korlan::test {

// Sets an environment variable (nullopt: takes it away) for as long as it lives.
class ScopedVariable {
public:
    ScopedVariable(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
        if (const char* before = std::getenv(name_.c_str())) before_ = before;
        Set(value);
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ~ScopedVariable() { Set(before_); }

private:
    void Set(const std::optional<std::string>& value) { SetVariable(name_, value ? value->c_str() : nullptr); }
    std::string name_;
    std::optional<std::string> before_;
};

#ifdef _WIN32
class TempDrive {
public:
    TempDrive() : before_(std::filesystem::current_path()) {
        if (!GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version"))
            throw std::runtime_error("these tests write to drive C: and run in a Wine prefix only");
        theirs_ = Names();
    }
    ~TempDrive() {
        std::error_code ignored;
        std::filesystem::current_path(before_, ignored);
        for (const std::string& name : Names()) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(HostFile(name), ignored))
                SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL);
            SetFileAttributesW(HostFile(name).c_str(), FILE_ATTRIBUTE_NORMAL);
            std::filesystem::remove_all(HostFile(name), ignored);
        }
    }
#else
class TempDrive {
public:
    TempDrive()
        : top_(MakeFolder()), before_(std::filesystem::current_path()),
          state_("XDG_STATE_HOME", (top_ / "state").string()), drives_("KLN_DRIVES", (top_ / "drives").string()),
          config_("XDG_CONFIG_HOME", (top_ / "config").string()), cache_("XDG_CACHE_HOME", (top_ / "cache").string()) {
        for (const char* folder : {"c", "drives", "config", "cache"}) std::filesystem::create_directory(top_ / folder);
        std::filesystem::create_directory_symlink(top_ / "c", top_ / "drives" / "c:");
    }
    ~TempDrive() {
        std::error_code ignored;
        std::filesystem::current_path(before_, ignored);
        std::filesystem::remove_all(top_, ignored);
    }
#endif

    // "SYS\\X.INI" or "SYS/X.INI" -> "C:\\SYS\\X.INI"; "" is "C:\\".
    static std::string Path(std::string_view relative = {}) {
        std::string path = "C:\\" + std::string(relative);
        std::replace(path.begin(), path.end(), '/', '\\');
        return path;
    }

    // The host's path of the same file, in exactly this spelling; a leading "C:\\" is allowed.
    std::string HostPathOf(std::string_view relative = {}) const {
        if (relative.starts_with("C:")) relative.remove_prefix(2);
        std::string path(relative.substr(std::min(relative.find_first_not_of("\\/"), relative.size())));
        std::replace(path.begin(), path.end(), '\\', '/');
        return TextOfPath(top_ / (kOnWindows ? "" : "c")) + (kOnWindows || path.empty() ? path : "/" + path);
    }

    std::filesystem::path HostFile(std::string_view relative) const {
        return PathOfText(HostPathOf(relative));
    }

    void Write(std::string_view path, std::string_view bytes) const { // makes the folders too
        const std::filesystem::path host = HostFile(path);
        std::filesystem::create_directories(host.parent_path());
        std::ofstream file(host, std::ios::binary | std::ios::trunc);
        if (!(file << bytes).flush()) throw std::runtime_error("cannot write " + host.string());
    }

    // The file's bytes; a file that is not there throws.
    std::string Read(std::string_view path) const {
        std::ifstream file(HostFile(path), std::ios::binary);
        if (!file) throw std::runtime_error("cannot read " + HostPathOf(path));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    bool Exists(std::string_view path) const {
        return std::filesystem::exists(std::filesystem::symlink_status(HostFile(path)));
    }

    void MakeFolders(std::string_view path) const {
        std::filesystem::create_directories(HostPathOf(path));
    }

    std::vector<std::string> Names(std::string_view folder = {}) const { // sorted
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(HostFile(folder)))
            names.push_back(TextOfPath(entry.path().filename()));
        if (folder.empty())
            std::erase_if(names, [&](const auto& name) { return std::ranges::find(theirs_, name) != theirs_.end(); });
        std::sort(names.begin(), names.end());
        return names;
    }

    void SetMode(std::string_view path, unsigned mode) const {
        if (!ChangeMode(HostPathOf(path), mode)) throw std::runtime_error("cannot chmod " + HostPathOf(path));
    }

    void MakeDevice([[maybe_unused]] std::string_view path) const { // one that is always full; Windows has none
#ifndef _WIN32
        chmod(top_.c_str(), 0755);
        std::filesystem::create_symlink("/dev/full", HostPathOf(path));
#endif
    }

    // Sets the last-write time (UTC).
    void Touch(std::string_view path, int year, int month, int day, int hour, int minute, int second) const {
        using namespace std::chrono;
        const auto time = sys_days(std::chrono::year(year) / month / day) + hours(hour) + minutes(minute);
        std::filesystem::last_write_time(HostPathOf(path), file_clock::from_sys(time + seconds(second)));
    }

    const std::filesystem::path& Top() const {
        return top_;
    } // on Linux it holds "c", "drives", "config" and "cache"

#ifdef _WIN32
private:
    std::filesystem::path top_ = "C:/", before_;
    std::vector<std::string> theirs_;
};
#else
    void AddDrive(char letter, const std::string& target) const { // `target` is a host folder
        std::filesystem::create_directory_symlink(target, top_ / "drives" / (std::string(1, letter) + ":"));
    }

private:
    static std::filesystem::path MakeFolder() {
        std::string name = canonical(std::filesystem::temp_directory_path()) / "kln-test-XXXXXX";
        if (!mkdtemp(name.data())) throw std::runtime_error("cannot make " + name);
        return name;
    }

    std::filesystem::path top_, before_;
    std::vector<std::string> theirs_;
    ScopedVariable state_, drives_, config_, cache_;
};
#endif

} // namespace korlan::test
