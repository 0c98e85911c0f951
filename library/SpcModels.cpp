#include "library/SpcModels.h"

#include "app/base/Paths.h"
#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "app/base/frmUpdate.h"
#include "catalogue/AppliedPacks.h"
#include "catalogue/FileTables.h"
#include "platform/FileSystem.h"
#include "platform/IniFile.h"
#include "transfer/modZip.h"

namespace korlan {

namespace {

constexpr const char* kRebuildSection = "LIVEUPDATESPCFROMWEB";
constexpr std::size_t kBlock = 16 << 20; // bytes in memory at once; far above the models of today, which are one write

// The library's code tells a missing or damaged archive; a file that came out all the same still counts.
bool Extracted(const FileRecord& record, const std::string& folder) {
    const auto result = ExtractArchive(record.TempZipFile(), folder);
    return result && (*result == 0 || FileExists(folder + record.FileName));
}

void RequestRebuild() {
    std::int32_t result = 0;
    ReCreateMDBFileforSPC(result);
}

void AppendModels(std::int32_t& success, const FileRecord& record) {
    const std::string workFile = InTempFolder(record.FileName);
    if (FileExists(workFile)) RemoveFile(workFile);
    if (!Extracted(record, InTempFolder(""))) return;
    SetAttributesNormal(record.LocalFile());
    CopyContentsToSPC(success, workFile, record.LocalFile());
    if (*record.LocalFolder == Settings.SysDir + "\\") RequestRebuild(); // minds the case, unlike below
    RemoveFile(workFile);
}

void InstallNewFile(const FileRecord& record) {
    if (!Extracted(record, record.LocalFolder)) return;
    if (UpperCase(*record.LocalFolder) == UpperCase(Settings.SysDir + "\\")) RequestRebuild();
}

} // namespace

void UpdateSPCFile(std::int32_t& success, std::int32_t index) {
    const FileRecord& record = Tables.FileArray[index];
    if (FileExists(record.LocalFile())) {
        AppendModels(success, record);
    } else {
        InstallNewFile(record);
    }
    RecordModels(record.FileZipName);
    success = 1; // a bad archive, too, is not to be offered again
}

void CopyContentsToSPC(std::int32_t& /*success*/, const std::string& newFile, const std::string& targetFile) {
    LiveUpdateStatusSPC();
    const std::string lineBreak = "\r\n";
    const std::string emptyLines = lineBreak + lineBreak; // a printed line that is itself a line break
    const auto length = static_cast<std::uint64_t>(FileLength(newFile));
    std::string text = emptyLines + emptyLines + ReadFilePart(newFile, 0, kBlock);
    OutputFile target(targetFile, OutputFile::Mode::Append);
    for (std::uint64_t at = kBlock; at < length; at += kBlock) {
        target.Write(text);
        text = ReadFilePart(newFile, at, kBlock);
    }
    target.Write(text + lineBreak);
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
