#include "publisher/ArchiveFile.h"

#include "platform/RuntimeError.h"
#include "publisher/Files.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <memory>

namespace korlan::publisher {

namespace {

constexpr std::size_t kBlock = 65536;

using ArchiveHandle = std::unique_ptr<archive, int (*)(archive*)>;

void Require(const ArchiveHandle& handle, int code, const std::filesystem::path& file) {
    if (code == ARCHIVE_OK) return;
    const char* reason = archive_error_string(handle.get());
    throw RuntimeError(kErrDeviceIo, file.string() + ": " + (reason == nullptr ? "cannot be written" : reason));
}

void CopyContent(const ArchiveHandle& handle, const StagedFile& file) {
    std::ifstream source(file.source, std::ios::binary);
    std::uintmax_t copied = 0;
    std::array<char, kBlock> block;
    while (source.read(block.data(), block.size()), source.gcount() > 0) {
        const auto got = static_cast<std::size_t>(source.gcount());
        copied += got;
        if (copied > file.size || archive_write_data(handle.get(), block.data(), got) != static_cast<la_ssize_t>(got))
            break;
    }
    if (copied != file.size)
        throw RuntimeError(kErrDeviceIo, file.source.string() + " cannot be read whole, or changes while it is read");
}

} // namespace

void WriteArchive(const std::filesystem::path& target, const StagedFile& file) {
    const ArchiveHandle handle(archive_write_new(), archive_write_free);
    archive_write_set_format_zip(handle.get());
    archive_write_set_options(handle.get(), "zip:hdrcharset=UTF-8");
    Require(handle, archive_write_open_filename(handle.get(), target.c_str()), target);
    const std::unique_ptr<archive_entry, void (*)(archive_entry*)> entry(archive_entry_new(), archive_entry_free);
    archive_entry_set_pathname_utf8(entry.get(), file.name.c_str());
    archive_entry_set_filetype(entry.get(), AE_IFREG);
    archive_entry_set_perm(entry.get(), 0644);
    archive_entry_set_mtime(entry.get(), file.modified, 0);
    archive_entry_set_size(entry.get(), static_cast<la_int64_t>(file.size));
    Require(handle, archive_write_header(handle.get(), entry.get()), target);
    CopyContent(handle, file);
    Require(handle, archive_write_finish_entry(handle.get()), target);
    Require(handle, archive_write_close(handle.get()), target);
}

namespace {

std::string DamageOf(const std::filesystem::path& file) {
    const ArchiveHandle handle(archive_read_new(), archive_read_free);
    archive_read_support_format_zip_seekable(handle.get());
    int code = archive_read_open_filename(handle.get(), file.c_str(), kBlock);
    std::array<char, kBlock> block;
    for (archive_entry* entry = nullptr; code == ARCHIVE_OK;) {
        code = archive_read_next_header(handle.get(), &entry);
        if (code != ARCHIVE_OK) break;
        la_ssize_t got = 0;
        while ((got = archive_read_data(handle.get(), block.data(), block.size())) > 0) {
        }
        if (got < 0) code = static_cast<int>(got);
    }
    if (code == ARCHIVE_EOF) return "";
    const char* reason = archive_error_string(handle.get());
    return reason == nullptr ? "unknown damage" : reason;
}

} // namespace

ArchiveFacts ReadArchive(const std::filesystem::path& file) {
    std::ifstream source(file, std::ios::binary);
    const auto members =
        ReadZipDirectory(std::filesystem::file_size(file), [&](std::uint64_t offset, std::size_t count) {
            std::string bytes(count, '\0');
            source.clear();
            source.seekg(static_cast<std::streamoff>(offset));
            source.read(bytes.data(), static_cast<std::streamsize>(count));
            bytes.resize(static_cast<std::size_t>(source.gcount()));
            return bytes;
        });
    if (!members) return {{}, "it is no zip archive"};
    ArchiveFacts facts{*members, ""};
    const auto isEncrypted = [](const ZipMember& member) { return member.encrypted; };
    if (std::ranges::any_of(facts.members,
                            [](const ZipMember& member) { return member.kind == ZipMember::Kind::Damaged; }))
        facts.damage = "its directory is damaged";
    else if (std::ranges::none_of(facts.members, isEncrypted))
        facts.damage = DamageOf(file);
    return facts;
}

} // namespace korlan::publisher
