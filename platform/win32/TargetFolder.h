// The folder an archive is extracted to, and how a file comes there whole or not at all.
#pragma once

#include "platform/win32/FileHandle.h"

#include <cstdint>

namespace korlan {

// What a name stands for in the folder.
struct TargetName {
    std::string spelling; // the one under which it is there, else the one it will get
    bool there = false, folder = false;
};

class TargetFolder {
public:
    // Made when missing, unless ".." is in its path. Temporary files that a killed process left there go.
    explicit TargetFolder(const std::string& path);
    explicit operator bool() const { return there_; }
    TargetName Find(const std::string& name) const;
    std::wstring Path(const std::string& name) const { return FilePath(path_ + name); }

private:
    std::string path_; // with its closing backslash
    bool there_;
};

// A file under way, under a temporary name. It goes at the end of its life, unless it has been installed.
class NewFile {
public:
    explicit NewFile(const TargetFolder& folder);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    explicit operator bool() const { return static_cast<bool>(file_); } // false when the folder refuses
    bool Write(std::string_view bytes) const { return file_.Write(bytes); }
    void Restart() const; // empty again
    // Gives it its time (seconds since 1970), closes it and gives it its name; 0 or the system's error. A library that
    // runs, this program's own among them, can be renamed but not replaced: it goes aside as NAME.old, which the next
    // one of that name clears away.
    DWORD Install(const std::string& name, std::int64_t modified);

private:
    const TargetFolder& folder_;
    FileHandle file_;
    std::wstring path_; // "" when there is nothing to remove
};

} // namespace korlan
