#include "platform/SuiteLibrary.h"

#include "platform/RuntimeError.h"
#include "platform/SuiteBinding.h"
#include "platform/TextEncoding.h"
#include "sdk/KlwUpdt.h"

#include <vector>

namespace korlan {

namespace {

// A library that does not tell its version is of the first one; one of another version counts as missing.
void RequireVersion() {
    static bool known = false;
    if (known) return;
    std::int32_t version = 1;
    try {
        version = reinterpret_cast<decltype(::E_GetVersion)*>(SuiteProcedure("E_GetVersion"))();
    } catch (const RuntimeError& error) {
        if (error.Number() != kErrNoLibraryEntry) throw;
    }
    known = version == KLN_SUITE_VERSION;
    if (!known) throw RuntimeError(kErrFileNotFound, "The suite library is of version " + std::to_string(version));
}

// A procedure of the suite's library. Each caller keeps its own in a static; a failed binding is tried again.
template <typename Procedure>
Procedure* Bind(const char* name) {
    RequireVersion();
    return reinterpret_cast<Procedure*>(SuiteProcedure(name));
}

std::string LibraryText(const char* text) {
    return text ? TextFromCodePage(text) : std::string();
}

void RequireSuccess(bool succeeded, const char* procedure) {
    if (!succeeded) throw RuntimeError(kErrDeviceIo, std::string(procedure) + " failed");
}

} // namespace

void E_SetString(const std::string& name, const std::string& value) {
    static auto* const call = Bind<decltype(::E_SetString)>("E_SetString");
    call(name.c_str(), value.c_str());
}

std::string E_GetString(const std::string& name) {
    static auto* const call = Bind<decltype(::E_GetString)>("E_GetString");
    const char* value = call(name.c_str());
    return value ? TextFromBytes(value) : std::string();
}

void DB_CreateDataBase() {
    static auto* const call = Bind<decltype(::DB_CreateDataBase)>("DB_CreateDataBase");
    RequireSuccess(call() != 0, "DB_CreateDataBase");
}

bool CanGetPartInfo() {
    try {
        return Bind<decltype(::E_GetPartInfo)>("E_GetPartInfo") != nullptr;
    } catch (const RuntimeError&) {
        return false;
    }
}

void E_GetPartInfo(const std::string& libraryPath, std::span<PartInformation> records) {
    static auto* const call = Bind<decltype(::E_GetPartInfo)>("E_GetPartInfo");
    std::vector<SuitePartInformation> filled(records.size());
    const auto room = static_cast<std::int32_t>(records.size());
    const std::int32_t count = call(PathForSuite(libraryPath).c_str(), room, filled.data());
    RequireSuccess(count >= 0 && count <= room, "E_GetPartInfo");
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
        records[i] = {LibraryText(filled[i].name), LibraryText(filled[i].second), LibraryText(filled[i].descriptor)};
}

LibraryHandle E_OpenLibrary(const std::string& path, const std::string& libraryType, std::int32_t mode) {
    static auto* const call = Bind<decltype(::E_OpenLibrary)>("E_OpenLibrary");
    try {
        return call(PathForSuite(path).c_str(), libraryType.c_str(), mode);
    } catch (const RuntimeError&) { // a path that leads nowhere
        return 0;
    }
}

bool E_OpenLibToRead(LibraryHandle library, const std::string& elementName) {
    static auto* const call = Bind<decltype(::E_OpenLibToRead)>("E_OpenLibToRead");
    return call(library, BytesFromText(elementName).c_str()) != 0;
}

bool E_OpenLibToWrite(LibraryHandle library, const std::string& elementName) {
    static auto* const call = Bind<decltype(::E_OpenLibToWrite)>("E_OpenLibToWrite");
    return call(library, BytesFromText(elementName).c_str()) != 0;
}

bool E_CloseLibWrite(LibraryHandle library) {
    static auto* const call = Bind<decltype(::E_CloseLibWrite)>("E_CloseLibWrite");
    return call(library) != 0;
}

std::string E_GetLibDirName() {
    static auto* const call = Bind<decltype(::E_GetLibDirName)>("E_GetLibDirName");
    return LibraryText(call());
}

void E_CloseLibrary(LibraryHandle library) {
    static auto* const call = Bind<decltype(::E_CloseLibrary)>("E_CloseLibrary");
    call(library);
}

ElementHandle D_Device() {
    static auto* const call = Bind<decltype(::D_Device)>("D_Device");
    return call();
}

MapHandle DB_DeviceMap() {
    static auto* const call = Bind<decltype(::DB_DeviceMap)>("DB_DeviceMap");
    return call();
}

bool D_LoadDevice(ElementHandle part, LibraryHandle library) {
    static auto* const call = Bind<decltype(::D_LoadDevice)>("D_LoadDevice");
    return call(part, library) != 0;
}

bool D_SaveDevice(ElementHandle part, LibraryHandle library) {
    static auto* const call = Bind<decltype(::D_SaveDevice)>("D_SaveDevice");
    return call(part, library) != 0;
}

void D_ReadDevice(ElementHandle part, DeviceRecord& record) {
    static auto* const call = Bind<decltype(::D_ReadDevice)>("D_ReadDevice");
    SuiteDevice filled{};
    RequireSuccess(call(part, &filled) != 0, "D_ReadDevice");
    record = {LibraryText(filled.name), LibraryText(filled.descriptor)};
}

ElementHandle S_Symbol() {
    static auto* const call = Bind<decltype(::S_Symbol)>("S_Symbol");
    return call();
}

MapHandle DB_SymbMap() {
    static auto* const call = Bind<decltype(::DB_SymbMap)>("DB_SymbMap");
    return call();
}

bool S_LoadSymbol(ElementHandle symbol, LibraryHandle library) {
    static auto* const call = Bind<decltype(::S_LoadSymbol)>("S_LoadSymbol");
    return call(symbol, library) != 0;
}

bool S_SaveSymbol(ElementHandle symbol, LibraryHandle library) {
    static auto* const call = Bind<decltype(::S_SaveSymbol)>("S_SaveSymbol");
    return call(symbol, library) != 0;
}

bool OM_Delete(MapHandle map, const std::string& name) {
    static auto* const call = Bind<decltype(::OM_Delete)>("OM_Delete");
    return call(map, BytesFromText(name).c_str()) != 0;
}

bool O_Rename(ElementHandle element, const std::string& name) {
    static auto* const call = Bind<decltype(::O_Rename)>("O_Rename");
    return call(element, BytesFromText(name).c_str()) != 0;
}

ElementHandle OM_GetFirst(MapHandle map) {
    static auto* const call = Bind<decltype(::OM_GetFirst)>("OM_GetFirst");
    return call(map);
}

ElementHandle OM_SearchName(MapHandle map, const std::string& name) {
    static auto* const call = Bind<decltype(::OM_SearchName)>("OM_SearchName");
    return call(map, BytesFromText(name).c_str());
}

ElementHandle OM_SearchNameMask(MapHandle map, const std::string& mask) {
    static auto* const call = Bind<decltype(::OM_SearchNameMask)>("OM_SearchNameMask");
    return call(map, BytesFromText(mask).c_str());
}

} // namespace korlan
