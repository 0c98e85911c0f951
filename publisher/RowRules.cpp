#include "publisher/RowRules.h"

#include "app/base/Paths.h"
#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "catalogue/DateText.h"
#include "catalogue/FileKinds.h"
#include "platform/RuntimeError.h"
#include "platform/jet/JetWriter.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <set>

namespace korlan::publisher {

namespace {

constexpr const char* kSearchStops =
    ": every wizard stops comparing here, offers nothing from this row on and records the packs as applied";

template <class Call>
bool Raises(Call call) {
    try {
        call();
        return false;
    } catch (const RuntimeError&) {
        return true;
    }
}

std::string Quoted(const std::string& text) {
    return "\"" + text + "\"";
}

bool IsDevice(const std::string& name) {
    static const std::set<std::string> devices = [] {
        std::set<std::string> all = {"CON", "PRN", "AUX", "NUL"};
        for (char digit = '1'; digit <= '9'; ++digit)
            for (const char* port : {"COM", "LPT"}) all.insert(port + std::string(1, digit));
        return all;
    }();
    return devices.contains(Trim(UpperCase(name.substr(0, name.find('.')))));
}

// ---- texts ----

void CheckText(const Place& place, const char* column, const std::string& text, Findings& findings) {
    const auto characters = std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; });
    const auto longest = static_cast<std::ptrdiff_t>(jet::kLongestText);
    if (Contains(text, "\xEF\xBF\xBD"))
        findings.Error(place, "code-page",
                       std::string(column) + " holds what is no character of the file's code page: no wizard finds it");
    else if (!jet::FitsCodePage(text))
        findings.Warning(place, "code-page",
                         column + (" " + Quoted(text)) +
                             " cannot be written in code page 1252: machines that use it cannot make the file");
    if (characters > longest)
        findings.Error(place, "length",
                       std::string(column) +
                           " is longer than the 255 characters of a text column: " + "it cannot be kept whole");
    else if (characters == longest)
        findings.Warning(place, "length", std::string(column) + " fills its column of 255 characters: it may be cut");
}

void CheckAddress(const Place& place, const std::string& name, Findings& findings) {
    if (name.find_first_of("%?") != std::string::npos)
        findings.Error(place, "address",
                       Quoted(name) + " has a sign with a meaning of its own in addresses: " +
                           "the server is asked for another file");
    else if (std::ranges::any_of(name, [](char c) { return c <= ' ' || c > '~' || Contains("\"#<>\\^`{|}", {&c, 1}); }))
        findings.Warning(place, "address",
                         Quoted(name) + " has characters that an address must escape: " +
                             "a proxy on the way may ask for another file");
}

// ---- names ----

// A library or models file by its last extension that the wizard, which goes by the first dot, does not take for one.
bool KindIsHidden(const std::string& name) {
    static const std::set<std::string> kinds = {"SPC", "PART", "SYMBOL", "PACKAGE", "PADSTACK",
                                                "DLL", "OCX",  "EXE",    "TLB"};
    const std::string last = UpperCase(name.substr(name.rfind('.') + 1));
    return kinds.contains(last) && FileExtension(name) != last;
}

void CheckFileName(const Place& place, const std::string& name, Findings& findings) {
    if (name.empty() || !IsBareName(name)) {
        findings.Error(place, "name",
                       "FileName " + Quoted(name) + " names no file in a folder: the file is never offered");
        return;
    }
    if (const std::string reason = WhyNoFileName(name); !reason.empty())
        findings.Error(place, "name",
                       "FileName " + Quoted(name) + " " + reason +
                           ": the file is never there, so it is offered again and again");
    if (KindIsHidden(name))
        findings.Error(place, "two-dots",
                       "FileName " + Quoted(name) + " counts as a file of kind " + FileExtension(name) +
                           ", since the first dot decides: it is not " + "merged, indexed or registered");
    if (FileExtension(name) == "PART" && Contains(name, "'"))
        findings.Error(place, "quote",
                       "FileName " + Quoted(name) + " has a quote, which breaks the statements of " +
                           "the part index: the run ends with the library deleted");
}

