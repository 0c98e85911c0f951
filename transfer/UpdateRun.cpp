#include "transfer/UpdateRun.h"

#include "app/base/LocalText.h"
#include "app/base/Paths.h"
#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "app/base/frmUpdate.h"
#include "catalogue/Comparison.h"
#include "catalogue/FileKinds.h"
#include "catalogue/FileTables.h"
#include "library/PartDatabase.h"
#include "library/SearchSequence.h"
#include "library/SpcModels.h"
#include "platform/FileSystem.h"
#include "platform/MsgBox.h"
#include "transfer/HttpTransfer.h"
#include "transfer/Registration.h"
#include "transfer/modZip.h"

#include <algorithm>

namespace korlan {

namespace {

constexpr std::int32_t kSizeSubItem = 2;
constexpr std::int32_t kStatusSubItem = 3;

// The record at which a pass stands, and its row: rows hold the marked records only, in table order.
struct Place {
    std::int32_t index = 0;
    std::int32_t row = 0;
};

std::int32_t RowsBefore(std::int32_t index) {
    std::int32_t rows = 0;
    for (std::int32_t i = 1; i < index; ++i) rows += Tables.FileArray[i].UpdateFlag == 1 ? 1 : 0;
    return rows;
}

std::int32_t Kilobytes(std::int32_t bytes) {
    return RoundHalfEven(bytes / 1024.0);
}

// Makes the folders named by `relativePath` below `base`, which is there already.
void CreateFoldersBelow(std::string base, const std::string& relativePath) {
    for (const std::string& component : Split(relativePath, "\\")) {
        if (component.empty()) continue;
        base += "\\" + component;
        if (!FolderExists(base)) CreateOneFolder(base);
    }
}

void ShowRetry(const std::string& message) {
    frmUpdate.CmdRetry.SetVisible(true);
    frmUpdate.cmdCancel.SetVisible(true);
    frmUpdate.cmdUpdate.SetVisible(false);
    frmUpdate.CmdRetry.SetCaption(GetLocalText("Retry", "991852"));
    EditMsgline(message);
}

// False when the archive library could not be called; what it made of the archive is not looked at.
bool Extract(const FileRecord& record, std::int32_t index, std::string folder) {
    std::string archive = record.TempZipFile;
    std::int32_t completed = 0;
    std::int32_t result = 0;
    Unzip(completed, index, archive, folder, result);
    return completed != 0;
}

// ---- download pass ----

// Whether the archive left over from an earlier run holds the catalogue's version of the file.
bool ArchiveIsCurrent(const FileRecord& record, std::int32_t index) {
    std::string folder = Settings.TempFolder;
    AddBackslash(folder);
    Extract(record, index, folder);
    const std::string extracted = folder + record.FileName;
    if (!FileExists(extracted)) return false;
    const bool current = Trim(GetFileStamp(extracted)) == Trim(record.Filedate);
    if (current) SetAttributesNormal(extracted);
    EraseFile(extracted);
    return current;
}

void FetchArchive(FileRecord& record, const std::string& url, std::int32_t size, std::int32_t showStatus) {
    const std::string archive = Replace(record.ServerZipName, "/", "\\");
    CreateFoldersBelow(Settings.TempFolder, Left(archive, std::max<std::int64_t>(InStrRev(archive, "\\") - 1, 0)));
    std::int32_t done = 0;
    std::string label = record.FileName;
    DownloadFile(url, record.TempZipFile, done, size, label, showStatus);
    if (Flags.DownloadFailed != 1 && done != 0) record.TransferState = 1;
}

void TransferRecord(const Place& place) {
    FileRecord& record = Tables.FileArray[place.index];
    ListView& list = frmUpdate.lvwFilesList;
    EditMsgline(GetLocalText("Transferring : ", "991877") + record.FileName);
    const std::string url = Settings.UpdateUrl + "/" + record.ServerZipName;
    record.TransferState = 0;

    const bool leftOver = FileExists(record.TempZipFile);
    if (leftOver && ArchiveIsCurrent(record, place.index)) {
        record.TransferState = 1;
    } else {
        std::int32_t size = 0;
        bool exists = false;
        const std::int32_t showStatus = GetWebFileInformation(url, size, exists);
        if (size == 0 && !leftOver) throw RuntimeError(kErrDeliberateAbort);
        if (size != 0) {
            const std::int32_t kilobytes = Kilobytes(size);
            // Kept: an archive fetched again shows its size untrimmed, with a 0 as it is and the localised unit.
            list.SetSubItem(place.row, kSizeSubItem,
                            leftOver ? SignedText(kilobytes) + GetLocalText("KB", "991850")
                                     : DecimalText(std::max(kilobytes, 1)) + "KB");
            FetchArchive(record, url, size, showStatus);
        }
    }
    if (record.TransferState == 1) list.SetSubItem(place.row, kStatusSubItem, "Copied from web");
    list.SetBold(place.row, true);
}

// False when a transfer failed; ResumeIndex then stands at its record.
bool DownloadPass(Place& place) {
    std::int32_t& resume = frmUpdate.ResumeIndex;
    place.row = RowsBefore(resume);
    for (place.index = resume; place.index <= Tables.FileArray.UpperBound(); ++place.index) {
        resume = place.index;
        const FileRecord& record = Tables.FileArray[place.index];
        if (record.UpdateFlag != 1) continue;
        ++place.row;
        if (frmUpdate.lvwFilesList.Row(place.row).checked) TransferRecord(place);
        if (Flags.DownloadFailed != 1) continue;
        if (FileExists(record.TempZipFile)) EraseFile(record.TempZipFile);
        ShowRetry(GetLocalText("Live Update Failed.Click Retry to try again", "991851"));
        return false;
    }
    return true;
}

// ---- install pass ----

void RemoveInstalledFile(const FileRecord& record, std::int32_t index) {
    if (!FileExists(record.LocalFile)) return;
    SetAttributesNormal(record.LocalFile);
    UnregisterFile(index);
    EraseFile(record.LocalFile);
}

void ReportFailure(const FileRecord& record, const std::string& message) {
    ShowMsgBox(message + record.LocalFile, kBoxCritical, GetSysName());
}

void RecordInstalled(const FileRecord& record, std::int32_t row, const std::string& status) {
    Tables.UpdatedFiles.Append(record.FileZipName);
    frmUpdate.lvwFilesList.SetSubItem(row, kStatusSubItem, status);
}

void InstallPartLibrary(const FileRecord& record, const Place& place) {
    RemoveInstalledFile(record, place.index);
    if (!Extract(record, place.index, record.LocalFolder)) {
        ReportFailure(record, "File not updated properly : "); // kept: not localised here
        return;
    }
    if (Trim(Settings.SuiteVersion) != "1.20") { // installations of that version have their index left alone
        UpdateLibDBDeleteFile(record.FileName);
        UpdateLibDBAddFileElements(record.FileName);
    }
    RecordInstalled(record, place.row, "Updated"); // kept: not localised here
}

void InstallModels(const FileRecord& record, const Place& place) {
    std::int32_t success = 0;
    UpdateSPCFile(success, place.index);
    if (success == 0) {
        ReportFailure(record, GetLocalText("File not updated properly : ", "991853"));
        return;
    }
    RecordInstalled(record, place.row, GetLocalText("Updated", "991854"));
}

void InstallOther(const FileRecord& record, const Place& place) {
    RemoveInstalledFile(record, place.index);
    if (!Extract(record, place.index, record.LocalFolder)) {
        ReportFailure(record, GetLocalText("File not updated properly : ", "991853"));
        return;
    }
    if (CheckOtherLibFile(place.index)) UpdateLibSSQ(record.FileName, Flags.LibElementKind);
    if (UpperCase(record.FileName) == "SUBCIR.IDX") {
        std::int32_t written = 0;
        ReCreateMDBFileforSPC(written);
    }
    RegisterFile(place.index);
    RecordInstalled(record, place.row, GetLocalText("Updated", "991854"));
}

void InstallPass(Place& place) {
    place.row = 0;
    for (place.index = 1; place.index <= Tables.FileArray.UpperBound(); ++place.index) {
        const FileRecord& record = Tables.FileArray[place.index];
        if (record.UpdateFlag != 1) continue;
        ++place.row;
        if (record.TransferState != 1) continue;
        EditMsgline(GetLocalText("Uncompressing : ", "991878") + record.FileName);
        if (UpperCase(record.FileName) == "KLNUPDTA.EXE") Flags.NewUpdaterLoaded = 1;
        if (CheckLibPartFile(place.index)) {
            InstallPartLibrary(record, place);
        } else if (CheckSPCFile(place.index)) {
            InstallModels(record, place);
        } else {
            InstallOther(record, place);
        }
    }
    SyncFileSystem(GetAppFolder());
}

void EndInError(const Place& place) {
    Flags.DownloadFailed = 1;
    if (place.index >= 1 && place.index <= Tables.FileArray.UpperBound()) {
        const FileRecord& record = Tables.FileArray[place.index];
        // Kept: it is the installed file that goes, not the archive.
        if (FileExists(record.TempZipFile)) EraseFile(record.LocalFile);
    }
    ShowRetry(GetLocalText("LiveUpdate Failed.", "991855") + GetLocalText("Click Retry to try again", "991856"));
}

} // namespace

std::int32_t UpdateFilesFromWeb() {
    Place place;
    try {
        Flags.NewUpdaterLoaded = 0;
        Tables.UpdatedFiles.Clear();
        if (frmUpdate.IsRetry == 0) frmUpdate.ResumeIndex = 1;
        if (DownloadPass(place)) InstallPass(place);
        return 0;
    } catch (const RuntimeError&) {
        EndInError(place);
        return 1;
    }
}

void CreateNewFolders() {
    try {
        for (const NewFolderRecord& entry : Tables.NewFolderArray) {
            RequireInsideFolder(entry.FolderName);
            const auto first = InStr(entry.FolderName, "\\"); // what stands before it is ignored
            if (first != 0) CreateFoldersBelow(GetAppFolder(), Mid(entry.FolderName, first));
        }
    } catch (const RuntimeError&) { // a folder that cannot be made shows when a file is to go there
    }
}

void CleanUpTemporaryFiles() {
    try {
        FileListBox& files = frmUpdate.files_temp;
        files.SetPath(Settings.TempFolder);
        const std::int32_t count = files.ListCount();
        for (std::int32_t i = 0; i < count; ++i) {
            const std::string path = Settings.TempFolder + "\\" + files.List(i);
            SetAttributesNormal(path);
            EraseFile(path);
        }
    } catch (const RuntimeError&) { // what is left goes at the next end
    }
}

} // namespace korlan
