// The folder an archive is extracted to, and how a file comes there whole or not at all.
#pragma once

#include "platform/linux/FileHandle.h"

#include <string>
#include <string_view>

namespace korlan {

// What a name stands for in the folder.
struct TargetName {
    std::string spelling; // the one under which it is there, else the one it will get
    bool there = false, folder = false;
    mode_t executable = 0; // the execute bits of the file that is there, or was until this process erased it
};

class TargetFolder {
public:
    // Made when missing, unless ".." is in its path. Temporary files that a killed process left there go.
    explicit TargetFolder(const std::string& path);
    explicit operator bool() const { return static_cast<bool>(folder_); }
    int Descriptor() const { return folder_.Descriptor(); }
    TargetName Find(const std::string& name) const;

private:
    std::string path_; // the host's
    FileHandle folder_;
};

// A file under way, under a temporary name. It goes at the end of its life, and with the process, unless it has been
// installed.
class NewFile {
public:
    NewFile(const TargetFolder& folder, mode_t executable); // its mode: the usual one and these bits
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    explicit operator bool() const { return !name_.empty(); } // false when the folder refuses
    bool Write(std::string_view bytes) { return WriteAll(file_.Descriptor(), bytes.data(), bytes.size()) == 0; }
    // Closes it and gives it its time (seconds since 1970) and its name; 0 or the errno value.
    int Install(const std::string& name, std::int64_t modified);

private:
    void Remove();

    static NewFile* underWay;
    const int folder_;
    FileHandle file_;
    std::string name_; // "" when there is nothing to remove
};

} // namespace korlan
