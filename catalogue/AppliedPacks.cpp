#include "catalogue/AppliedPacks.h"

#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "catalogue/FileTables.h"
#include "platform/FileSystem.h"
#include "platform/IniFile.h"
#include "platform/Log.h"

#include <algorithm>
#include <unordered_set>

namespace korlan {

namespace {

constexpr const char* kPackSection = "LIVEUPDATEFROMWEB";
constexpr const char* kModelSection = "LIVEUPDATESPCFILEFROMWEB";
constexpr const char* kMissingEntry = "AA";

std::int32_t ReadCount(const char* section) {
    return Val(ReadIniString(section, "Number", "0"));
}

// The file is open to anybody's editing: a wrong "Number" must cost neither memory nor time, so no more entries are
// looked for than the file has characters.
void ReadList(const char* section, Table<std::string>& list, std::int64_t& count) {
    list.Clear();
    count = std::max(ReadCount(section), 0);
    if (count == 0) return;
    list.Resize(static_cast<std::int32_t>(std::min(count, FileLength(Settings.IniFilePath))));
    for (std::int32_t i = 1; i <= list.UpperBound(); ++i) {
        const std::string entry = ReadIniString(section, DecimalText(i), kMissingEntry);
        if (entry != kMissingEntry) list[i] = Trim(entry);
    }
}

void WritePack(std::int64_t number, const std::string& fileName) {
    std::int32_t failed = 0;
    WriteIniString(kPackSection, "number", std::to_string(number), failed);
    WriteIniString(kPackSection, std::to_string(number), fileName, failed);
}

std::string Normalised(const std::string& archive) {
    return UpperCase(Trim(archive));
}

// A pack without marked members has nothing left to install and counts as applied. Of one that was not read nobody
// knows what it holds.
bool IsApplied(const SPRecord& pack, const std::unordered_set<std::string>& installed) {
    return pack.Read && std::all_of(pack.Files.begin(), pack.Files.end(), [&](const SPMember& member) {
               return member.UpdateFlag != 1 ||
                      installed.contains(Normalised(Tables.FileArray[member.Record].FileZipName));
           });
}

} // namespace

void IniWebR() {
    ReadList(kPackSection, Tables.AppliedSPList, Tables.AppliedSPCount);
    ReadList(kModelSection, Tables.AppliedSPCList, Tables.AppliedSPCCount);
    Settings.SuiteVersion = ReadIniString("Tessary", "Ver", "?");
    LogLine("suite version " + Settings.SuiteVersion);
}

void UpdateIniFile() {
    std::unordered_set<std::string> installed;
    for (const std::string& archive : Tables.UpdatedFiles) installed.insert(Normalised(archive));
    for (SPRecord& pack : Tables.FileArraySP) {
        if (pack.UpdateFlag == 1 || !IsApplied(pack, installed)) continue; // one recorded before stays recorded once
        pack.UpdateFlag = 1;
        Tables.AppliedSPList.Append(pack.FileName);
        WritePack(++Tables.AppliedSPCount, pack.FileName);
    }
}

void UpdateIniNoUpdatesFound() {
    std::int64_t number = ReadCount(kPackSection); // a negative one counts on as it stands
    for (const SPRecord& pack : Tables.FileArraySP)
        if (pack.Read) WritePack(++number, pack.FileName);
}

void RecordModels(const std::string& archiveName) {
    Tables.AppliedSPCList.Append(archiveName);
    const std::string number = std::to_string(++Tables.AppliedSPCCount);
    WriteProfileValue(kModelSection, "number", number, Settings.IniFilePath);
    WriteProfileValue(kModelSection, number, archiveName, Settings.IniFilePath);
}

} // namespace korlan
