#include "catalogue/FileKinds.h"

#include "app/base/TextHelpers.h"
#include "app/base/frmUpdate.h"
#include "catalogue/FileTables.h"

namespace korlan {

std::string FileExtension(const std::string& fileName) {
    return UpperCase(Mid(fileName, InStr(fileName, ".") + 1));
}

bool CheckSPCFile(std::int32_t index) {
    return FileExtension(Tables.FileArray[index].FileName) == "SPC";
}

bool CheckLibPartFile(std::int32_t index) {
    return FileExtension(Tables.FileArray[index].FileName) == "PART";
}

bool CheckOtherLibFile(std::int32_t index) {
    const std::string extension = FileExtension(Tables.FileArray[index].FileName);
    Flags.LibElementKind = extension == "SYMBOL"     ? kSymbolKind
                           : extension == "PACKAGE"  ? kPackageKind
                           : extension == "PADSTACK" ? kPadstackKind
                                                     : 0;
    return Flags.LibElementKind != 0;
}

} // namespace korlan
