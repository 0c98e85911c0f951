// Files and folders by Windows-form paths ("C:\KORLAN\SYS"). Names match without regard to case, exact spelling first;
// a new file keeps the spelling it was given. "Attributes normal" means that the owner may write. Failures raise a
// RuntimeError (53 no file, 76 no folder or drive, 70 access refused, 75 read-only or of the wrong kind, 61 disk full)
// unless said otherwise. Only regular files are read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace korlan {

bool FileOpensForReading(const std::string& path); // opened and closed again; false on any failure
// Name (real spelling, without folder) of the first normal file that matches; "" when there is none or the folder is
// missing. Folders are not normal, nor are files with a name that no path can say; read-only files are. "*" and "?"
// match in the last component.
std::string FindNormalFile(const std::string& pattern);
std::vector<std::string> ListNormalFiles(const std::string& folder); // names, sorted without regard to case
void SetAttributesNormal(const std::string& path);                   // of a link: nothing, what it names stays as it is
bool EraseFile(const std::string& path); // false when it is missing, read-only, a folder or in a folder that refuses
std::int64_t FileLength(const std::string& path); // bytes

bool FolderExists(const std::string& path);
void CreateOneFolder(const std::string& path); // its parent must be there
void TryFolder(const std::string& path); // changes to it and back to where the program was, whatever that is called now

// One look at a file that opens for reading. Times are ticks: 100 ns since 1601-01-01 UTC.
struct FileLook {
    std::int64_t ticks; // last written
    bool isNormal;      // FindNormalFile finds it, too
};
FileLook LookAtFile(const std::string& path);
constexpr std::int64_t TicksOf(std::int64_t secondsSince1970) {
    return (secondsSince1970 + 11'644'473'600) * 10'000'000;
}

// The calls that read a file's time stamp, shaped like the Windows ones whose oddities the program keeps.
std::int32_t OpenForStamp(const std::string& path); // -1 where FileOpensForReading says false, else a handle
bool IsNormalFile(std::int32_t handle, const std::string& path); // of what OpenForStamp gave: FindNormalFile finds it
bool ReadWriteTime(std::int32_t handle, std::int64_t& ticks);    // false on a bad handle
void CloseStamp(std::int32_t handle);
struct CalendarTime {
    std::int32_t year, month, day, hour, minute, second; // UTC
};
std::int32_t TicksToCalendar(std::int64_t ticks, CalendarTime& time); // 1 on success, 0 on a value out of range

// A file open for writing in binary. Destroying it closes it; one in Append mode that was not closed before has its old
// length again, so an error leaves nothing half appended. Buffered: Close raises what a last write raises.
class OutputFile {
public:
    enum class Mode { Create, Append }; // Create empties an existing file; Append makes a missing one
    OutputFile(const std::string& path, Mode mode);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    void Write(std::string_view bytes); // in Append mode one call is one write at the end of the file
    void Close();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

std::string ReadWholeFile(const std::string& path); // bytes as they stand
// At most `count` bytes from byte `offset` on.
std::string ReadFilePart(const std::string& path, std::uint64_t offset, std::size_t count);

// Writes out to the disk what the file system that holds `path` still keeps in memory. Never raises.
void SyncFileSystem(const std::string& path);

} // namespace korlan
