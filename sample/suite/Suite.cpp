// The suite's procedures over the sample's library files. Errors never leave a procedure: they are its result.
#include "platform/NamePattern.h"
#include "sample/suite/LibraryFile.h"
#include "sample/suite/OwnFolder.h"
#include "sdk/KlwUpdt.h"

#include <cstddef>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace {

using suite::Element;
using suite::LibraryFile;

struct OpenLibrary {
    std::string path;
    LibraryFile file;
    std::string toRead, toWrite; // the elements prepared
    std::optional<Element> written;
};

struct LoadedElement {
    std::int32_t map;
    Element element;
};

constexpr std::int32_t kDeviceMap = 1, kSymbolMap = 2;

// All that the library remembers. Handles count up and are never used twice.
struct Memory {
    std::map<std::string, std::string> strings;
    std::map<std::int32_t, OpenLibrary> libraries;
    std::map<std::int32_t, LoadedElement> loaded; // in the order they were made
    std::int32_t lastHandle = 0;
    std::vector<std::string> directory; // names of the library opened last
    std::size_t nextName = 0;
};
Memory memory;

// Runs the body of a procedure; a file that is refused, or memory that is not there, is `failure`.
std::int32_t Answer(std::int32_t failure, const std::function<std::int32_t()>& body) {
    try {
        return body();
    } catch (const std::exception&) {
        return failure;
    }
}

template <typename Value>
Value* FindHandle(std::map<std::int32_t, Value>& values, std::int32_t handle) {
    const auto found = values.find(handle);
    return found == values.end() ? nullptr : &found->second;
}

LoadedElement* FindLoaded(std::int32_t map, std::int32_t handle) {
    LoadedElement* loaded = FindHandle(memory.loaded, handle);
    return loaded && loaded->map == map ? loaded : nullptr;
}

std::int32_t NewElement(std::int32_t map) {
    return Answer(0, [map] {
        memory.loaded[++memory.lastHandle] = {map, {}};
        return memory.lastHandle;
    });
}

std::int32_t Load(std::int32_t map, std::int32_t handle, std::int32_t libraryHandle) {
    return Answer(0, [=] {
        LoadedElement* loaded = FindLoaded(map, handle);
        const OpenLibrary* library = FindHandle(memory.libraries, libraryHandle);
        const Element* element = library ? library->file.Find(library->toRead) : nullptr;
        if (!loaded || !element) return 0;
        loaded->element = *element;
        return 1;
    });
}

std::int32_t Save(std::int32_t map, std::int32_t handle, std::int32_t libraryHandle) {
    return Answer(0, [=] {
        const LoadedElement* loaded = FindLoaded(map, handle);
        OpenLibrary* library = FindHandle(memory.libraries, libraryHandle);
        if (!loaded || !library || !suite::SameName(loaded->element.name, library->toWrite)) return 0;
        library->written = loaded->element;
        return 1;
    });
}

// The first element of the map for which `matches` holds, 0 = none.
std::int32_t Search(std::int32_t map, const std::function<bool(const std::string& name)>& matches) {
    for (const auto& [handle, loaded] : memory.loaded)
        if (loaded.map == map && matches(loaded.element.name)) return handle;
    return 0;
}

// First line of IniFile.txt beside this library.
std::string IniFileFromFolder() {
    std::ifstream file(suite::OwnFolder() / "IniFile.txt");
    std::string line;
    std::getline(file, line);
    return line;
}

std::string Upper(std::string name) {
    for (char& c : name) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    return name;
}

} // namespace

int32_t E_GetVersion(void) {
    return KLN_SUITE_VERSION;
}

int32_t E_SetString(const char* name, const char* value) {
    return Answer(0, [=] {
        memory.strings[name] = value;
        return 1;
    });
}

const char* E_GetString(const char* name) {
    static std::string answer;
    const auto found = memory.strings.find(name);
    answer = found != memory.strings.end()    ? found->second
             : std::string(name) == "IniFile" ? IniFileFromFolder()
                                              : std::string();
    return answer.c_str();
}

int32_t DB_CreateDataBase(void) {
    memory.loaded.clear();
    return 1;
}

int32_t E_GetPartInfo(const char* libraryPath, int32_t count, SuitePartInformation* first) {
    static LibraryFile library; // owns the texts handed out
    return Answer(-1, [=] {
        library = suite::LoadLibrary(libraryPath);
        if (library.kind != suite::Kind::Part) return -1;
        std::int32_t filled = 0;
        for (const Element& part : library.elements) {
            if (filled >= count) break;
            first[filled++] = {part.name.c_str(), "", part.descriptor.c_str()};
        }
        return filled;
    });
}

