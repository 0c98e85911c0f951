// The members of an archive, unpacked by the archive library.
#include "platform/RuntimeError.h"
#include "platform/ZipLibrary.h"
#include "platform/linux/FileHandle.h"
#include "platform/linux/HostPath.h"
#include "platform/zip/ZipHost.h"

#include <archive.h>

#include <algorithm>
#include <new>
#include <vector>

namespace korlan {
namespace {

constexpr std::size_t kBlock = 262'144;

std::size_t ReadAt(int file, std::uint64_t offset, char* bytes, std::size_t count) {
    std::size_t have = 0;
    while (have < count) {
        const ssize_t got = pread(file, bytes + have, count - have, static_cast<off_t>(offset + have));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        have += static_cast<std::size_t>(got);
    }
    return have;
}

std::string Number(std::uint64_t number, std::size_t width) { // little-endian
    std::string bytes;
    for (std::size_t i = 0; i < width; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
    return bytes;
}

class HostZipArchive : public ZipArchive {
public:
    HostZipArchive(FileHandle file, std::uint64_t size) : file_(std::move(file)), size_(size) {}
    std::uint64_t Size() const override { return size_; }
    std::string Read(std::uint64_t offset, std::size_t count) override;
    // Stored, deflated, bzip2. Of the newer methods the archive itself says how much memory they take, up to 4 GB.
    bool Unpacks(const ZipMember& member) const override {
        return member.method == 0 || member.method == 8 || member.method == 12;
    }
    std::unique_ptr<MemberData> Open(const ZipMember& member, const std::string& password) override;
    // What there is from `offset` on, `most` bytes or fewer; valid until the next call. A small archive is read once.
    std::string_view Block(std::uint64_t offset, std::uint64_t most);

private:
    const FileHandle file_;
    const std::uint64_t size_;
    std::uint64_t begin_ = 0;
    std::size_t have_ = 0;
    std::vector<char> buffer_; // the bytes from begin_ on
};

// The library sees an archive of this member alone: the member's bytes, then a directory made for it. What is wrong
// with the other members, or stands behind the directory, cannot stop it.
class MemberReader : public MemberData {
public:
    MemberReader(HostZipArchive& file, const ZipMember& member, const std::string& password);
    std::string_view Next() override;
    bool Whole() const override { return result_ == ARCHIVE_EOF; }

private:
    static la_ssize_t Read(archive*, void* reader, const void** bytes);
    static la_int64_t Seek(archive*, void* reader, la_int64_t offset, int whence);

    HostZipArchive& file_;
    const std::uint64_t begin_, length_; // of the member in the file
    const std::string directory_;        // follows the member
    std::uint64_t at_ = 0;
    std::unique_ptr<archive, int (*)(archive*)> reader_;
    int result_ = ARCHIVE_FATAL; // of the last call
};

// The directory of an archive that holds this member alone, from byte 0 to `length`. The entry loses its maker and its
// attributes: what kind of file the member is has been decided.
std::string DirectoryOf(const ZipMember& member, std::uint64_t length) {
    std::string entry = member.entry;
    entry[5] = 0;                            // DOS
    entry.replace(32, 2, Number(0, 2));      // no comment
    entry.replace(38, 8, Number(0, 8));      // attributes, place of the header
    const std::uint64_t size = entry.size(); // the long records hold whatever size the member has
    return entry + "PK\6\6" + Number(44, 8) + Number(45, 2) + Number(45, 2) + Number(0, 8) + Number(1, 8) +
           Number(1, 8) + Number(size, 8) + Number(length, 8) + "PK\6\7" + Number(0, 4) + Number(length + size, 8) +
           Number(1, 4) + "PK\5\6" + Number(0, 4) + Number(0xFFFF'FFFF, 4) + Number(0xFFFF'FFFF'FFFF'FFFF, 8) +
           Number(0, 2);
}

// With what may follow the data: its check sum and sizes once more.
std::uint64_t LengthOf(const HostZipArchive& file, const ZipMember& member) {
    constexpr std::uint64_t kDescriptor = 24;
    return std::min(file.Size(), member.data + member.packed + kDescriptor) - member.header;
}

std::string HostZipArchive::Read(std::uint64_t offset, std::size_t count) {
    if (size_ <= kBlock) return std::string(Block(offset, count));
    std::string bytes(count, '\0');
    bytes.resize(ReadAt(file_.Descriptor(), offset, bytes.data(), count));
    return bytes;
}

std::string_view HostZipArchive::Block(std::uint64_t offset, std::uint64_t most) {
    if (offset >= size_) return {};
    if (offset < begin_ || offset - begin_ >= have_) {
        buffer_.resize(std::min<std::size_t>(kBlock, size_));
        begin_ = size_ <= kBlock ? 0 : offset;
        have_ = ReadAt(file_.Descriptor(), begin_, buffer_.data(), buffer_.size());
    }
    const std::size_t from = offset - begin_;
    return from < have_ ? std::string_view(buffer_.data(), have_).substr(from, most) : std::string_view();
}

MemberReader::MemberReader(HostZipArchive& file, const ZipMember& member, const std::string& password)
    : file_(file), begin_(member.header), length_(LengthOf(file, member)), directory_(DirectoryOf(member, length_)),
      reader_(archive_read_new(), archive_read_free) {
    archive* const reader = reader_.get();
    if (!reader) throw std::bad_alloc();
    archive_read_support_format_zip_seekable(reader);
    if (!password.empty()) archive_read_add_passphrase(reader, password.c_str());
    archive_read_set_callback_data(reader, this);
    archive_read_set_read_callback(reader, Read);
    archive_read_set_seek_callback(reader, Seek);
    archive_entry* entry = nullptr;
    if (archive_read_open1(reader) != ARCHIVE_OK) return;
    result_ = archive_read_next_header(reader, &entry);
    if (result_ == ARCHIVE_WARN) result_ = ARCHIVE_OK; // a name it cannot show; we can
}

std::string_view MemberReader::Next() {
    const void* bytes = nullptr;
    std::size_t count = 0;
    la_int64_t offset = 0;
    while (result_ == ARCHIVE_OK && count == 0)
        result_ = archive_read_data_block(reader_.get(), &bytes, &count, &offset);
    return result_ == ARCHIVE_OK ? std::string_view(static_cast<const char*>(bytes), count) : std::string_view();
}

la_ssize_t MemberReader::Read(archive*, void* reader, const void** bytes) {
    auto& self = *static_cast<MemberReader*>(reader);
    const std::string_view rest = self.directory_;
    const std::string_view block = self.at_ < self.length_
                                       ? self.file_.Block(self.begin_ + self.at_, self.length_ - self.at_)
                                       : rest.substr(std::min<std::size_t>(self.at_ - self.length_, rest.size()));
    *bytes = block.data();
    self.at_ += block.size();
    return static_cast<la_ssize_t>(block.size());
}

la_int64_t MemberReader::Seek(archive*, void* reader, la_int64_t offset, int whence) {
    auto& self = *static_cast<MemberReader*>(reader);
    const auto from = static_cast<la_int64_t>(whence == SEEK_END   ? self.length_ + self.directory_.size()
                                              : whence == SEEK_CUR ? self.at_
                                                                   : 0);
    if (from + offset < 0) return ARCHIVE_FATAL;
    self.at_ = static_cast<std::uint64_t>(from + offset);
    return from + offset;
}

std::unique_ptr<MemberData> HostZipArchive::Open(const ZipMember& member, const std::string& password) {
    return std::make_unique<MemberReader>(*this, member, password);
}

} // namespace

std::unique_ptr<ZipArchive> OpenZipArchive(const std::string& path) {
    try {
        FileHandle file(HostPath(path), O_RDONLY | O_NONBLOCK);
        struct stat status {};
        if (!file || fstat(file.Descriptor(), &status) != 0 || !S_ISREG(status.st_mode)) return nullptr;
        return std::make_unique<HostZipArchive>(std::move(file), static_cast<std::uint64_t>(status.st_size));
    } catch (const RuntimeError&) { // no such drive
        return nullptr;
    }
}

void UzpVersion2(UnzipVersion& version) {
    version.version = archive_version_string();
}

} // namespace korlan
