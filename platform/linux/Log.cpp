#include "platform/Log.h"

#include "platform/linux/UserFolder.h"

#include <filesystem>

namespace korlan {

std::string LogFolder() {
    std::string folder = UserFolder("XDG_STATE_HOME", "/.local/state");
    if (folder.empty()) return {};
    folder += "/korlan";
    std::error_code lost;
    std::filesystem::create_directories(folder, lost);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all, lost);
    return folder;
}

} // namespace korlan
