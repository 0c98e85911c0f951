// A part library brought into the part index, through the sample suite's own reader.
#include "library/PartDatabase.h"
#include "library/SearchSequence.h"
#include "tests/fuzz/Target.h"
#include "tests/support/SqliteFile.h"

using namespace korlan;
using namespace korlan::test;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    StartFresh();
    if (!Drive().Exists("KORLAN/libklwupdt.so")) {
        std::filesystem::create_symlink(KLN_SUITE_SO, Drive().HostPathOf("KORLAN/libklwupdt.so"));
        RunSql(Drive().HostPathOf("KORLAN/LIB/Parts.abd"),
               "PRAGMA synchronous = OFF; CREATE TABLE PartFields (Name,Library,FullName,ExtIndexCode,KdsSimRef,"
               "Manufacturer,Type,Technology,PackageType,MMSimCode,KdsElementCode,Symbol,Package,KdsModel,SSQON,"
               "SSQNum)");
        DB_CreateDataBase();
    }
    Drive().Write("KORLAN/LIB/A.PART", Bytes(data, size));
    LoadSearchSequences();
    UpdateLibDBDeleteFile("A.PART");
    UpdateLibDBAddFileElements("A.PART");
    return 0;
}
