// The staging tree: what a new pack is made of. Its first level names designations ("Root", "LIB", "KDS_CML"; anything
// else lies below the program folder); below them lie the files as they are to be installed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace korlan::publisher {

struct StagedFile {
    std::string designation; // "Root", or "\LIB\SUB"
    std::string name;
    std::filesystem::path source;
    std::uintmax_t size = 0;
    std::int64_t modified = 0; // seconds since 1970 UTC, even
    std::string archive;       // its name on the server
};

struct Staging {
    std::vector<StagedFile> files;         // by designation and name
    std::vector<std::string> emptyFolders; // "\Samples\New"
    std::vector<std::string> problems;     // why it cannot be published, one line each
};

// Walks the tree. What cannot be published is told in `problems`; a tree that cannot be read at all raises.
Staging ReadStaging(const std::filesystem::path& tree, const std::string& packStem);

} // namespace korlan::publisher
