// The settings are the per-user store of the suite's runtime: HKEY_CURRENT_USER\Software\VB and VBA Program Settings.
#include "platform/SettingsStore.h"

#include "platform/RuntimeError.h"
#include "platform/win32/Wide.h"

namespace korlan {
namespace {

constexpr const char* kNotFound = "Not Found";

std::wstring SettingsKey(const std::string& application, const std::string& section) {
    return Wide("Software\\VB and VBA Program Settings\\" + application + "\\" + section);
}

} // namespace

void SaveSetting(const std::string& application, const std::string& section, const std::string& key,
                 const std::string& value) {
    HKEY opened = nullptr;
    const std::wstring path = SettingsKey(application, section), text = Wide(value);
    const bool well = !application.empty() && !section.empty() &&
                      RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &opened,
                                      nullptr) == ERROR_SUCCESS &&
                      RegSetValueExW(opened, Wide(key).c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                                     static_cast<DWORD>(text.size() + 1) * sizeof(wchar_t)) == ERROR_SUCCESS;
    if (opened) RegCloseKey(opened);
    if (!well) throw RuntimeError(kErrInvalidCall);
}

std::string GetSetting(const std::string& application, const std::string& section, const std::string& key,
                       const std::string& fallback) {
    if (application.empty()) return fallback;
    const std::wstring path = SettingsKey(application, section), name = Wide(key);
    DWORD bytes = 0;
    const auto read = [&](wchar_t* text) {
        return RegGetValueW(HKEY_CURRENT_USER, path.c_str(), name.c_str(), RRF_RT_REG_SZ, nullptr, text, &bytes);
    };
    if (read(nullptr) != ERROR_SUCCESS) return fallback;
    std::wstring text(bytes / sizeof(wchar_t), 0);
    if (read(text.data()) != ERROR_SUCCESS) return fallback; // another program has changed it meanwhile
    return Narrow(std::wstring_view(text).substr(0, bytes / sizeof(wchar_t) - 1));
}

std::string ReadRegistryText(RegistryRoot root, const std::string& key, const std::string& value) {
    HKEY opened = nullptr;
    const HKEY top = root == RegistryRoot::CurrentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
    const std::string path = CodePageFromWide(Wide(key.substr(0, key.find_last_not_of('\\') + 1)));
    if (RegOpenKeyExA(top, path.c_str(), 0, KEY_QUERY_VALUE, &opened) != ERROR_SUCCESS) return kNotFound;
    const std::string name = CodePageFromWide(Wide(value));
    DWORD type = 0, bytes = 0;
    RegQueryValueExA(opened, name.c_str(), nullptr, &type, nullptr, &bytes);
    std::string text(bytes, '\0');
    const LSTATUS status =
        RegQueryValueExA(opened, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &bytes);
    RegCloseKey(opened);
    if (status != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) return kNotFound;
    return Narrow(WideFromCodePage(text.substr(0, text.find('\0'))));
}

} // namespace korlan
