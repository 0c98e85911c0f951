#include "library/PartDatabase.h"

#include "app/base/Paths.h"
#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "library/SearchSequence.h"
#include "library/SuiteText.h"
#include "platform/DatabaseError.h"
#include "platform/FileSystem.h"
#include "platform/FormHost.h"
#include "platform/Log.h"
#include "platform/TextEncoding.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <vector>

namespace korlan {

namespace {

constexpr const char* kFieldSeparator = "\xE2\x82\xAC"; // the character of code 128, "€"
constexpr std::size_t kFieldCount = 10;                 // further ones are ignored
constexpr std::size_t kMixedModeField = 7, kElementCodeField = 8;

constexpr std::int32_t kMostParts = 1'000'000; // a damaged file never decides how much memory is taken

// Whether it is empty or the word alone, once a section of the part and up to five times, with commas between.
bool SaysNothing(const std::string& text, std::string_view word) {
    const std::vector<std::string> pieces = Split(text, ",");
    return pieces.size() <= 5 &&
           std::all_of(pieces.begin(), pieces.end(), [&](const auto& piece) { return piece == word; });
}

struct PartRow {
    std::string name;
    std::string package;
    std::vector<std::string> fields; // at least ten
};

// Raises 9 on a descriptor with fewer than ten fields.
PartRow RowFromDescriptor(const std::string& name, const std::string& descriptor) {
    PartRow row{name, Trim(descriptor), {}};
    std::string rest = descriptor;
    if (const std::int64_t blank = InStr(descriptor, " "); blank != 0) {
        row.package = Left(descriptor, blank - 1);
        rest = Mid(descriptor, blank + 1);
    }
    row.fields = Split(rest, kFieldSeparator);
    if (row.fields.size() < kFieldCount) throw RuntimeError(kErrSubscript);
    // Mind the case, unlike the model class.
    if (SaysNothing(row.fields[kElementCodeField], "None")) row.fields[kElementCodeField] = "NONE";
    if (SaysNothing(row.fields[kMixedModeField], "0")) row.fields[kMixedModeField] = "0";
    return row;
}

// The first character of the element code in capitals, empty when the part has no model.
std::string ModelClass(const std::string& elementCode) {
    const std::string code = UpperCase(Trim(elementCode));
    if (SaysNothing(code, "NONE")) return {};
    const auto next = std::find_if_not(code.begin() + 1, code.end(), IsUtf8Tail);
    return {code.begin(), next};
}

// Fills the columns of the row under way, but for the flag and the place in the sequence.
void SetTextColumns(Recordset& rows, const PartRow& row, const std::string& libraryName) {
    rows.SetText("Name", row.name);
    rows.SetText("Library", libraryName);
    rows.SetText("FullName", row.fields[0]);
    rows.SetText("Symbol", row.fields[9]);
    rows.SetText("Package", row.package);
    rows.SetText("PackageType", row.fields[6]);
    rows.SetText("Manufacturer", row.fields[3]);
    rows.SetText("Technology", row.fields[5]);
    rows.SetText("Type", row.fields[4]);
    rows.SetText("ExtIndexCode", row.fields[1]);
    rows.SetText("MMSimCode", row.fields[kMixedModeField]);
    rows.SetText("KdsSimRef", row.fields[2]);
    rows.SetText("KdsElementCode", row.fields[kElementCodeField]);
    if (const std::string model = ModelClass(row.fields[kElementCodeField]); !model.empty())
        rows.SetText("KdsModel", model);
}

std::string LibraryFolder() {
    std::string folder = Settings.LibDir;
    AddBackslash(folder);
    return folder;
}

std::string NotePath() {
    return LibraryFolder() + ".klnindex";
}

std::string FileNameOf(const std::string& path) {
    return Mid(path, InStrRev(path, "\\") + 1);
}

// The 32-bit value at byte 12 is read with the count and not used. A count below 0 or beyond all measure raises 9.
std::int32_t ReadPartCount(const std::string& path) {
    const std::string bytes = ReadFilePart(path, 12, 8);
    if (bytes.size() < 8) throw RuntimeError(kErrPastEndOfFile);
    std::uint32_t value = 0;
    for (std::size_t i = 8; i-- > 4;) value = value << 8 | static_cast<unsigned char>(bytes[i]);
    const auto count = static_cast<std::int32_t>(value);
    if (count < 0 || count > kMostParts) throw RuntimeError(kErrSubscript);
    return count;
}

void AddParts(Recordset& rows, const std::vector<PartInformation>& parts, const std::string& libraryFileName,
              std::int32_t position) {
    for (const PartInformation& part : parts) {
        const PartRow row = RowFromDescriptor(part.name, part.descriptor);
        rows.AddNew();
        SetTextColumns(rows, row, libraryFileName);
        rows.SetNumber("SSQON", 1);
        rows.SetNumber("SSQNum", position);
        rows.Update();
    }
}

// Who else has the index open holds it for a moment only. One that is locked is therefore tried again, from the start,
// and the window stays alive meanwhile.
template <typename Change>
void ChangeIndex(Change change) {
    using Clock = std::chrono::steady_clock;
    for (const auto deadline = Clock::now() + indexPatience;; DoEvents()) {
        try {
            std::unique_ptr<Database> db;
            InitDB(db);
            if (!db) return;
            db->BeginTrans();
            change(*db);
            return db->CommitTrans();
        } catch (const RuntimeError& error) {
            if (error.Number() != kErrDatabaseLocked || Clock::now() >= deadline) throw;
        }
    }
}

void DeleteRows(Database& db, const std::string& libraryFileName) {
    if (!CanGetPartInfo()) return;
    db.Execute("DELETE * from PartFields WHERE Library = '" + libraryFileName + "'");
    LogLine("index: without the parts of " + libraryFileName);
}

void AddAllParts(Database& db, const std::string& libraryFileName) {
    const std::unique_ptr<Recordset> rows = db.OpenRecordset("PartFields");
    const std::string path = LibraryFolder() + libraryFileName;
    std::int32_t position = 0;
    GetSSQNum(libraryFileName, position);
    std::vector<PartInformation> parts(static_cast<std::size_t>(ReadPartCount(path)));
    if (!parts.empty()) E_GetPartInfo(path, parts);
    AddParts(*rows, parts, libraryFileName, position);
    rows->Close();
    LogLine("index: " + std::to_string(parts.size()) + " parts of " + libraryFileName + ", place " +
            DecimalText(position));
}

// Rows added before an error stay: the index stays behind the library, and the update goes on.
void AddFileElements(Database& db, const std::string& libraryFileName) {
    try {
        AddAllParts(db, libraryFileName);
    } catch (const RuntimeError& error) {
        if (error.Number() == kErrDatabaseLocked) throw; // nothing is written then, and all of it tried again
        LogTrapped("AddFileElements", error);
    }
}

void AddOrRefreshPart(Database& db, const std::string& libraryName, const PartRow& row) {
    const std::unique_ptr<Recordset> rows = db.OpenRecordset("SELECT * FROM PartFields WHERE (Name = '" + row.name +
                                                             "') AND (Library = '" + libraryName + "')");
    if (rows->Eof()) {
        rows->AddNew();
    } else {
        rows->Edit();
    }
    SetTextColumns(*rows, row, libraryName);
    rows->SetNumber("SSQOn", 1);  // columns do not mind the case
    rows->SetNumber("SSQNum", 1); // not the library's place
    rows->Update();
    rows->Close();
}

} // namespace

void InitDB(std::unique_ptr<Database>& db) {
    const std::string path = LibraryFolder() + "Parts.abd";
    if (!FileExists(path)) return LogLine("no index " + path);
    db.reset();
    db = OpenDatabase(path, false, false, ";pwd=kqz");
    if (db->Updatable()) return;
    LogLine("index that cannot be written: " + path);
    db.reset();
}

void UpdateLibDBDeleteFile(const std::string& libraryFileName) {
    ChangeIndex([&](Database& db) { DeleteRows(db, libraryFileName); });
}

void UpdateLibDBAddFileElements(const std::string& libraryFileName) {
    try {
        ChangeIndex([&](Database& db) { AddFileElements(db, libraryFileName); });
    } catch (const RuntimeError& error) { // as for one of its parts
        LogTrapped("UpdateLibDBAddFileElements", error);
    }
}

void UpdateLibDBReplaceFile(const std::string& libraryFileName) {
    ChangeIndex([&](Database& db) {
        DeleteRows(db, libraryFileName);
        AddFileElements(db, libraryFileName);
    });
}

ReplacementNote::ReplacementNote(const std::string& libraryFileName) {
    if (FileExists(NotePath())) return;
    try {
        OutputFile note(NotePath(), OutputFile::Mode::Create);
        written_ = true;
        note.Write(libraryFileName);
        note.Close();
    } catch (const RuntimeError& error) { // the library does not wait for it
        LogTrapped("ReplacementNote", error);
    }
}

ReplacementNote::~ReplacementNote() {
    if (written_) EraseFile(NotePath());
}

void MakeUpForReplacement() {
    if (!FileExists(NotePath())) return;
    try {
        const std::string name = ReadWholeFile(NotePath());
        LogLine("index: an earlier start ended while it replaced " + name);
        if (FileExists(LibraryFolder() + name)) UpdateLibDBReplaceFile(name);
    } catch (const RuntimeError& error) {
        LogTrapped("MakeUpForReplacement", error);
        if (error.Number() == kErrDatabaseLocked) return; // the next start tries again
    }
    EraseFile(NotePath());
}

void UpdateLibDB(const std::string& libraryPath, ElementHandle deviceHandle) {
    try {
        DeviceRecord device;
        D_ReadDevice(deviceHandle, device);
        const PartRow row = RowFromDescriptor(Trim(SuiteText(device.name)), Trim(SuiteText(device.descriptor)));
        ChangeIndex([&](Database& db) { AddOrRefreshPart(db, FileNameOf(libraryPath), row); });
    } catch (const RuntimeError& error) { // the part is in its library all the same
        LogTrapped("UpdateLibDB", error);
    }
}

void UpdateLibDBDeleteFromFile(const std::string& libraryPath, const std::string& partName) {
    ChangeIndex([&](Database& db) {
        db.Execute("DELETE * from PartFields WHERE (Library = '" + FileNameOf(libraryPath) + "') AND (Name = '" +
                   partName + "')");
    });
}

} // namespace korlan
