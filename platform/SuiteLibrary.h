// The suite's own library, which this program only calls. Procedures are bound by name at their first use; a missing
// library, or one of another version, raises 53, a missing procedure 453, at the call that needs it. Paths are
// Windows-form. An element is a part, a symbol, a package or a padstack; the last three are handled as symbols. Texts
// that the suite keeps in its libraries are 8-bit; the character of code 128 is "€" here. Every text that comes back
// has all its characters; who reads one into a buffer of fixed size cuts it himself.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace korlan {

// ---- settings and start ----
void E_SetString(const std::string& name, const std::string& value);
std::string E_GetString(const std::string& name); // "" when the library has none
void DB_CreateDataBase();                         // the suite's design database, empty; raises 57 when it cannot

// ---- parts of a library file ----
struct PartInformation {
    std::string name;
    std::string second; // not used by this program
    std::string descriptor;
};
bool CanGetPartInfo(); // whether the library is there and has the next procedure
// Fills one record a part in library order, at most as many as there are; records beyond the last part stay as they
// are. A file that the suite cannot read raises 57.
void E_GetPartInfo(const std::string& libraryPath, std::span<PartInformation> records);

// ---- open libraries ----
using LibraryHandle = std::int32_t; // greater than 0 when open
inline constexpr const char* kPartLibraryType = "KorlanDLL20";
inline constexpr const char* kSymbolLibraryType = "KorlanSLL20"; // symbol, package and padstack libraries

// `mode` is 0. A handle, or 0 or less on failure.
LibraryHandle E_OpenLibrary(const std::string& path, const std::string& libraryType, std::int32_t mode);
// Whether the element can be read; prepares reading it.
bool E_OpenLibToRead(LibraryHandle library, const std::string& elementName);
// Prepares writing the element: a new one, or in place of the one of that name. False on failure.
bool E_OpenLibToWrite(LibraryHandle library, const std::string& elementName);
bool E_CloseLibWrite(LibraryHandle library); // ends a write and commits it; false when nothing was written
// The next element name of the library opened last, from the first on; "" after the last.
std::string E_GetLibDirName();
void E_CloseLibrary(LibraryHandle library);

// ---- elements in memory ----
using ElementHandle = std::int32_t; // greater than 0; 0 = none
using MapHandle = std::int32_t;     // the map of the loaded elements of one sort

ElementHandle D_Device(); // a new part without content, in the map under an empty name; 0 on failure
MapHandle DB_DeviceMap(); // the loaded parts
// From the element that E_OpenLibToRead prepared, name included; into the one that E_OpenLibToWrite prepared.
bool D_LoadDevice(ElementHandle part, LibraryHandle library);
bool D_SaveDevice(ElementHandle part, LibraryHandle library);

struct DeviceRecord { // the second and the fourth member of the suite's own record; the others are not used
    std::string name;
    std::string descriptor;
};
void D_ReadDevice(ElementHandle part, DeviceRecord& record); // a handle of no part raises 57

ElementHandle S_Symbol(); // the same for symbols, packages and padstacks
MapHandle DB_SymbMap();
bool S_LoadSymbol(ElementHandle symbol, LibraryHandle library);
bool S_SaveSymbol(ElementHandle symbol, LibraryHandle library);

// ---- maps; names match without regard to case ----
bool OM_Delete(MapHandle map, const std::string& name);        // false when there is none of that name
bool O_Rename(ElementHandle element, const std::string& name); // false when another one in its map has the name
ElementHandle OM_GetFirst(MapHandle map);
ElementHandle OM_SearchName(MapHandle map, const std::string& name);
ElementHandle OM_SearchNameMask(MapHandle map, const std::string& mask); // the first that matches; "*" and "?"

} // namespace korlan
