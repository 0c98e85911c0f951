#include "tests/support/UpdateServer.h"

#include "tests/support/SqliteFile.h"

#include <archive.h>
#include <archive_entry.h>

#include <memory>
#include <stdexcept>

namespace korlan::test {

namespace {

void Require(bool good, const char* what) {
    if (!good) throw std::runtime_error(what);
}

} // namespace

std::string CatalogueBytes(const std::vector<std::vector<std::string>>& rows) {
    sqlite3* database = nullptr;
    Require(sqlite3_open(":memory:", &database) == SQLITE_OK, "no database");
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> owner(database, sqlite3_close);
    Require(sqlite3_exec(database, CatalogueSql(rows).c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, "bad row");
    sqlite3_int64 size = 0;
    const std::unique_ptr<unsigned char, void (*)(void*)> bytes(sqlite3_serialize(database, "main", &size, 0),
                                                                sqlite3_free);
    Require(bytes != nullptr, "catalogue not written");
    return {reinterpret_cast<const char*>(bytes.get()), static_cast<std::size_t>(size)};
}

std::string ArchiveBytes(const std::string& member, const std::string& content, long long time) {
    std::string bytes(content.size() + 1024, '\0');
    std::size_t used = 0;
    const std::unique_ptr<archive, int (*)(archive*)> zip(archive_write_new(), archive_write_free);
    archive_write_set_format_zip(zip.get());
    Require(archive_write_open_memory(zip.get(), bytes.data(), bytes.size(), &used) == ARCHIVE_OK, "no archive");
    const std::unique_ptr<archive_entry, void (*)(archive_entry*)> entry(archive_entry_new(), archive_entry_free);
    archive_entry_set_pathname(entry.get(), member.c_str());
    archive_entry_set_filetype(entry.get(), AE_IFREG);
    archive_entry_set_perm(entry.get(), 0644);
    archive_entry_set_size(entry.get(), static_cast<la_int64_t>(content.size()));
    archive_entry_set_mtime(entry.get(), time, 0);
    Require(archive_write_header(zip.get(), entry.get()) == ARCHIVE_OK &&
                archive_write_data(zip.get(), content.data(), content.size()) >= 0 &&
                archive_write_close(zip.get()) == ARCHIVE_OK,
            "archive not written");
    return bytes.substr(0, used);
}

void UpdateServer::Publish(const std::string& name, const std::string& bytes) {
    Answer("/updates/" + name, {.body = bytes});
}

} // namespace korlan::test
