#include "library/SpcModels.h"

#include "app/base/Paths.h"
#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "app/base/frmUpdate.h"
#include "catalogue/FileTables.h"
#include "platform/FileSystem.h"
#include "platform/IniFile.h"
#include "transfer/modZip.h"

namespace korlan {

namespace {

constexpr const char* kAppliedSection = "LIVEUPDATESPCFILEFROMWEB";
constexpr const char* kRebuildSection = "LIVEUPDATESPCFROMWEB";
constexpr std::int64_t kMostModels = 64 << 20; // bytes; far above any models, and what memory must hold at once

// Whether it was extracted. The completion flag alone says nothing of a missing or damaged archive; the library's code
// does, and then a file that came out all the same still counts.
bool Extract(const FileRecord& record, std::int32_t index, std::string folder) {
    std::string archive = record.TempZipFile;
    std::int32_t completed = 0;
    std::int32_t result = 0;
    Unzip(completed, index, archive, folder, result);
    return completed != 0 && (result == 0 || FileExists(folder + record.FileName));
}

void RemoveFile(const std::string& path) {
    SetAttributesNormal(path);
    EraseFile(path);
}

void RequestRebuild() {
    std::int32_t result = 0;
    ReCreateMDBFileforSPC(result);
}

void AppendModels(std::int32_t& success, const FileRecord& record, std::int32_t index) {
    const std::string workFile = Settings.TempFolder + "\\" + record.FileName;
    if (FileExists(workFile)) RemoveFile(workFile);
    if (!Extract(record, index, Settings.TempFolder + "\\")) return;
    if (FileLength(workFile) > kMostModels) return RemoveFile(workFile); // as good as not extracted
    SetAttributesNormal(record.LocalFile);
    CopyContentsToSPC(success, workFile, record.LocalFile);
    if (record.LocalFolder == Settings.SysDir + "\\") RequestRebuild(); // kept: minds the case
    RemoveFile(workFile);
}

void InstallNewFile(const FileRecord& record, std::int32_t index) {
    if (!Extract(record, index, record.LocalFolder)) return;
    if (UpperCase(record.LocalFolder) == UpperCase(Settings.SysDir + "\\")) RequestRebuild(); // kept: does not mind it
}

void RecordApplied(const std::string& archiveName) {
    Tables.AppliedSPCList.Append(archiveName);
    const std::string number = DecimalText(Tables.AppliedSPCList.UpperBound());
    WriteProfileValue(kAppliedSection, "number", number, Settings.IniFilePath);
    WriteProfileValue(kAppliedSection, number, archiveName, Settings.IniFilePath);
}

} // namespace

void UpdateSPCFile(std::int32_t& success, std::int32_t index) {
    const FileRecord& record = Tables.FileArray[index];
    if (FileExists(record.LocalFile)) {
        AppendModels(success, record, index);
    } else {
        InstallNewFile(record, index);
    }
    RecordApplied(record.FileZipName);
    success = 1; // kept: even when nothing was extracted
}

void CopyContentsToSPC(std::int32_t& /*success*/, const std::string& newFile, const std::string& targetFile) {
    LiveUpdateStatusSPC();
    const std::string lineBreak = "\r\n";
    const std::string emptyLines = lineBreak + lineBreak; // a printed line that is itself a line break
    const std::string models = ReadWholeFile(newFile);
    OutputFile target(targetFile, OutputFile::Mode::Append);
    target.Write(emptyLines + emptyLines + models + lineBreak);
    target.Close();
}

void ReCreateMDBFileforSPC(std::int32_t& result) {
    result = WriteProfileValue(kRebuildSection, "SPCFILEMDB", "1", Settings.IniFilePath) == 0 ? 0 : 1;
}

void LiveUpdateStatusSPC() {
    TurnSpinner(Flags.StatusSpinner);
    EditMsgline("SPC Files are updated..." + Flags.StatusSpinner);
}

} // namespace korlan
