#include "publisher/Check.h"

#include "app/base/TextHelpers.h"
#include "platform/RuntimeError.h"
#include "publisher/Catalogue.h"
#include "publisher/Files.h"
#include "publisher/Offer.h"
#include "publisher/RowRules.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>

namespace korlan::publisher {

namespace {

constexpr const char* kNoteName = "KlnUpdt.txt";

// Without a note wizards have nothing to compare; one that cannot be read ends their search.
void CheckNote(Server& server, Findings& findings) {
    const Fetched note = server.Get(kNoteName);
    if (note.file.empty()) return;
    std::ifstream file(note.file);
    std::string line;
    std::getline(file, line);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!IsDate(line))
        findings.Error({kNoteName, 0}, "note",
                       "begins with \"" + Left(line, 40) +
                           "\", which is no D-M-YYYY,H:M:S: " + "no wizard gets past it to its search");
}

// By pack as the master lists them, then by row.
void PrintFindings(const Findings& findings, const std::vector<PublishedPack>& packs) {
    std::map<std::string, std::int32_t> order{{kNoteName, -2}, {kMasterName, -1}};
    for (const PublishedPack& pack : packs) order.emplace(pack.name, pack.masterRow);
    std::vector<Finding> sorted = findings.All();
    std::ranges::stable_sort(
        sorted, {}, [&](const Finding& finding) { return std::pair(order[finding.place.pack], finding.place.row); });
    for (const Finding& finding : sorted) std::cout << finding.Line() << '\n';
}

std::size_t RowsIn(const std::vector<PublishedPack>& packs) {
    std::size_t rows = 0;
    for (const PublishedPack& pack : packs) rows += pack.rows.size();
    return rows;
}

using Line = std::array<std::string, 6>;

void PrintTable(const std::vector<Line>& lines) {
    std::array<std::size_t, 6> widths{};
    const auto width = [](const std::string& text) { // in characters
        return static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
    };
    for (const Line& line : lines)
        for (std::size_t i = 0; i < line.size(); ++i) widths[i] = std::max(widths[i], width(line[i]));
    for (const Line& line : lines) {
        std::string text;
        for (std::size_t i = 0; i < line.size(); ++i)
            text += line[i] + std::string(widths[i] - width(line[i]) + 2, ' ');
        std::cout << RightTrim(text) << '\n';
    }
}

} // namespace

int Check(const std::string& where, const std::filesystem::path& installation) {
    const auto server = OpenServer(where);
    Findings findings;
    std::vector<PublishedPack> packs;
    if (ReadPublished(*server, packs, findings)) {
        for (const PublishedPack& pack : packs)
            for (std::size_t i = 0; i < pack.rows.size(); ++i)
                CheckRow({pack.name, static_cast<std::int32_t>(i + 1)}, pack.rows[i], findings);
        CheckAcrossRows(packs, findings);
        CheckArchives(*server, packs, findings);
        CheckNote(*server, findings);
    }
    PrintFindings(findings, packs);
    const std::size_t errors = findings.Errors(), warnings = findings.All().size() - errors;
    std::cout << Counted(packs.size(), "pack") << ", " << Counted(RowsIn(packs), "row") << ": "
              << Counted(errors, "error") << ", " << Counted(warnings, "warning") << '\n';
    if (!installation.empty()) PrintOffer(installation, packs);
    return errors > 0 ? 1 : 0;
}

int List(const std::string& where) {
    const auto server = OpenServer(where);
    Findings findings;
    std::vector<PublishedPack> packs;
    ReadPublished(*server, packs, findings);
    std::vector<Line> lines = {{"Pack", "File", "Folder", "Size", "Date (UTC)", "Archive"}};
    for (const PublishedPack& pack : packs)
        for (const CatalogueRow& row : pack.rows)
            lines.push_back({pack.name, row.FileName, row.IsFolder() ? "new folder" : row.FilePath, row.FileSize,
                             row.Filedate, row.FileZipName});
    PrintTable(lines);
    for (const Finding& finding : findings.All()) std::cerr << "klnpub: " << finding.Line() << '\n';
    return findings.Errors() > 0 ? 1 : 0;
}

int WriteNote(const std::filesystem::path& server, const std::filesystem::path& program) {
    RequireFolder(server);
    if (!std::filesystem::is_regular_file(program))
        throw RuntimeError(kErrFileNotFound, program.string() + " is no file");
    const std::string date = DateTextOf(EvenSecond(ModifiedTime(program)));
    const FolderLock lock(server);
    const ScratchFolder scratch(server);
    WriteFile(scratch.Path() / kNoteName, date + "\r\n");
    SyncFile(scratch.Path() / kNoteName);
    MoveFile(scratch.Path() / kNoteName, server / kNoteName);
    std::cout << kNoteName << ": " << date << " (UTC)\n";
    return 0;
}

} // namespace korlan::publisher
