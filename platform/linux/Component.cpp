// Type libraries are a service of Windows: here every call answers that it failed, and nothing happens.
#include "platform/Component.h"

#include "platform/RuntimeError.h"

namespace korlan {

bool LoadAndRegisterTypeLib(const std::string&) {
    return false;
}

TypeLibraryInfo DescribeTypeLib(const std::string&) {
    throw RuntimeError(kErrFileNotFound);
}

bool UnregisterTypeLib(const TypeLibraryInfo&) {
    return false;
}

} // namespace korlan
