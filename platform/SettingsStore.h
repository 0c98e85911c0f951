// The per-user settings store, grouped by application and section, and plain reads of the per-user registry.
#pragma once

#include <string>

namespace korlan {

// Stores one value; crash-safe. A store that cannot be written raises 5.
void SaveSetting(const std::string& application, const std::string& section, const std::string& key,
                 const std::string& value);

// The stored value, or `fallback`.
std::string GetSetting(const std::string& application, const std::string& section, const std::string& key,
                       const std::string& fallback);

enum class RegistryRoot { CurrentUser, LocalMachine };

// The value's text, or "Not Found" when the key or value does not exist.
std::string ReadRegistryText(RegistryRoot root, const std::string& key, const std::string& value);

} // namespace korlan
