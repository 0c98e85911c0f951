#include "catalogue/AppliedPacks.h"

#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "catalogue/FileTables.h"
#include "platform/IniFile.h"

#include <algorithm>
#include <unordered_set>

namespace korlan {

namespace {

constexpr const char* kPackSection = "LIVEUPDATEFROMWEB";
constexpr const char* kModelSection = "LIVEUPDATESPCFILEFROMWEB";
constexpr const char* kMissingEntry = "AA";

// The file is open to anybody's editing: a wrong "Number" must cost neither memory nor time.
constexpr std::int32_t kMostEntries = 32767;

std::int32_t ReadCount(const char* section) {
    return std::clamp(Val(ReadIniString(section, "Number", "0")), 0, kMostEntries);
}

void ReadList(const char* section, Table<std::string>& list) {
    list.Clear();
    list.Resize(ReadCount(section));
    for (std::int32_t i = 1; i <= list.UpperBound(); ++i) {
        const std::string entry = ReadIniString(section, DecimalText(i), kMissingEntry);
        if (entry != kMissingEntry) list[i] = Trim(entry);
    }
}

// A full list takes no more: the pack is then simply looked at again by the next search.
void WritePack(std::int32_t number, const std::string& fileName) {
    if (number > kMostEntries) return;
    std::int32_t failed = 0;
    WriteIniString(kPackSection, "number", DecimalText(number), failed);
    WriteIniString(kPackSection, DecimalText(number), fileName, failed);
}

std::string Normalised(const std::string& archive) {
    return UpperCase(Trim(archive));
}

// A pack without marked members has nothing left to install and counts as applied.
bool IsApplied(const SPRecord& pack, const std::unordered_set<std::string>& installed) {
    return std::all_of(pack.Files.begin(), pack.Files.end(), [&](const SPMember& member) {
        return member.UpdateFlag != 1 || installed.contains(Normalised(member.FileZipName));
    });
}

} // namespace

void IniWebR() {
    ReadList(kPackSection, Tables.AppliedSPList);
    ReadList(kModelSection, Tables.AppliedSPCList);
    Settings.SuiteVersion = ReadIniString("Tessary", "Ver", "?");
}

void UpdateIniFile() {
    std::unordered_set<std::string> installed;
    for (const std::string& archive : Tables.UpdatedFiles) installed.insert(Normalised(archive));
    for (SPRecord& pack : Tables.FileArraySP) {
        if (pack.UpdateFlag == 1 || !IsApplied(pack, installed)) continue; // one recorded before stays recorded once
        pack.UpdateFlag = 1;
        Tables.AppliedSPList.Append(pack.FileName);
        WritePack(Tables.AppliedSPList.UpperBound(), pack.FileName);
    }
}

void UpdateIniNoUpdatesFound() {
    std::int32_t number = ReadCount(kPackSection);
    for (const SPRecord& pack : Tables.FileArraySP) WritePack(++number, pack.FileName);
}

void RecordModels(const std::string& archiveName) {
    Tables.AppliedSPCList.Append(archiveName);
    const std::string number = DecimalText(Tables.AppliedSPCList.UpperBound());
    WriteProfileValue(kModelSection, "number", number, Settings.IniFilePath);
    WriteProfileValue(kModelSection, number, archiveName, Settings.IniFilePath);
}

} // namespace korlan
