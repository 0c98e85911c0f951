#include "platform/Log.h"

#include "platform/linux/UserFolder.h"

namespace korlan {

std::string StateFolder() {
    return UserFolder("XDG_STATE_HOME", "/.local/state");
}

} // namespace korlan
