#include "platform/SuiteBinding.h"

#include "platform/Process.h"
#include "platform/RuntimeError.h"
#include "platform/linux/HostPath.h"
#include "sdk/KlwUpdt.h"

#include <dlfcn.h>

namespace korlan {

void* SuiteProcedure(const char* name) {
    static void* library = nullptr; // stays loaded: the handles it gives out are the suite's
    if (!library) {
        const std::string program = ProgramPath();
        const std::string path = HostPath(program.substr(0, program.find_last_of('\\') + 1) + KLN_SUITE_LIBRARY);
        library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    if (!library) throw RuntimeError(kErrFileNotFound, std::string("File not found: ") + dlerror());
    void* address = dlsym(library, name);
    if (!address) throw RuntimeError(kErrNoLibraryEntry, std::string("No procedure ") + name + " in the suite library");
    return address;
}

std::string PathForSuite(const std::string& path) {
    return HostPath(path);
}

} // namespace korlan
