#include "publisher/Catalogue.h"

#include "app/base/TextHelpers.h"
#include "platform/RuntimeError.h"
#include "publisher/RowRules.h"

#include <map>
#include <set>

namespace korlan::publisher {

namespace {

// What the wizard's reader says of a file that is no catalogue; "" of one that is.
std::string ReadRows(const std::filesystem::path& file, CatalogueRows& rows) {
    try {
        rows = ReadCatalogue(file);
        return "";
    } catch (const RuntimeError& error) {
        return error.Description();
    }
}

void ReadPack(Server& server, PublishedPack& pack, Findings& findings) {
    const Place listed{kMasterName, pack.masterRow}, whole{pack.name, 0};
    Fetched fetched = server.Get(pack.name);
    if (fetched.file.empty()) {
        findings.Error(listed, "pack-missing",
                       pack.name + ": " + fetched.problem + "; its files are offered to nobody");
        return;
    }
    const std::string reason = ReadRows(fetched.file, pack.rows);
    if (!reason.empty()) {
        findings.Error(whole, "no-catalogue", reason + ": every search ends here with \"No updates found\"");
        return;
    }
    pack.file = std::move(fetched.file);
    if (pack.rows.empty()) findings.Warning(whole, "no-rows", "the pack is empty: it is recorded as applied as it is");
}

std::string PlaceText(const Place& place) {
    return place.pack + " row " + std::to_string(place.row);
}

// ---- between rows ----

struct SeenRow {
    Place place;
    const CatalogueRow* row;
};

class AcrossRows {
public:
    explicit AcrossRows(Findings& findings) : findings_(findings) {}

    void Add(const Place& place, const CatalogueRow& row) {
        if (row.IsFolder()) return AddFolder(place, row);
        const SeenRow seen{place, &row};
        const auto target = TargetOf(row);
        if (!target) return;
        CheckCase(seen);
        const auto [archive, isNewArchive] = archives_.emplace(row.FileZipName, seen);
        const auto [first, isNewTarget] = targets_.emplace(*target, seen);
        if (!isNewArchive && TargetOf(*archive->second.row) != target)
            findings_.Error(place, "archive-shared",
                            row.FileZipName + " stands for another file in " + PlaceText(archive->second.place) +
                                ": this row is never looked at");
        else if (isNewArchive && !isNewTarget)
            CheckTarget(first->second, seen);
    }

private:
    void AddFolder(const Place& place, const CatalogueRow& row) {
        const auto [first, isNew] = folders_.emplace(row.FileZipName, SeenRow{place, &row});
        if (!isNew && first->second.row->FileName != row.FileName)
            findings_.Error(place, "folder-twice",
                            "\"" + row.FileZipName + "\" stands for " + first->second.row->FileName + " in " +
                                PlaceText(first->second.place) + ": this folder is not made");
    }

    void CheckCase(const SeenRow& seen) {
        const auto [first, isNew] = spellings_.emplace(UpperCase(seen.row->FileZipName), seen);
        if (!isNew && first->second.row->FileZipName != seen.row->FileZipName)
            findings_.Error(seen.place, "archive-case",
                            seen.row->FileZipName + " differs only in case from " + first->second.row->FileZipName +
                                " in " + PlaceText(first->second.place) +
                                ": on the user's machine one overwrites the other");
    }

    // Only the first row of a target is judged, and the packs of the others count as applied.
    void CheckTarget(const SeenRow& first, const SeenRow& later) {
        const std::string what = later.row->FileName + " stands under another archive in " + PlaceText(first.place);
        if (first.place.pack == later.place.pack)
            findings_.Error(later.place, "target", what + " of the same pack: this row is never looked at");
        else if (IsOlder(first.row->Filedate, later.row->Filedate))
            findings_.Error(later.place, "target",
                            what + ", which is listed first and older: a machine with neither " +
                                "pack gets the old file and never this one");
        else if (IsModelFile(later.row->FileName))
            findings_.Warning(later.place, "target",
                              what + ": a machine with neither pack gets the models of that one only");
    }

    Findings& findings_;
    std::map<std::string, SeenRow> archives_, targets_, spellings_, folders_;
};

} // namespace

bool ReadPublished(Server& server, std::vector<PublishedPack>& packs, Findings& findings) {
    const Fetched fetched = server.Get(kMasterName);
    CatalogueRows master;
    if (fetched.file.empty()) {
        findings.Error({kMasterName, 0}, "master-missing",
                       fetched.problem + ": every search ends with a connection error");
        return false;
    }
    if (const std::string reason = ReadRows(fetched.file, master); !reason.empty()) {
        findings.Error({kMasterName, 0}, "no-catalogue", reason + ": every search ends with \"No updates found\"");
        return false;
    }
    std::set<std::string> names;
    for (std::size_t i = 0; i < master.size(); ++i) {
        const Place place{kMasterName, static_cast<std::int32_t>(i + 1)};
        PublishedPack pack{master[i].FileName, place.row, {}, {}};
        const std::size_t errors = findings.Errors();
        CheckPackName(place, pack.name, findings);
        if (!names.insert(Trim(UpperCase(pack.name))).second) {
            findings.Warning(place, "pack-twice", pack.name + " is listed twice: it is fetched and recorded twice");
        } else if (findings.Errors() == errors) {
            ReadPack(server, pack, findings);
            packs.push_back(std::move(pack));
        }
    }
    return true;
}

void CheckAcrossRows(const std::vector<PublishedPack>& packs, Findings& findings) {
    AcrossRows across(findings);
    for (const PublishedPack& pack : packs)
        for (std::size_t i = 0; i < pack.rows.size(); ++i)
            across.Add({pack.name, static_cast<std::int32_t>(i + 1)}, pack.rows[i]);
}

} // namespace korlan::publisher
