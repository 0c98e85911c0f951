#include "platform/linux/ProfileFile.h"

#include "platform/linux/ChangeStamp.h"
#include "platform/linux/FileHandle.h"
#include "platform/linux/ProfileText.h"

#include <cstdlib>
#include <map>
#include <memory>

namespace korlan {
namespace {

struct Cached {
    ChangeStamp stamp;
    bool lasting = false; // the stamp will show every later change
    std::string bytes;
    std::shared_ptr<const ProfileText> text;
};

int ReadAll(const FileHandle& file, std::string& bytes) { // 0 or the errno value
    char block[64 * 1024];
    for (;;) {
        const ssize_t got = read(file.Descriptor(), block, sizeof block);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return errno;
        if (got == 0) return 0;
        bytes.append(block, static_cast<std::size_t>(got));
    }
}

int ReadFile(const std::string& hostPath, Cached& fresh) {
    const std::int64_t now = ChangeStamp::Now();
    const FileHandle file(hostPath, O_RDONLY | O_NONBLOCK);
    struct stat status {};
    if (!file || fstat(file.Descriptor(), &status) != 0) return errno;
    if (S_ISDIR(status.st_mode)) return EISDIR;
    if (!S_ISREG(status.st_mode)) return EACCES;
    fresh.stamp = ChangeStamp::Of(status);
    fresh.lasting = fresh.stamp.Settled(now);
    return ReadAll(file, fresh.bytes);
}

// The parsed file; null with an errno value in `error` when it cannot be read. One whose stamp has not settled is read
// again each time, but parsed only when its bytes differ.
std::shared_ptr<const ProfileText> Load(const std::string& hostPath, int& error) {
    constexpr std::size_t kMostFiles = 32;
    static std::map<std::string, Cached> files;
    const auto known = files.find(hostPath);
    struct stat status {};
    error = 0;
    if (known != files.end() && known->second.lasting && stat(hostPath.c_str(), &status) == 0 &&
        ChangeStamp::Of(status) == known->second.stamp)
        return known->second.text;

    Cached fresh;
    error = ReadFile(hostPath, fresh);
    if (error != 0) return nullptr;
    const bool same = known != files.end() && known->second.bytes == fresh.bytes;
    fresh.text = same ? known->second.text : std::make_shared<const ProfileText>(fresh.bytes);
    if (files.size() >= kMostFiles && known == files.end()) files.clear();
    return files.insert_or_assign(hostPath, std::move(fresh)).first->second.text;
}

std::string FolderOf(const std::string& hostPath) {
    return hostPath.substr(0, hostPath.rfind('/') + 1);
}

std::string BehindLinks(const std::string& hostPath) { // the path itself when it leads nowhere
    const std::unique_ptr<char, void (*)(void*)> real(realpath(hostPath.c_str(), nullptr), std::free);
    return real ? std::string(real.get()) : hostPath;
}

// The rights and the mark of the file that is about to be replaced: renaming would ask for neither.
int WhyNotWritable(const std::string& hostPath, const struct stat& status) {
    if (IsReadOnly(status)) return EACCES;
    return faccessat(AT_FDCWD, hostPath.c_str(), W_OK, AT_EACCESS) == 0 ? 0 : errno;
}

// Everything but the renaming. `old` is the file to be replaced, null when there is none.
int WriteTemporary(const std::string& name, const std::string& bytes, const struct stat* old) {
    FileHandle file(name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, old ? 0600 : 0666);
    if (!file) return errno;
    if (const int error = WriteAll(file.Descriptor(), bytes.data(), bytes.size()); error != 0) return error;
    if (old) {
        // An ordinary user cannot give the file to somebody else and need not.
        if (fchown(file.Descriptor(), old->st_uid, old->st_gid) != 0 && errno != EPERM) return errno;
        if (fchmod(file.Descriptor(), old->st_mode & 07777) != 0) return errno;
    }
    if (fsync(file.Descriptor()) != 0) return errno;
    return file.Close();
}

int Replace(const std::string& hostPath, const std::string& bytes, const struct stat* old) {
    const std::string folder = FolderOf(hostPath);
    const std::string name = folder + ".klnprofile.tmp"; // the same for all: only one process of a user is at work
    unlink(name.c_str());                                // left over by one that was killed
    int error = WriteTemporary(name, bytes, old);
    if (error == 0 && rename(name.c_str(), hostPath.c_str()) != 0) error = errno;
    if (error != 0) {
        unlink(name.c_str());
        return error;
    }
    // The file is whole either way; syncing the folder only makes the new one sure to outlast a power cut.
    if (const FileHandle directory(folder, O_RDONLY | O_DIRECTORY); directory) fsync(directory.Descriptor());
    return 0;
}

} // namespace

std::optional<std::string> ReadProfileFile(std::string_view section, std::string_view key, std::size_t bufferSize,
                                           const std::string& hostPath) {
    int error = 0;
    const auto text = Load(hostPath, error);
    return text ? text->Read(section, key, bufferSize) : std::nullopt;
}

int WriteProfileFile(std::string_view section, std::string_view key, std::string_view value,
                     const std::string& givenPath) {
    const std::string hostPath = BehindLinks(givenPath);
    struct stat old {};
    if (lstat(hostPath.c_str(), &old) != 0) {
        if (errno != ENOENT) return errno;
        return Replace(hostPath, ProfileText("").Write(section, key, value).value_or(""), nullptr);
    }
    int error = 0;
    const auto text = Load(hostPath, error);
    if (error == 0) error = WhyNotWritable(hostPath, old);
    if (error != 0) return error;
    const auto bytes = text->Write(section, key, value);
    return bytes ? Replace(hostPath, *bytes, &old) : 0;
}

} // namespace korlan
