// An archive's bytes, and one member unpacked by the archive library.
#pragma once

#include "platform/linux/FileHandle.h"
#include "platform/zip/ZipDirectory.h"

#include <archive.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace korlan {

class ArchiveFile {
public:
    explicit ArchiveFile(const std::string& hostPath); // Size() is 0 when it is no file that can be read
    std::uint64_t Size() const { return size_; }
    std::string Read(std::uint64_t offset, std::size_t count);
    // What there is from `offset` on, `most` bytes or fewer; valid until the next call. A small archive is read once.
    std::string_view Block(std::uint64_t offset, std::uint64_t most);

private:
    FileHandle file_;
    std::uint64_t size_ = 0, begin_ = 0;
    std::size_t have_ = 0;
    std::vector<char> buffer_; // the bytes from begin_ on
};

// The library sees an archive of this member alone: the member's bytes, then a directory made for it. What is wrong
// with the other members, or stands behind the directory, cannot stop it.
class MemberReader {
public:
    // `password` gives the next password to try, null when there is none.
    MemberReader(ArchiveFile& file, const ZipMember& member, std::function<const char*()> password);

    enum class End { None, OfData, Failed, NoPassword }; // after NoPassword it may be asked again
    End Next(std::string_view& block);

private:
    static la_ssize_t Read(archive*, void* reader, const void** bytes);
    static la_int64_t Seek(archive*, void* reader, la_int64_t offset, int whence);
    static const char* Password(archive*, void* reader);

    ArchiveFile& file_;
    std::function<const char*()> password_;
    const std::uint64_t begin_, length_; // of the member in the file
    const std::string directory_;        // follows the member
    std::uint64_t at_ = 0;
    std::unique_ptr<archive, int (*)(archive*)> reader_;
    bool open_ = false;
};

} // namespace korlan
