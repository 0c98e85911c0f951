#include "app/base/Settings.h"

#include "app/base/LocalText.h"
#include "app/base/Paths.h"
#include "app/base/TextHelpers.h"
#include "platform/FileSystem.h"
#include "platform/IniFile.h"
#include "platform/Log.h"
#include "platform/MsgBox.h"
#include "platform/RuntimeError.h"
#include "platform/SettingsStore.h"

namespace korlan {

namespace {

constexpr std::size_t kIniBufferSize = 1024;

// Kept: the two slashes in front belong to the default, so an installation without the key has no working address.
constexpr const char* kDefaultUpdateUrl = "//http://update.korlan.invalid/Updates/Korlan/161";

// The installation folders, in the order they are read: catalogue code (and last component of the default), INI key.
struct InstallationFolder {
    const char* code;
    const char* key;
    std::string SuiteSettings::*folder;
};
constexpr InstallationFolder kFolders[] = {
    {"JOB", "JobDir", &SuiteSettings::JobDir},     {"LIB", "LibDir", &SuiteSettings::LibDir},
    {"SYS", "SysDir", &SuiteSettings::SysDir},     {"KDS_CML", "KDScml", &SuiteSettings::KDScml},
    {"KDS_UDN", "KDSudn", &SuiteSettings::KDSudn}, {"KDS_MOD", "KDSmod", &SuiteSettings::KDSmod},
    {"KDS_SBK", "KDSsbk", &SuiteSettings::KDSsbk}, {"KDS_WRK", "KDSwrk", &SuiteSettings::KDSwrk},
};

} // namespace

std::string ReadIniString(const std::string& section, const std::string& key, const std::string& fallback) {
    return ReadProfileValue(section, key, kIniBufferSize, Settings.IniFilePath).value_or(fallback);
}

void WriteIniString(const std::string& section, const std::string& key, const std::string& value,
                    std::int32_t& failed) {
    const std::int32_t code = WriteProfileValue(section, key, value, Settings.IniFilePath);
    failed = code == 0 ? 0 : 1;
    if (failed == 0) return;
    ShowMsgBox(GetLocalText("Can't create/write to file: ", "99335") + Settings.IniFilePath + "\n" +
                   DescribeSystemError(code),
               kBoxExclamation, Settings.SysName);
}

void RegistryWrite(const std::string& application, const std::string& section, const std::string& key,
                   const std::string& value) {
    try {
        SaveSetting(application, section, key, value);
    } catch (const RuntimeError& error) { // the reminder is not worth a failed run
        LogTrapped("RegistryWrite", error);
    }
}

void ReadSuiteSettings() {
    Settings.SysName = ReadIniString("Tessary", "SysName", "Korlan");
    for (const InstallationFolder& entry : kFolders)
        Settings.*entry.folder = ReadIniString("Tessary", entry.key, "C:\\" + Settings.SysName + "\\" + entry.code);
    Settings.UpdateUrl = Trim(ReadIniString("WEB", "UPDATEONLINE", kDefaultUpdateUrl));
}

std::string GetSysName() {
    return Settings.SysName;
}

void SetTempFolder() {
    Settings.TempFolder = GetAppFolder() + "\\Temp";
    try {
        TryFolder(Settings.TempFolder);
    } catch (const RuntimeError& error) { // a missing folder is not reported here
        LogTrapped("SetTempFolder", error);
    }
}

std::string InTempFolder(const std::string& name) {
    return Settings.TempFolder + "\\" + name;
}

void GetKorlanFilePath(const std::string& cataloguePath, std::string& installationPath) {
    const std::string code = UpperCase(Piece(cataloguePath, "\\", 1));
    if (!StaysInFolder(cataloguePath)) throw RuntimeError(kErrPathNotFound, "Path not found: " + cataloguePath);
    for (const InstallationFolder& entry : kFolders) {
        if (code != entry.code) continue;
        const std::size_t rest = cataloguePath.find('\\', cataloguePath.find('\\') + 1); // behind the code
        installationPath = Settings.*entry.folder;
        if (rest != std::string::npos) installationPath += UpperCase(cataloguePath.substr(rest));
        return;
    }
    if (!cataloguePath.starts_with('\\')) // what stands before would name a neighbour of the program folder
        throw RuntimeError(kErrPathNotFound, "Path not found: " + cataloguePath);
    installationPath = GetAppFolder() + cataloguePath;
}

} // namespace korlan
