#include "publisher/Staging.h"

#include "app/base/TextHelpers.h"
#include "platform/RuntimeError.h"
#include "platform/TextEncoding.h"
#include "publisher/CatalogueFile.h"
#include "publisher/Files.h"
#include "publisher/RowRules.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>

namespace korlan::publisher {

namespace fs = std::filesystem;

namespace {

// An archive's time is kept in a date of DOS and in 32 bits of seconds.
constexpr std::int64_t kEarliest = 315'619'200, kLatest = 2'147'000'000; // 1980-01-02, early in 2038

class Walk {
public:
    explicit Walk(Staging& staging) : staging_(staging) {}

    // `designation` is "" for the tree itself.
    void Folder(const fs::path& folder, const std::string& designation) {
        std::error_code error;
        std::vector<fs::directory_entry> entries;
        for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
            entries.push_back(*at);
        if (error) return Problem(folder, "cannot be read: " + error.message());
        std::ranges::sort(entries);
        std::map<std::string, fs::path> spellings;
        for (const fs::directory_entry& entry : entries) {
            const std::string name = entry.path().filename().string();
            const auto [other, isNew] = spellings.emplace(UpperCase(name), entry.path());
            if (!isNew) Problem(entry.path(), "differs only in case from " + other->second.filename().string());
            if (NameIsFit(entry.path(), name)) Entry(entry, designation, name);
        }
        if (entries.empty() && designation.starts_with("\\")) staging_.emptyFolders.push_back(designation);
    }

private:
    void Problem(const fs::path& path, const std::string& what) {
        staging_.problems.push_back(path.string() + " " + what);
    }

    bool NameIsFit(const fs::path& path, const std::string& name) {
        const std::string reason = IsValidUtf8(name) ? WhyNoFileName(name) : "has a name that is no UTF-8 text";
        if (!reason.empty()) Problem(path, reason);
        return reason.empty();
    }

    void Entry(const fs::directory_entry& entry, const std::string& designation, const std::string& name) {
        std::error_code error;
        const fs::file_type type = entry.symlink_status(error).type();
        if (type == fs::file_type::directory)
            return designation == "Root" ? Problem(entry.path(), "is a folder below Root: put it beside Root instead")
                                         : Folder(entry.path(), Below(designation, name));
        if (type == fs::file_type::symlink) return Problem(entry.path(), "is a link");
        if (type != fs::file_type::regular) return Problem(entry.path(), "is neither a file nor a folder");
        if (designation.empty()) return Problem(entry.path(), "lies in no folder: Root is the program's own");
        if (faccessat(AT_FDCWD, entry.path().c_str(), R_OK, AT_EACCESS) != 0)
            return Problem(entry.path(), "cannot be read");
        const std::int64_t modified = EvenSecond(ModifiedTime(entry.path()));
        if (modified < kEarliest || modified > kLatest)
            return Problem(entry.path(), "has a time that no archive keeps");
        staging_.files.push_back({designation, name, entry.path(), entry.file_size(), modified, {}});
    }

    static std::string Below(const std::string& designation, const std::string& name) {
        return designation.empty() && name == "Root" ? name : designation + "\\" + name;
    }

    Staging& staging_;
};

// The conventional name, "NAMEDOTTEXT.zip", behind pack and folder, of characters that stand for themselves in every
// address.
std::string ArchiveName(const std::string& packStem, const StagedFile& file) {
    std::string name = file.name;
    if (const auto dot = name.find('.'); dot != std::string::npos) name.replace(dot, 1, "DOTT");
    std::string archive = packStem + (file.designation == "Root" ? "\\" : file.designation + "\\") + name;
    for (char& character : archive)
        if (std::isalnum(static_cast<unsigned char>(character)) == 0 && character != '.' && character != '-')
            character = '_';
    return archive + ".zip";
}

std::string Hash(const std::string& text) { // FNV-1a
    std::uint32_t hash = 2166136261;
    for (const char character : text) hash = (hash ^ static_cast<unsigned char>(character)) * 16777619;
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08x", hash);
    return digits;
}

// Archives whose names would be the same, or too long, are told apart by what they hold and not by their order: else a
// pack published anew would put one file into another's archive.
void NameArchives(Staging& staging, const std::string& packStem) {
    constexpr std::size_t kLongest = 120;
    std::map<std::string, int> uses;
    for (const StagedFile& file : staging.files) ++uses[UpperCase(ArchiveName(packStem, file))];
    for (StagedFile& file : staging.files) {
        file.archive = ArchiveName(packStem, file);
        if (uses[UpperCase(file.archive)] == 1 && file.archive.size() <= kLongest) continue;
        const std::string path = file.designation + "\\" + file.name;
        file.archive = file.archive.substr(0, std::min(kLongest, file.archive.size() - 4)) + "-" + Hash(path) + ".zip";
    }
}

} // namespace

Staging ReadStaging(const fs::path& tree, const std::string& packStem) {
    RequireFolder(tree);
    Staging staging;
    Walk(staging).Folder(tree, "");
    NameArchives(staging, packStem);
    return staging;
}

} // namespace korlan::publisher
