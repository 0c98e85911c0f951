#include "publisher/Offer.h"

#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "catalogue/AppliedPacks.h"
#include "catalogue/Catalogue.h"
#include "catalogue/Comparison.h"
#include "catalogue/FileTables.h"
#include "platform/FileSystem.h"
#include "platform/RuntimeError.h"
#include "platform/linux/HostPath.h"
#include "publisher/Headless.h"

#include <algorithm>
#include <iostream>

namespace korlan::publisher {

namespace {

void TakeSettings(const std::filesystem::path& folder) {
    const std::string program = WindowsPath(std::filesystem::absolute(folder).lexically_normal().string());
    WizardPath() = program + "\\KlnUpdt.EXE";
    Settings = {};
    Tables = {};
    Settings.SysPath = program + "\\SYS\\";
    Settings.IniFilePath = Settings.SysPath + "TESSARY.INI";
    if (!FileOpensForReading(Settings.IniFilePath))
        throw RuntimeError(kErrFileNotFound, folder.string() + " is no program folder: it has no SYS/TESSARY.INI");
    ReadSuiteSettings();
    Settings.TempFolder = program + "\\Temp";
    IniWebR();
    for (const std::string* place : {&Settings.LibDir, &Settings.SysDir, &Settings.KDScml})
        if (!DriveIsThere(*place))
            throw RuntimeError(kErrPathNotFound,
                               *place + " in TESSARY.INI is on a drive that is not there: $KLN_DRIVES names " +
                                   "the folder of links c:, d: ...");
}

bool IsApplied(const std::string& pack) {
    return std::ranges::any_of(Tables.AppliedSPList,
                               [&](const std::string& entry) { return UpperCase(entry) == Trim(UpperCase(pack)); });
}

void MergePacks(const std::vector<PublishedPack>& packs) {
    for (const PublishedPack& pack : packs) {
        if (IsApplied(pack.name)) {
            std::cout << "  " << pack.name << " is recorded as applied\n";
            continue;
        }
        SPRecord record;
        record.FileName = pack.name;
        Tables.FileArraySP.Append(std::move(record));
        if (!pack.file.empty())
            GetFilesInsideSP(WindowsPath(std::filesystem::absolute(pack.file).string()),
                             Tables.FileArraySP.UpperBound());
    }
}

} // namespace

void PrintOffer(const std::filesystem::path& folder, const std::vector<PublishedPack>& packs) {
    TakeSettings(folder);
    std::cout << "\nThe wizard of " << folder.string() << ":\n";
    MergePacks(packs);
    CompareUpdatableFiles();
    std::int32_t offered = 0;
    for (const FileRecord& record : Tables.FileArray) {
        if (record.UpdateFlag != 1) continue;
        ++offered;
        std::cout << "  offers " << record.LocalFile() << "  " << record.Filedate << "  "
                  << (FileOpensForReading(record.LocalFile()) ? "instead of " + GetFileStamp(record.LocalFile())
                                                              : "not there yet")
                  << '\n';
    }
    if (offered == 0) std::cout << "  No updates found\n";
    Tables.CatalogueDatabase.reset();
}

} // namespace korlan::publisher