void CheckArchiveName(const Place& place, const std::string& name, Findings& findings) {
    if (name.empty())
        findings.Error(place, "archive-name", "FileZipName is empty: every update that includes the file fails");
    else if (!StaysInFolder(name))
        findings.Error(place, "archive-name",
                       "FileZipName " + Quoted(name) + " leads out of its folder: the file is never offered");
    else
        CheckAddress(place, name, findings);
}

// ---- designations ----

void CheckDesignation(const Place& place, const CatalogueRow& row, Findings& findings) {
    const std::string& designation = row.FilePath;
    if (designation == "Root") return;
    std::string folder;
    const bool raises = Raises([&] { GetKorlanFilePath(designation, folder); });
    if (raises || !designation.starts_with("\\")) {
        const std::string meant = Trim(UpperCase(designation));
        const std::string hint = meant == "ROOT"        ? " (\"Root\" is spelled so, exactly)"
                                 : meant == "NEWFOLDER" ? " (\"NEWFOLDER\" is spelled so, exactly)"
                                                        : "";
        findings.Error(place, "designation",
                       "FilePath " + Quoted(designation) + " does not resolve" + hint + kSearchStops);
        return;
    }
    for (const std::string& component : Split(designation.substr(1), "\\")) {
        if (component.empty())
            findings.Warning(place, "designation",
                             "FilePath " + Quoted(designation) + " has a backslash too many: " +
                                 "the same file elsewhere in the catalogue is not recognised");
        else if (const std::string reason = WhyNoFileName(component); !reason.empty())
            findings.Error(place, "designation",
                           "FilePath " + Quoted(designation) + " has a folder that " + reason +
                               ": the file cannot be put there");
    }
}

// ---- dates ----

bool IsPossibleDate(const std::vector<std::int32_t>& part) { // day, month, year, hour, minute, second
    using namespace std::chrono;
    const year_month_day date(year(part[2]), month(static_cast<unsigned>(part[1])),
                              day(static_cast<unsigned>(part[0])));
    const auto within = [](std::int32_t number, std::int32_t end) { return number >= 0 && number < end; };
    return part[2] >= 1980 && part[2] < 2108 && date.ok() && within(part[3], 24) && within(part[4], 60) &&
           within(part[5], 60);
}

// The six numbers of a text that IsDate has taken; no seconds count as -1.
std::vector<std::int32_t> DateParts(const std::string& text) {
    const auto parts = Split(text, ",");
    std::vector<std::int32_t> numbers;
    for (const std::string& piece : Split(parts[0], "-")) numbers.push_back(ToInteger(piece));
    numbers.resize(3);
    for (const std::string& piece : Split(parts[1], ":"))
        numbers.push_back(Raises([&] { ToInteger(piece); }) ? -1 : ToInteger(piece));
    numbers.resize(6, -1);
    return numbers;
}

void CheckDate(const Place& place, const std::string& date, Findings& findings) {
    if (!IsDate(date)) {
        findings.Error(place, "date", "Filedate " + Quoted(date) + " is no D-M-YYYY,H:M:S" + kSearchStops);
        return;
    }
    const std::vector<std::int32_t> parts = DateParts(date);
    if (!IsPossibleDate(parts)) {
        findings.Error(place, "date",
                       "Filedate " + Quoted(date) +
                           " is no time that a file can have: " + "the file is offered to nobody, or again and again");
        return;
    }
    std::string exact;
    for (std::size_t i = 0; i < parts.size(); ++i)
        exact += DecimalText(parts[i]) + std::array{"-", "-", ",", ":", ":", ""}[i];
    if (parts[5] % 2 != 0)
        findings.Warning(place, "odd-second",
                         "Filedate " + Quoted(date) + " has an odd second, which not every disk " +
                             "keeps: an interrupted update fetches the archive once more");
    if (Trim(date) != exact)
        findings.Warning(place, "date-form",
                         "Filedate " + Quoted(date) + " is not written as " + exact + ": " +
                             "an interrupted update fetches the archive once more");
}

