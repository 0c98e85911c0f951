// What an extraction asks of the back end: the archive's bytes, its members unpacked, and the folder they go to.
#pragma once

#include "platform/zip/ZipDirectory.h"

#include <memory>
#include <string>
#include <string_view>

namespace korlan {

// One member's data, deciphered and unpacked.
class MemberData {
public:
    virtual ~MemberData() = default;
    // The next bytes, valid until the next call; "" at the end, and when the data is damaged or the password is wrong.
    virtual std::string_view Next() = 0;
    virtual bool Whole() const = 0; // after the end: nothing was amiss
};

class ZipArchive {
public:
    virtual ~ZipArchive() = default;
    virtual std::uint64_t Size() const = 0;
    virtual std::string Read(std::uint64_t offset, std::size_t count) = 0; // or as many bytes as there are
    virtual bool Unpacks(const ZipMember& member) const = 0;               // knows how the member is packed
    virtual std::unique_ptr<MemberData> Open(const ZipMember& member, const std::string& password) = 0;
};
std::unique_ptr<ZipArchive> OpenZipArchive(const std::string& path); // null when it is no file that can be read

// A file under way, under a temporary name. It goes at the end of its life, unless it has been installed.
class NewFile {
public:
    virtual ~NewFile() = default;
    virtual bool Write(std::string_view bytes) = 0;  // false when the folder or the disk refuses
    virtual bool Restart() = 0;                      // empty again
    virtual bool Install(std::int64_t modified) = 0; // gives it its time (seconds since 1970) and its name
};

// What a name stands for in the folder.
struct TargetName {
    enum class Kind { Free, File, Folder, Refused }; // Refused: no file of this system may have it
    Kind kind = Kind::Free;
    std::string spelling; // the one under which it is there, else the one it will get
};

class TargetFolder {
public:
    virtual ~TargetFolder() = default;
    virtual TargetName Find(const std::string& name) const = 0;
    virtual std::unique_ptr<NewFile> Begin(const std::string& spelling, bool executable) const = 0;
};
// Made when missing, unless ".." is in its path; null when it cannot be. Temporary files that a killed process left
// there go. It must outlive its files.
std::unique_ptr<TargetFolder> OpenTargetFolder(const std::string& path);

} // namespace korlan
