// Folders of the user by the rules of XDG: the variable where it holds a full path, else that folder of the home.
#pragma once

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace korlan {

inline std::string UserFolder(const char* variable, const char* belowHome) {
    if (const char* configured = std::getenv(variable); configured && configured[0] == '/') return configured;
    if (const char* home = std::getenv("HOME"); home && home[0] == '/') return std::string(home) + belowHome;
    const passwd* user = getpwuid(getuid());
    return user ? std::string(user->pw_dir) + belowHome : std::string();
}

} // namespace korlan
