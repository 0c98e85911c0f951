// The user's settings lie in the folder "korlan" of the XDG configuration folder: settings/<application>.ini holds the
// settings, registry.ini what other programs would find in the registry (section: root and key, key: value name).
// Names and values are stored in plain ASCII: any other byte, "%" and what the profile rules would not give back stand
// as "%" and two hexadecimal digits.
#include "platform/SettingsStore.h"

#include "platform/AsciiText.h"
#include "platform/RuntimeError.h"
#include "platform/linux/ProfileFile.h"
#include "platform/linux/UserFolder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <optional>

namespace korlan {
namespace {

constexpr std::size_t kAnyLength = static_cast<std::size_t>(-1);

std::string StoreFolder() {
    return UserFolder("XDG_CONFIG_HOME", "/.config") + "/korlan";
}

// Makes the folder with its parents, all for the user alone. What cannot be made shows when the file is written.
void MakeFolders(const std::string& folder) {
    for (std::size_t slash = folder.find('/', 1); slash != std::string::npos; slash = folder.find('/', slash + 1))
        mkdir(folder.substr(0, slash).c_str(), 0700);
    mkdir(folder.c_str(), 0700);
}

// --- Texts -----------------------------------------------------------------------------------------------------------

void AppendEscaped(std::string& text, char character) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(character);
    text += '%';
    text += kDigits[byte / 16];
    text += kDigits[byte % 16];
}

bool IsPlain(char character) {
    return character >= ' ' && character <= '~' && character != '%';
}

// The value as it can stand behind "=". Blanks and quotes at its ends would be lost.
std::string EscapedValue(std::string_view value) {
    std::string escaped;
    for (std::size_t at = 0; at < value.size(); ++at) {
        const bool outer = at == 0 || at + 1 == value.size();
        if (IsPlain(value[at]) && !(outer && std::string_view(" \"'").find(value[at]) != std::string_view::npos))
            escaped += value[at];
        else
            AppendEscaped(escaped, value[at]);
    }
    return escaped;
}

// The name of a section or key: also without what ends it or makes another line of it.
std::string EscapedName(std::string_view name) {
    std::string escaped;
    for (std::size_t at = 0; at < name.size(); ++at) {
        const bool outer = at == 0 || at + 1 == name.size();
        if (IsPlain(name[at]) && std::string_view("[]=;").find(name[at]) == std::string_view::npos &&
            !(outer && name[at] == ' '))
            escaped += name[at];
        else
            AppendEscaped(escaped, name[at]);
    }
    return escaped;
}

// The name of a file: letters, digits, "-" and "_", the same for every case of its letters.
std::string EscapedFileName(std::string_view name) {
    std::string escaped;
    for (const char character : LowerAsciiText(name)) {
        const bool plain = (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9') ||
                           character == '-' || character == '_';
        if (plain)
            escaped += character;
        else
            AppendEscaped(escaped, character);
    }
    return escaped;
}

int HexDigit(char character) {
    const std::size_t digit = std::string_view("0123456789ABCDEFabcdef").find(character);
    return digit == std::string_view::npos ? -1 : static_cast<int>(digit < 16 ? digit : digit - 6);
}

std::string Unescaped(std::string_view text) {
    std::string value;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool escape =
            text[at] == '%' && text.size() - at > 2 && HexDigit(text[at + 1]) >= 0 && HexDigit(text[at + 2]) >= 0;
        value += escape ? static_cast<char>(HexDigit(text[at + 1]) * 16 + HexDigit(text[at + 2])) : text[at];
        if (escape) at += 2;
    }
    return value;
}

std::optional<std::string> ReadStored(const std::string& file, const std::string& section, const std::string& key) {
    const auto stored = ReadProfileFile(EscapedName(section), EscapedName(key), kAnyLength, file);
    return stored ? std::optional(Unescaped(*stored)) : std::nullopt;
}

std::string SettingsFile(const std::string& application) {
    return StoreFolder() + "/settings/" + EscapedFileName(application) + ".ini";
}

} // namespace

void SaveSetting(const std::string& application, const std::string& section, const std::string& key,
                 const std::string& value) {
    const auto refuse = [] { throw RuntimeError(kErrInvalidCall); };
    if (application.empty() || section.empty()) refuse();
    MakeFolders(StoreFolder() + "/settings");
    if (WriteProfileFile(EscapedName(section), EscapedName(key), EscapedValue(value), SettingsFile(application)) != 0)
        refuse();
}

std::string GetSetting(const std::string& application, const std::string& section, const std::string& key,
                       const std::string& fallback) {
    if (application.empty()) return fallback;
    return ReadStored(SettingsFile(application), section, key).value_or(fallback);
}

std::string ReadRegistryText(RegistryRoot root, const std::string& key, const std::string& value) {
    const std::string path = key.substr(0, key.find_last_not_of('\\') + 1);
    const std::string section =
        (root == RegistryRoot::CurrentUser ? "HKEY_CURRENT_USER\\" : "HKEY_LOCAL_MACHINE\\") + path;
    return ReadStored(StoreFolder() + "/registry.ini", section, value).value_or("Not Found");
}

} // namespace korlan
