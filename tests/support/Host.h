// The few things that a test must do by another call on each host, and the mark of rows that only one host can keep.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#ifdef _WIN32
#include <direct.h>
#include <windows.h>
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace korlan::test {

#ifdef _WIN32
inline constexpr bool kOnWindows = true;
inline void SetVariable(const std::string& name, const char* value) {
    _putenv_s(name.c_str(), value ? value : "");
}
inline bool ChangeMode(const std::string& path, unsigned mode) { // all that it has of one: may be written to or not
    return SetFileAttributesA(path.c_str(), (mode & 0200) != 0 ? FILE_ATTRIBUTE_NORMAL : FILE_ATTRIBUTE_READONLY);
}

// A file that another program has open and shares with nobody, as long as this lives.
class HeldFile {
public:
    explicit HeldFile(const std::filesystem::path& path)
        : handle_(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {}
    HeldFile(const HeldFile&) = delete;
    ~HeldFile() { CloseHandle(handle_); }

private:
    HANDLE handle_;
};
#else
inline constexpr bool kOnWindows = false;
struct HeldFile { // where nobody can keep others out
    explicit HeldFile(const std::filesystem::path&) {}
};
inline void SetVariable(const std::string& name, const char* value) {
    value ? setenv(name.c_str(), value, 1) : unsetenv(name.c_str());
}
inline bool ChangeMode(const std::string& path, unsigned mode) {
    return chmod(path.c_str(), mode) == 0;
}
#endif

inline std::filesystem::path PathOfText(const std::string& utf8) {
    return std::u8string(utf8.begin(), utf8.end());
}
inline std::string TextOfPath(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

// Rows of a table that only the one host can keep.
template <class Row>
std::vector<Row> RowsOn(bool host, std::initializer_list<Row> rows) {
    return host ? std::vector<Row>(rows) : std::vector<Row>();
}

} // namespace korlan::test

// A case of which nothing can be kept on Windows, and why.
#define ONLY_ON_LINUX(why)                                                                                             \
    if (korlan::test::kOnWindows) GTEST_SKIP() << why