int32_t E_OpenLibrary(const char* path, const char* libraryType, int32_t mode) {
    return Answer(0, [=] {
        const std::string type = libraryType;
        OpenLibrary library{path, suite::LoadLibrary(path), {}, {}, {}};
        const bool holdsParts = library.file.kind == suite::Kind::Part;
        if (mode != 0 || type != (holdsParts ? KLN_PART_LIBRARY : KLN_SYMBOL_LIBRARY)) return 0;
        memory.directory.clear();
        for (const Element& element : library.file.elements) memory.directory.push_back(element.name);
        memory.nextName = 0;
        memory.libraries[++memory.lastHandle] = std::move(library);
        return memory.lastHandle;
    });
}

int32_t E_OpenLibToRead(int32_t library, const char* elementName) {
    OpenLibrary* open = FindHandle(memory.libraries, library);
    if (!open || !open->file.Find(elementName)) return 0;
    open->toRead = elementName;
    return 1;
}

int32_t E_OpenLibToWrite(int32_t library, const char* elementName) {
    OpenLibrary* open = FindHandle(memory.libraries, library);
    if (!open || !*elementName) return 0;
    open->toWrite = elementName;
    open->written.reset();
    return 1;
}

int32_t E_CloseLibWrite(int32_t library) {
    return Answer(0, [=] {
        OpenLibrary* open = FindHandle(memory.libraries, library);
        if (!open || !open->written) return 0;
        LibraryFile changed = open->file;
        changed.Put(*open->written);
        suite::SaveLibrary(changed, open->path);
        open->file = std::move(changed);
        open->written.reset();
        return 1;
    });
}

const char* E_GetLibDirName(void) {
    static std::string answer; // the directory may go before the text may
    answer = memory.nextName < memory.directory.size() ? memory.directory[memory.nextName++] : std::string();
    return answer.c_str();
}

int32_t E_CloseLibrary(int32_t library) {
    return memory.libraries.erase(library) != 0 ? 1 : 0;
}

int32_t D_Device(void) {
    return NewElement(kDeviceMap);
}
int32_t DB_DeviceMap(void) {
    return kDeviceMap;
}
int32_t D_LoadDevice(int32_t device, int32_t library) {
    return Load(kDeviceMap, device, library);
}
int32_t D_SaveDevice(int32_t device, int32_t library) {
    return Save(kDeviceMap, device, library);
}

int32_t D_ReadDevice(int32_t device, SuiteDevice* record) {
    const LoadedElement* loaded = FindLoaded(kDeviceMap, device);
    if (!loaded) return 0;
    static Element answer; // the element itself may be renamed or deleted
    answer = loaded->element;
    *record = {"", answer.name.c_str(), "", answer.descriptor.c_str()};
    return 1;
}

int32_t S_Symbol(void) {
    return NewElement(kSymbolMap);
}
int32_t DB_SymbMap(void) {
    return kSymbolMap;
}
int32_t S_LoadSymbol(int32_t symbol, int32_t library) {
    return Load(kSymbolMap, symbol, library);
}
int32_t S_SaveSymbol(int32_t symbol, int32_t library) {
    return Save(kSymbolMap, symbol, library);
}

int32_t OM_Delete(int32_t map, const char* name) {
    return memory.loaded.erase(OM_SearchName(map, name)) != 0 ? 1 : 0;
}

int32_t O_Rename(int32_t element, const char* name) {
    return Answer(0, [=] {
        LoadedElement* loaded = FindHandle(memory.loaded, element);
        if (!loaded || !*name) return 0;
        const std::int32_t other = OM_SearchName(loaded->map, name);
        if (other != 0 && other != element) return 0;
        loaded->element.name = name;
        return 1;
    });
}

int32_t OM_GetFirst(int32_t map) {
    return Search(map, [](const std::string&) { return true; });
}

int32_t OM_SearchName(int32_t map, const char* name) {
    return Search(map, [name](const std::string& candidate) { return suite::SameName(candidate, name); });
}

int32_t OM_SearchNameMask(int32_t map, const char* mask) {
    return Search(map, [mask](const std::string& candidate) {
        return korlan::MatchesNamePattern(Upper(candidate), Upper(mask));
    });
}
