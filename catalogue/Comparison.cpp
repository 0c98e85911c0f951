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

std::string DestinationFolder(const std::string& designation) {
    std::string folder;
    if (designation == "Root") {
        folder = GetAppFolder();
    } else {
        GetKorlanFilePath(designation, folder);
    }
    AddBackslash(folder);
    return folder;
}

std::string StampFailure(const char* text, std::int32_t style) {
    ShowMsgBox(text, style, "");
    return "";
}

// A file open for its stamp. Closed on every way out.
class StampFile {
public:
    explicit StampFile(const std::string& path) : path_(path), handle_(OpenForStamp(path)) {}
    StampFile(const StampFile&) = delete;
    StampFile& operator=(const StampFile&) = delete;
    ~StampFile() { CloseStamp(handle_); }
    bool IsOpen() const { return handle_ != -1; }
    std::string Stamp() const;

private:
    const std::string& path_;
    std::int32_t handle_;
};

std::string StampFile::Stamp() const {
    if (!IsNormalFile(handle_, path_)) return StampFailure("Can't find the file", kBoxExclamation);
    // A failed open is -1 and passes: reading the time then tells.
    if (static_cast<std::int16_t>(handle_) == 0) return StampFailure("Can't open the file", kBoxExclamation);
    std::int64_t ticks = 0;
    if (!ReadWriteTime(handle_, ticks)) return StampFailure("GetFileTime Failed", kBoxOkOnly);
    CalendarTime time{};
    // Only -1 is a failure; 0 has filled the time as well.
    if (TicksToCalendar(ticks, time) == -1) return StampFailure("FileTimeToSystemTime Failed", kBoxOkOnly);
    return DateText(time);
}

// `here` gets the stamp of the installed file, for the log.
void JudgeRecord(FileRecord& record, const std::string& targetPath, std::string& here) {
    if (const StampFile file(targetPath); file.IsOpen()) { // one look serves both questions
        here = file.Stamp();
        CompareDates(here, record.Filedate, record.UpdateFlag);
    } else {
        here = "missing";
        record.UpdateFlag = 1;
    }
    if (record.UpdateFlag == 1) LogLine("marked " + targetPath + ": here " + here + ", server " + record.Filedate);
}

bool ModelInstalledBefore(const FileRecord& record) {
    return std::find(Tables.AppliedSPCList.begin(), Tables.AppliedSPCList.end(), record.FileZipName) !=
           Tables.AppliedSPCList.end();
}

struct Pass {                       // over the records
    SharedText designation, folder; // of the record before: most have it in common with the next
    std::unordered_set<std::string> handled;
    std::string here; // the stamp of this record's installed file, for the log
};

void CompareRecord(std::int32_t index, Pass& pass) {
    pass.here = "unknown";
    FileRecord& record = Tables.FileArray[index];
    if (pass.folder->empty() || pass.designation != record.FilePath) {
        pass.folder = DestinationFolder(record.FilePath);
        pass.designation = record.FilePath;
    }
    if (!IsBareName(record.FileName) || !StaysInFolder(record.FileZipName)) // the others still count
        return LogLine("refused the name " + record.FileName + " or its archive " + record.FileZipName);
    const std::string targetPath = *pass.folder + record.FileName;
    if (pass.handled.insert(UpperCase(targetPath)).second) JudgeRecord(record, targetPath, pass.here);
    if (record.UpdateFlag == 1 && CheckSPCFile(index) && ModelInstalledBefore(record)) {
        LogLine("unmarked: " + record.FileZipName + " was installed before");
        record.UpdateFlag = 0;
    }
    if (record.UpdateFlag != 1) return;
    record.LocalFolder = pass.folder;
}

} // namespace

void CompareUpdatableFiles() {
    std::int32_t i = 1;
    Pass pass;
    try {
        for (; i <= Tables.FileArray.UpperBound(); ++i) CompareRecord(i, pass);
        UpdateFileArraySP();
    } catch (const RuntimeError& error) { // the list shows what was marked before
        LogTrapped("CompareUpdatableFiles", error);
        if (i > Tables.FileArray.UpperBound()) return;
        const FileRecord& record = Tables.FileArray[i];
        LogLine("refused " + *record.FilePath + " " + record.FileName + ": here " + pass.here + ", server " +
                record.Filedate);
    }
}

std::string GetFileStamp(const std::string& path) {
    return StampFile(path).Stamp();
}

} // namespace korlan
