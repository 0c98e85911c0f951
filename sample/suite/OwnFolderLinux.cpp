#include "sample/suite/OwnFolder.h"

#include <dlfcn.h>

std::filesystem::path suite::OwnFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&OwnFolder), &info) == 0 || !info.dli_fname) return {};
    return std::filesystem::path(info.dli_fname).parent_path();
}
