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
#include "platform/FormHost.h"
#include "platform/Log.h"
#include "platform/MsgBox.h"
#include "transfer/HttpTransfer.h"
#include "transfer/Registration.h"
#include "transfer/modZip.h"

#include <algorithm>
#include <optional>

namespace korlan {

namespace {

constexpr std::int32_t kSizeSubItem = 2;
constexpr std::int32_t kStatusSubItem = 3;

// Makes the folders named by `relativePath` below `base`, which is there already.
void CreateFoldersBelow(std::string base, const std::string& relativePath) {
    for (const std::string& component : Split(relativePath, "\\")) {
        if (component.empty()) continue;
        base += "\\" + component;
        if (!FolderExists(base)) CreateOneFolder(base);
    }
}

// ---- the run as a whole ----

// Two steps for each chosen record, transferred and installed. A repeated run has taken those before its record.
void BeginProgress() {
    std::int32_t taken = 0, steps = 0;
    for (std::int32_t i = 1; i <= Tables.FileArray.UpperBound(); ++i) {
        const FileRecord& record = Tables.FileArray[i];
        if (record.Row == 0 || !frmUpdate.lvwFilesList.Row(record.Row).checked) continue;
        steps += 2;
        if (i < frmUpdate.ResumeIndex) ++taken;
    }
    frmUpdate.prgRun.SetProgress(taken, steps);
    frmUpdate.prgRun.SetVisible(true);
}

void CountStep() {
    frmUpdate.prgRun.SetProgress(frmUpdate.prgRun.Value() + 1, frmUpdate.prgRun.Maximum());
}

// ---- download pass ----

// Whether the archive left over from an earlier run holds the catalogue's version of the file.
bool ArchiveIsCurrent(const FileRecord& record) {
    ExtractArchive(record.TempZipFile(), InTempFolder(""));
    const std::string extracted = InTempFolder(record.FileName);
    if (!FileExists(extracted)) return false;
    const bool current = Trim(GetFileStamp(extracted)) == Trim(record.Filedate);
    if (current) SetAttributesNormal(extracted);
    EraseFile(extracted);
    return current;
}

void FetchArchive(FileRecord& record, const std::string& url, std::int32_t size, std::int32_t showStatus) {
    const std::string archive = Replace(record.FileZipName, "/", "\\");
    CreateFoldersBelow(Settings.TempFolder, Left(archive, InStrRev(archive, "\\")));
    std::int32_t done = 0;
    DownloadFile(url, record.TempZipFile(), done, size, record.FileName, showStatus);
    if (done == 0 && Flags.CancelRequested == 0) Flags.DownloadFailed = 1; // it never began, or could not be written
    if (Flags.DownloadFailed != 1 && done != 0) record.TransferState = 1;
}

void TransferRecord(FileRecord& record) {
    ListView& list = frmUpdate.lvwFilesList;
    list.EnsureVisible(record.Row);
    EditMsgline(GetLocalText("Transferring : ", "991877") + record.FileName);
    const std::string url = Settings.UpdateUrl + "/" + record.FileZipName;
    record.TransferState = 0;

    const bool leftOver = FileExists(record.TempZipFile());
    if (leftOver && ArchiveIsCurrent(record)) {
        record.TransferState = 1;
    } else {
        std::int32_t size = 0;
        bool exists = false;
        const std::int32_t showStatus = GetWebFileInformation(url, size, exists);
        if (size == 0 && !leftOver) throw RuntimeError(kErrDeliberateAbort);
        if (size != 0) {
            const std::int32_t kilobytes = Kilobytes(size);
            // An archive fetched again is told by its size: untrimmed, a 0 as it is, the unit localised.
            list.SetSubItem(record.Row, kSizeSubItem,
                            leftOver ? SignedText(kilobytes) + GetLocalText("KB", "991850")
                                     : DecimalText(std::max(kilobytes, 1)) + "KB");
            FetchArchive(record, url, size, showStatus);
        }
    }
    if (record.TransferState == 1) list.SetSubItem(record.Row, kStatusSubItem, kCopiedFromWeb);
    list.SetBold(record.Row, true);
    CountStep();
}

// False when a transfer failed; ResumeIndex then stands at its record. Like the install pass it leaves the record at
// which it stands in `index`.
bool DownloadPass(std::int32_t& index) {
    for (index = frmUpdate.ResumeIndex; index <= Tables.FileArray.UpperBound(); ++index) {
        frmUpdate.ResumeIndex = index;
        FileRecord& record = Tables.FileArray[index];
        if (record.Row == 0) continue;
        if (frmUpdate.lvwFilesList.Row(record.Row).checked) TransferRecord(record);
        if (Flags.DownloadFailed != 1) continue;
        if (FileExists(record.TempZipFile())) EraseFile(record.TempZipFile());
        ShowRetry(GetLocalText("Live Update Failed.Click Retry to try again", "991851"));
        return false;
    }
    return true;
}

// ---- install pass ----

void RemoveInstalledFile(const FileRecord& record, std::int32_t index) {
    if (!FileExists(record.LocalFile())) return;
    SetAttributesNormal(record.LocalFile());
    UnregisterFile(index);
    EraseFile(record.LocalFile());
}

void ReportFailure(const FileRecord& record, const std::string& message) {
    LogLine("failed " + record.LocalFile() + " of " + record.Filedate);
    ShowMsgBox(message + record.LocalFile(), kBoxCritical, GetSysName());
}

void RecordInstalled(const FileRecord& record, const std::string& status) {
    LogLine("installed " + record.LocalFile() + (FileExists(record.LocalFile()) ? "" : ", which is not there"));
    Tables.UpdatedFiles.Append(record.FileZipName);
    frmUpdate.lvwFilesList.SetSubItem(record.Row, kStatusSubItem, status);
}

// False when the archive library could not be called; what it made of the archive is not looked at.
bool Extract(const FileRecord& record) {
    return ExtractArchive(record.TempZipFile(), record.LocalFolder).has_value();
}

void InstallPartLibrary(const FileRecord& record, std::int32_t index) {
    const bool hasIndex = Trim(Settings.SuiteVersion) != "1.20"; // that version has its index left alone
    RemoveInstalledFile(record, index);
    std::optional<ReplacementNote> note;
    if (hasIndex) note.emplace(record.FileName);
    if (!Extract(record)) {
        ReportFailure(record, "File not updated properly : ");
        return;
    }
    if (hasIndex) UpdateLibDBReplaceFile(record.FileName);
    RecordInstalled(record, "Updated"); // a literal, unlike below
}

void InstallModels(const FileRecord& record, std::int32_t index) {
    std::int32_t success = 0;
    UpdateSPCFile(success, index);
    if (success == 0) {
        ReportFailure(record, GetLocalText("File not updated properly : ", "991853"));
        return;
    }
    RecordInstalled(record, GetLocalText("Updated", "991854"));
}

void InstallOther(const FileRecord& record, std::int32_t index) {
    RemoveInstalledFile(record, index);
    if (!Extract(record)) {
        ReportFailure(record, GetLocalText("File not updated properly : ", "991853"));
        return;
    }
    if (CheckOtherLibFile(index)) UpdateLibSSQ(record.FileName, Flags.LibElementKind);
    if (UpperCase(record.FileName) == "SUBCIR.IDX") {
        std::int32_t written = 0;
        ReCreateMDBFileforSPC(written);
    }
    RegisterFile(index);
    RecordInstalled(record, GetLocalText("Updated", "991854"));
}

void InstallPass(std::int32_t& index) {
    for (index = 1; index <= Tables.FileArray.UpperBound(); ++index) {
        const FileRecord& record = Tables.FileArray[index];
        if (record.Row == 0 || record.TransferState != 1) continue;
        GiveWay(); // Cancel is answered between two files, too
        frmUpdate.lvwFilesList.EnsureVisible(record.Row);
        EditMsgline(GetLocalText("Uncompressing : ", "991878") + record.FileName);
        if (UpperCase(record.FileName) == "KLNUPDTA.EXE") Flags.NewUpdaterLoaded = 1;
        if (CheckLibPartFile(index)) {
            InstallPartLibrary(record, index);
        } else if (CheckSPCFile(index)) {
            InstallModels(record, index);
        } else {
            InstallOther(record, index);
        }
        CountStep();
    }
    SyncFileSystem(GetAppFolder());
}

void EndInError(std::int32_t index) {
    frmUpdate.prgRun.SetVisible(false);
    Flags.DownloadFailed = 1;
    if (index >= 1 && index <= Tables.FileArray.UpperBound()) {
        const FileRecord& record = Tables.FileArray[index];
        LogLine("failed " + record.LocalFile() + " of " + record.Filedate);
        // Not the archive but the installed file goes, so that the next search offers it again.
        if (FileExists(record.TempZipFile())) EraseFile(record.LocalFile());
    }
    ShowRetry(GetLocalText("LiveUpdate Failed.", "991855") + GetLocalText("Click Retry to try again", "991856"));
}

} // namespace

void ShowRetry(const std::string& message) {
    LogLine("shown: " + message);
    frmUpdate.CmdRetry.SetVisible(true);
    frmUpdate.cmdCancel.SetVisible(true);
    frmUpdate.cmdUpdate.SetVisible(false);
    frmUpdate.CmdRetry.SetCaption(GetLocalText("Retry", "991852"));
    EditMsgline(message);
}

std::int32_t UpdateFilesFromWeb() {
    std::int32_t index = 0;
    try {
        Flags.NewUpdaterLoaded = 0;
        Tables.UpdatedFiles.Clear();
        if (frmUpdate.IsRetry == 0) frmUpdate.ResumeIndex = 1;
        BeginProgress();
        if (DownloadPass(index)) InstallPass(index);
        frmUpdate.prgRun.SetVisible(false);
        return 0;
    } catch (const RuntimeError& error) {
        LogTrapped("UpdateFilesFromWeb", error);
        EndInError(index);
        return 1;
    }
}

void CreateNewFolders() {
    try {
        for (const NewFolderRecord& entry : Tables.NewFolderArray) {
            if (!StaysInFolder(entry.FolderName)) {
                LogLine("refused the folder " + entry.FolderName);
                continue;
            }
            const auto first = InStr(entry.FolderName, "\\"); // what stands before it is ignored
            if (first != 0) CreateFoldersBelow(GetAppFolder(), Mid(entry.FolderName, first));
        }
    } catch (const RuntimeError& error) { // a folder that cannot be made shows when a file is to go there
        LogTrapped("CreateNewFolders", error);
    }
}

void CleanUpTemporaryFiles() {
    try {
        FileListBox& files = frmUpdate.files_temp;
        files.SetPath(Settings.TempFolder);
        const std::int32_t count = files.ListCount();
        for (std::int32_t i = 0; i < count; ++i) RemoveFile(InTempFolder(files.List(i)));
        for (const FileRecord& record : Tables.FileArray) // some lie in folders of their own
            if (record.TransferState == 1 && FileExists(record.TempZipFile())) RemoveFile(record.TempZipFile());
    } catch (const RuntimeError& error) { // what is left goes at the next end
        LogTrapped("CleanUpTemporaryFiles", error);
    }
}

} // namespace korlan