// ---- rows ----

void CheckFolderRow(const Place& place, const CatalogueRow& row, Findings& findings) {
    CheckText(place, "FileName", row.FileName, findings);
    const std::string& folder = row.FileName;
    if (!StaysInFolder(folder))
        findings.Error(place, "folder",
                       "the folder " + Quoted(folder) + " leads out of the installation: it is not made");
    else if (!folder.starts_with("\\"))
        findings.Error(place, "folder",
                       "the folder " + Quoted(folder) + " does not begin with a backslash: what " +
                           "stands before the first one is left out");
    else
        for (const std::string& component : Split(folder.substr(1), "\\"))
            if (const std::string reason = WhyNoFileName(component); !reason.empty())
                findings.Error(place, "folder",
                               "the folder " + Quoted(folder) + " has a part that " + reason + ": it cannot be made");
}

} // namespace

std::string WhyNoFileName(std::string_view name) {
    if (name.empty()) return "is empty";
    if (std::ranges::any_of(name, [](char c) { return static_cast<unsigned char>(c) < ' '; }))
        return "has a control character";
    if (const auto at = name.find_first_of("<>:\"/\\|?*"); at != std::string_view::npos)
        return "has the character " + std::string(1, name[at]) + ", which no name on Windows may have";
    if (name.ends_with(' ') || name.ends_with('.')) return "ends with a blank or a dot, which Windows leaves out";
    if (IsDevice(std::string(name))) return "is the name of a device on Windows";
    return "";
}

std::optional<std::string> TargetOf(const CatalogueRow& row) {
    if (row.FilePath == "Root") return UpperCase("\\" + row.FileName);
    std::string folder;
    if (Raises([&] { GetKorlanFilePath(row.FilePath, folder); })) return std::nullopt;
    std::string designation = row.FilePath;
    AddBackslash(designation);
    return UpperCase(designation + row.FileName);
}

void CheckRow(const Place& place, const CatalogueRow& row, Findings& findings) {
    if (row.IsFolder()) {
        CheckFolderRow(place, row, findings);
        return;
    }
    CheckText(place, "FileName", row.FileName, findings);
    CheckText(place, "FilePath", row.FilePath, findings);
    CheckText(place, "FileZipName", row.FileZipName, findings);
    CheckFileName(place, row.FileName, findings);
    CheckDesignation(place, row, findings);
    CheckDate(place, row.Filedate, findings);
    CheckArchiveName(place, row.FileZipName, findings);
}

void CheckPackName(const Place& place, const std::string& name, Findings& findings) {
    CheckText(place, "FileName", name, findings);
    if (!StaysInFolder(name))
        findings.Error(place, "pack-name", Quoted(name) + " leads out of its folder: it is never read");
    else if (const std::string reason = WhyNoFileName(name); !reason.empty())
        findings.Error(place, "pack-name", "the pack's name " + Quoted(name) + " " + reason + ": it is never read");
    else
        CheckAddress(place, name, findings);
}

bool IsDate(const std::string& text) {
    std::int32_t earlier = 0;
    return !Raises([&] { CompareDates("1-1-1,0:0:0", text, earlier); }); // which is equal to no date of a file
}

bool SameMinute(const std::string& date1, const std::string& date2) {
    return IsDate(date1) && IsDate(date2) && !IsOlder(date1, date2) && !IsOlder(date2, date1);
}

bool IsOlder(const std::string& date1, const std::string& date2) {
    std::int32_t earlier = 0;
    return !Raises([&] { CompareDates(date1, date2, earlier); }) && earlier != 0;
}

bool IsModelFile(const std::string& fileName) {
    return FileExtension(fileName) == "SPC";
}

} // namespace korlan::publisher
