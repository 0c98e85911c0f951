#include "publisher/Pack.h"

#include "app/base/TextHelpers.h"
#include "platform/RuntimeError.h"
#include "publisher/ArchiveFile.h"
#include "publisher/CatalogueFile.h"
#include "publisher/Files.h"
#include "publisher/Progress.h"
#include "publisher/RowRules.h"

#include <algorithm>
#include <iostream>

namespace korlan::publisher {

namespace fs = std::filesystem;

namespace {

constexpr const char* kMaster = "Update.mdb";

std::string PackStem(const std::string& name) {
    std::string stem = UpperCase(name).ends_with(".MDB") ? name.substr(0, name.size() - 4) : name;
    const bool plain = std::ranges::all_of(
        stem, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_'; });
    if (stem.empty() || !plain || UpperCase(stem) == "UPDATE")
        throw RuntimeError(kErrInvalidCall,
                           "\"" + name + "\" cannot name a pack: letters, digits, - and _, not Update");
    return stem;
}

CatalogueRows RowsOf(const Staging& staging, const std::string& packStem) {
    CatalogueRows rows;
    for (const StagedFile& file : staging.files)
        rows.push_back(
            {file.name, file.designation, std::to_string(file.size), DateTextOf(file.modified), file.archive});
    for (const std::string& folder : staging.emptyFolders)
        rows.push_back({folder, "NEWFOLDER", "", "", packStem + Replace(folder, "\\", "_")});
    return rows;
}

bool SameFile(const std::string& name1, const std::string& name2) {
    return Trim(UpperCase(name1)) == Trim(UpperCase(name2));
}

// New packs come first: of two versions of one file a machine that has neither gets the one listed first.
void ListInMaster(CatalogueRows& master, const CatalogueRow& pack) {
    const auto listed =
        std::ranges::find_if(master, [&](const CatalogueRow& row) { return SameFile(row.FileName, pack.FileName); });
    if (listed == master.end())
        master.insert(master.begin(), pack);
    else
        *listed = pack;
}

// The files of the server's folder, by their names without regard to case.
std::vector<std::string> NamesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
    return names;
}

// What publishing would overwrite.
std::vector<std::string> TakenNames(const fs::path& server, const CatalogueRows& master, const Staging& staging,
                                    const std::string& packFile) {
    std::vector<std::string> present;
    for (const std::string& name : NamesIn(server)) present.push_back(UpperCase(name));
    for (const CatalogueRow& row : master) present.push_back(Trim(UpperCase(row.FileName)));
    std::ranges::sort(present);
    std::vector<std::string> taken;
    const auto test = [&](const std::string& name) {
        if (std::ranges::binary_search(present, UpperCase(name))) taken.push_back(name);
    };
    test(packFile);
    for (const StagedFile& file : staging.files) test(file.archive);
    return taken;
}

// Files that have been moved into place; those that were not there before go again unless everything came to its end.
class Publication {
public:
    explicit Publication(const fs::path& server) : server_(server) {}
    ~Publication() {
        std::error_code ignored;
        for (const fs::path& file : placed_) fs::remove(file, ignored);
    }
    Publication(const Publication&) = delete;
    Publication& operator=(const Publication&) = delete;
    void Place(const fs::path& file) {
        const fs::path target = server_ / file.filename();
        const bool isNew = !fs::exists(target);
        MoveFile(file, target);
        if (isNew) placed_.push_back(target);
    }
    void Complete() {
        SyncFile(server_);
        placed_.clear();
    }

private:
    fs::path server_;
    std::vector<fs::path> placed_;
};

void WriteCatalogue(const fs::path& file, const CatalogueRows& rows) {
    WriteFile(file, BytesOfCatalogue(rows));
    if (ReadCatalogue(file) != rows) throw RuntimeError(kErrDeviceIo, file.string() + " does not read back as written");
    SyncFile(file);
}

void WriteArchives(const Staging& staging, const fs::path& folder) {
    const Progress progress("packing");
    std::size_t done = 0;
    for (const StagedFile& file : staging.files) {
        progress.At(++done, staging.files.size(), file.name);
        WriteArchive(folder / file.archive, file);
        SyncFile(folder / file.archive);
    }
}

bool IsRefused(const Staging& staging, const CatalogueRows& rows, const std::string& packFile) {
    for (const std::string& problem : staging.problems) std::cerr << "klnpub: " << problem << '\n';
    Findings findings;
    for (std::size_t i = 0; i < rows.size(); ++i)
        CheckRow({packFile, static_cast<std::int32_t>(i + 1)}, rows[i], findings);
    for (const Finding& finding : findings.All()) std::cerr << "klnpub: " << finding.Line() << '\n';
    if (rows.empty()) std::cerr << "klnpub: there is nothing to publish in the staging tree\n";
    return !staging.problems.empty() || findings.Errors() > 0 || rows.empty();
}

} // namespace

int Pack(const PackOptions& options) {
    const std::string stem = PackStem(options.name), packFile = stem + ".mdb";
    const Staging staging = ReadStaging(options.from, stem);
    const CatalogueRows rows = RowsOf(staging, stem);
    if (IsRefused(staging, rows, packFile)) {
        std::cerr << "klnpub: nothing published\n";
        return 1;
    }
    RequireFolder(options.to);
    const FolderLock lock(options.to);
    CatalogueRows master;
    if (fs::exists(options.to / kMaster)) master = ReadCatalogue(options.to / kMaster);
    const std::vector<std::string> taken = TakenNames(options.to, master, staging, packFile);
    if (!taken.empty() && !options.replace) {
        for (const std::string& name : taken) std::cerr << "klnpub: " << name << " is there already\n";
        std::cerr << "klnpub: nothing published; --replace overwrites\n";
        return 1;
    }

    const ScratchFolder scratch(options.to);
    WriteArchives(staging, scratch.Path());
    WriteCatalogue(scratch.Path() / packFile, rows);
    const auto newest = std::ranges::max_element(staging.files, {}, &StagedFile::modified);
    ListInMaster(master, {packFile, "Root", std::to_string(fs::file_size(scratch.Path() / packFile)),
                          newest == staging.files.end() ? "" : DateTextOf(newest->modified), ""});
    WriteCatalogue(scratch.Path() / kMaster, master);

    Publication publication(options.to);
    for (const StagedFile& file : staging.files) publication.Place(scratch.Path() / file.archive);
    publication.Place(scratch.Path() / packFile);
    publication.Place(scratch.Path() / kMaster);
    publication.Complete();
    std::cout << packFile << ": " << Counted(staging.files.size(), "file") << ", "
              << Counted(staging.emptyFolders.size(), "new folder") << "; " << kMaster << " lists "
              << Counted(master.size(), "pack") << '\n';
    return 0;
}

} // namespace korlan::publisher
