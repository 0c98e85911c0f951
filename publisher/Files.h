// Host files of the publisher: written whole beside their place and moved there by one rename.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace korlan::publisher {

// A host error as the one error type: what was being done, then what the system says.
[[noreturn]] void FailWithSystemError(const std::string& what, int error);

// A folder of its own inside `parent`, gone with everything in it when this ends.
class ScratchFolder {
public:
    explicit ScratchFolder(const std::filesystem::path& parent);
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const std::filesystem::path& Path() const { return path_; }

private:
    std::filesystem::path path_;
};

// Holds a folder against a second publisher; raises 70 when one is at work there. What one that was interrupted has
// left behind goes.
class FolderLock {
public:
    explicit FolderLock(const std::filesystem::path& folder);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    int folder_;
};

void WriteFile(const std::filesystem::path& path, std::string_view bytes);         // readable by everybody
void SyncFile(const std::filesystem::path& path);                                  // to the disk; a folder as well
void MoveFile(const std::filesystem::path& from, const std::filesystem::path& to); // by one rename

std::int64_t ModifiedTime(const std::filesystem::path& file); // whole seconds since 1970 UTC
void RequireFolder(const std::filesystem::path& folder);

} // namespace korlan::publisher
