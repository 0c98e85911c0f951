#include "platform/SuiteBinding.h"

#include "platform/Process.h"
#include "platform/RuntimeError.h"
#include "platform/win32/Wide.h"
#include "sdk/KlwUpdt.h"

namespace korlan {

void* SuiteProcedure(const char* name) {
    static HMODULE library = nullptr; // stays loaded: the handles it gives out are the suite's
    if (!library) {                   // its own helpers lie beside it
        const std::string program = ProgramPath();
        const std::string path = program.substr(0, program.find_last_of('\\') + 1) + KLN_SUITE_LIBRARY;
        library = LoadLibraryExW(Wide(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    }
    if (!library) throw RuntimeError(kErrFileNotFound, std::string("File not found: ") + KLN_SUITE_LIBRARY);
    void* address = reinterpret_cast<void*>(GetProcAddress(library, name));
    if (!address) throw RuntimeError(kErrNoLibraryEntry, std::string("No procedure ") + name + " in the suite library");
    return address;
}

std::string PathForSuite(const std::string& path) {
    const auto bytes = CodePagePath(path);
    if (!bytes) throw RuntimeError(kErrFileNotFound, "File not found: " + path);
    return *bytes;
}

} // namespace korlan
