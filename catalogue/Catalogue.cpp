#include "catalogue/Catalogue.h"

#include "app/base/Paths.h"
#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "app/base/frmUpdate.h"
#include "catalogue/FileTables.h"
#include "platform/FormHost.h"
#include "platform/Log.h"
#include "transfer/HttpTransfer.h"

#include <unordered_set>

namespace korlan {

namespace {

// Opens a catalogue as the one shared database; the one open before is closed first.
std::unique_ptr<Recordset> OpenCatalogue(const std::string& path) {
    Tables.CatalogueDatabase.reset();
    Tables.CatalogueDatabase = OpenDatabase(path, false, false, "");
    return Tables.CatalogueDatabase->OpenRecordset("SELECT * FROM Files");
}

// FileRecord and SPRecord share the five columns. They are read where a record is made only: a column that is missing
// costs no row that does without it.
template <typename Record>
Record RecordFromRow(const Recordset& row) {
    Record record;
    record.FileName = row.Text("FileName");
    record.FilePath = row.Text("FilePath");
    record.FileSize = row.Text("FileSize");
    record.Filedate = row.Text("Filedate");
    record.FileZipName = row.Text("FileZipName");
    return record;
}

void ReadMasterCatalogue(const std::string& path) {
    std::unordered_set<std::string> applied;
    for (const std::string& entry : Tables.AppliedSPList) applied.insert(UpperCase(entry));

    const auto rows = OpenCatalogue(path);
    Tables.FileArraySP.Clear();
    for (; !rows->Eof(); rows->MoveNext()) {
        GiveWay();
        const std::string name = rows->Text("FileName");
        if (applied.contains(Trim(UpperCase(name)))) continue;
        if (StaysInFolder(name))
            Tables.FileArraySP.Append(RecordFromRow<SPRecord>(*rows));
        else
            LogLine("refused the pack " + name);
    }
    rows->Close();
    LogLine("catalogue: " + DecimalText(Tables.FileArraySP.UpperBound()) + " packs besides the " +
            DecimalText(Tables.AppliedSPList.UpperBound()) + " recorded");
}

void MergeFileRow(const Recordset& row, const std::string& archive, SPRecord& pack) {
    if (const std::int32_t known = Tables.FileIndex.Find(Tables.FileArray, archive)) {
        pack.Files.Append({known, Tables.FileArray[known].UpdateFlag});
    } else {
        pack.Files.Append({Tables.FileArray.UpperBound() + 1, 0});
        Tables.FileArray.Append(RecordFromRow<FileRecord>(row));
    }
}

void MergeFolderRow(const Recordset& row, const std::string& archive) {
    if (Tables.FolderIndex.Find(Tables.NewFolderArray, archive) == 0)
        Tables.NewFolderArray.Append({row.Text("FileName"), archive});
}

void FetchServicePack(std::int32_t index, std::string& cataloguePath, std::int32_t& result) {
    SPRecord& pack = Tables.FileArraySP[index];
    cataloguePath = InTempFolder(pack.FileName);
    LiveUpdateStatus();
    pack.Files.Clear();
    // Not reset between packs: after a failed transfer an older copy of the pack, if there is one, is read.
    DownloadFile(Settings.UpdateUrl + "/" + pack.FileName, cataloguePath, result, 0, "", 1);
    if (result != 0) GetFilesInsideSP(cataloguePath, index);
    LogLine("pack " + pack.FileName + ": " + DecimalText(pack.Files.UpperBound()) + " files");
}

} // namespace

void GetLatestFiles(std::string& cataloguePath, std::int32_t& result) {
    if (!FileExists(cataloguePath)) return;
    try {
        ReadMasterCatalogue(cataloguePath);
        Tables.FileArray.Clear();
        Tables.NewFolderArray.Clear();
        Tables.FileIndex.Clear();
        Tables.FolderIndex.Clear();
        for (std::int32_t i = 1; i <= Tables.FileArraySP.UpperBound(); ++i) {
            FetchServicePack(i, cataloguePath, result);
            if (Flags.CancelRequested != 0) break;
        }
        Tables.FileIndex.Clear(); // nothing is merged any more, and it is large
        result = 1;
    } catch (const RuntimeError& error) {
        LogTrapped("GetLatestFiles", error);
        result = 0;
    }
}

void GetFilesInsideSP(const std::string& spCataloguePath, std::int32_t spIndex) {
    if (!FileExists(spCataloguePath)) return;
    SPRecord& pack = Tables.FileArraySP[spIndex];
    const auto rows = OpenCatalogue(spCataloguePath);
    for (; !rows->Eof(); rows->MoveNext()) {
        LiveUpdateStatus();
        GiveWay();
        const std::string archive = rows->Text("FileZipName");
        if (rows->Text("FilePath") == "NEWFOLDER") {
            MergeFolderRow(*rows, archive);
        } else {
            MergeFileRow(*rows, archive, pack);
        }
    }
    rows->Close();
    pack.Read = true;
}

void UpdateFileArraySP() {
    for (SPRecord& pack : Tables.FileArraySP) {
        std::unordered_set<std::int32_t> seen;
        for (SPMember& member : pack.Files)
            if (Tables.FileArray[member.Record].UpdateFlag == 1 && seen.insert(member.Record).second)
                member.UpdateFlag = 1;
    }
}

} // namespace korlan
