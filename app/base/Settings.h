// The installation's settings: one copy for the process, read from the suite's INI file and the per-user store.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// Folders are Windows-form, as the INI file has them (no trailing backslash added) unless said otherwise.
struct SuiteSettings {
    std::string SysPath;     // folder of the suite INI file, with a trailing backslash once start-up has normalised it
    std::string CommandFile; // existing file named on the command line, or empty; read by nothing here
    std::string IniFilePath; // TESSARY.INI
    std::string SysName = "Korlan";
    std::string JobDir, LibDir, SysDir, KDScml, KDSudn, KDSmod, KDSsbk, KDSwrk;
    std::string UpdateUrl; // base address of the update server
    std::string SuiteVersion = "?";
    std::string TempFolder; // program folder + "\Temp"
};

inline SuiteSettings Settings;

// The application and section under which the per-user settings lie.
inline constexpr const char* kSettingsApplication = "Korlan";
inline constexpr const char* kSettingsSection = "Setup";

// A value of the suite INI file, at most 1023 bytes; `fallback` when file, section or key is missing.
std::string ReadIniString(const std::string& section, const std::string& key, const std::string& fallback);

// Writes one value. A failure shows a warning and sets failed = 1; success sets it 0.
void WriteIniString(const std::string& section, const std::string& key, const std::string& value, std::int32_t& failed);

// Stores a per-user value; a store that cannot be written is passed over.
void RegistryWrite(const std::string& application, const std::string& section, const std::string& key,
                   const std::string& value);

void ReadSuiteSettings();

std::string GetSysName();
void SetTempFolder(); // reports nothing when the folder is missing
std::string InTempFolder(const std::string& name);

// Maps a catalogue designation ("\LIB\SUB") to an installation folder: a folder code gives the folder configured for
// it, anything else the program folder with the designation behind it. One without a second component raises 9, one
// that leads out of its folder 76.
void GetKorlanFilePath(const std::string& cataloguePath, std::string& installationPath);

} // namespace korlan
