#include "catalogue/Comparison.h"

#include "app/base/Paths.h"
#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "catalogue/Catalogue.h"
#include "catalogue/DateText.h"
#include "catalogue/FileKinds.h"
#include "catalogue/FileTables.h"
#include "platform/FileSystem.h"
#include "platform/Log.h"
#include "platform/MsgBox.h"

#include <algorithm>
#include <unordered_set>

namespace korlan {

namespace {

std::string DestinationFolder(const FileRecord& record) {
    std::string folder;
    if (record.FilePath == "Root") {
        folder = GetAppFolder();
    } else {
        GetKorlanFilePath(record.FilePath, folder);
    }
    AddBackslash(folder);
    return folder;
}

void JudgeRecord(FileRecord& record, const std::string& targetPath) {
    std::string stamp = "missing";
    if (FileExists(targetPath)) {
        stamp = GetFileStamp(targetPath);
        CompareDates(stamp, record.Filedate, record.UpdateFlag);
    } else {
        record.UpdateFlag = 1;
    }
    if (record.UpdateFlag == 1) LogLine("marked " + targetPath + ": here " + stamp + ", server " + record.Filedate);
}

bool ModelInstalledBefore(const FileRecord& record) {
    return std::find(Tables.AppliedSPCList.begin(), Tables.AppliedSPCList.end(), record.FileZipName) !=
           Tables.AppliedSPCList.end();
}

void CompareRecord(std::int32_t index, std::unordered_set<std::string>& handled) {
    FileRecord& record = Tables.FileArray[index];
    const std::string folder = DestinationFolder(record);
    if (!IsBareName(record.FileName) || !StaysInFolder(record.FileZipName)) // the others still count
        return LogLine("refused the name " + record.FileName + " or its archive " + record.FileZipName);
    const std::string targetPath = folder + record.FileName;
    if (handled.insert(UpperCase(targetPath)).second) JudgeRecord(record, targetPath);
    if (record.UpdateFlag == 1 && CheckSPCFile(index) && ModelInstalledBefore(record)) {
        LogLine("unmarked: " + record.FileZipName + " was installed before");
        record.UpdateFlag = 0;
    }
    if (record.UpdateFlag != 1) return;
    record.LocalFile = targetPath;
    record.ServerZipName = record.FileZipName;
    record.TempZipFile = InTempFolder(record.ServerZipName);
    record.LocalFolder = folder;
}

std::string StampFailure(const char* text, std::int32_t style) {
    ShowMsgBox(text, style, "");
    return "";
}

// Closes the stamp handle on every way out.
struct StampHandle {
    std::int32_t value;
    ~StampHandle() { CloseStamp(value); }
};

} // namespace

void CompareUpdatableFiles() {
    std::int32_t i = 1;
    try {
        std::unordered_set<std::string> handled;
        for (; i <= Tables.FileArray.UpperBound(); ++i) CompareRecord(i, handled);
        UpdateFileArraySP();
    } catch (const RuntimeError& error) { // the list shows what was marked before
        LogTrapped("CompareUpdatableFiles", error);
        if (i > Tables.FileArray.UpperBound()) return;
        const FileRecord& record = Tables.FileArray[i];
        LogLine("refused " + record.FilePath + " " + record.FileName + " of " + record.Filedate);
    }
}

std::string GetFileStamp(const std::string& path) {
    if (FindNormalFile(path).empty()) return StampFailure("Can't find the file", kBoxExclamation);
    const StampHandle handle{OpenForStamp(path)};
    // A failed open is -1 and passes: reading the time then tells.
    if (static_cast<std::int16_t>(handle.value) == 0) return StampFailure("Can't open the file", kBoxExclamation);
    std::int64_t ticks = 0;
    if (!ReadWriteTime(handle.value, ticks)) return StampFailure("GetFileTime Failed", kBoxOkOnly);
    CalendarTime time{};
    // Only -1 is a failure; 0 has filled the time as well.
    if (TicksToCalendar(ticks, time) == -1) return StampFailure("FileTimeToSystemTime Failed", kBoxOkOnly);
    return DateText(time);
}

} // namespace korlan
