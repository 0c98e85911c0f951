// The archive of one published file: a zip with that one member, its time in UTC beside the local one.
#pragma once

#include "platform/zip/ZipDirectory.h"
#include "publisher/Staging.h"

#include <filesystem>
#include <string>

namespace korlan::publisher {

// Raises when the file cannot be read, or is not as long as when the tree was walked.
void WriteArchive(const std::filesystem::path& target, const StagedFile& file);

struct ArchiveFacts {
    ZipMembers members;
    std::string damage; // why it cannot be unpacked whole; "" when it can
};

// Reads every member through.
ArchiveFacts ReadArchive(const std::filesystem::path& file);

} // namespace korlan::publisher
