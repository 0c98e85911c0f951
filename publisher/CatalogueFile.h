// A catalogue on the disk: the rows of its table "Files", as a wizard reads them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace korlan::publisher {

struct CatalogueRow {
    std::string FileName, FilePath, FileSize, Filedate, FileZipName;
    bool operator==(const CatalogueRow&) const = default;
    bool IsFolder() const { return FilePath == "NEWFOLDER"; }
};

using CatalogueRows = std::vector<CatalogueRow>;

// Raises what the wizard's own reading raises.
CatalogueRows ReadCatalogue(const std::filesystem::path& file);

// The database of those rows. Raises what a text or a number of rows that it cannot hold raises.
std::string BytesOfCatalogue(const CatalogueRows& rows);

std::string DateTextOf(std::int64_t modified);  // seconds since 1970 UTC
std::int64_t EvenSecond(std::int64_t modified); // the one that archives and every file system can keep

} // namespace korlan::publisher
