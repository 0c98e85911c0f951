// A service pack's catalogue, Jet or SQLite: its rows read, compared with the installation and listed, its folders
// made.
#include "catalogue/Catalogue.h"
#include "catalogue/Comparison.h"
#include "catalogue/FileList.h"
#include "tests/fuzz/Target.h"
#include "transfer/UpdateRun.h"

using namespace korlan;
using namespace korlan::test;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    StartFresh();
    frmUpdate.lvwFilesList.SetVisible(false);
    Drive().Write("KORLAN/Temp/SP1.mdb", Bytes(data, size));
    Tables.FileArraySP.Append({});
    MayBeRefused([] { GetFilesInsideSP("C:\\KORLAN\\Temp\\SP1.mdb", 1); });
    Tables.CatalogueDatabase.reset();
    std::size_t bytes = 0;
    for (const FileRecord& record : Tables.FileArray) bytes += record.FileName.size() + record.FileZipName.size();
    Require(bytes <= 8 * size + (1 << 20), "rows no larger than their file");
    CompareUpdatableFiles();
    MayBeRefused(DisplayFilesInformationsFromWeb);
    for (const FileRecord& record : Tables.FileArray) {
        if (record.LocalFolder->empty()) continue;
        Require(IsInside(record.LocalFile()) && IsInside(record.TempZipFile()), "inside: " + record.LocalFile());
    }
    CreateNewFolders();
    Require(Drive().Names() == std::vector<std::string>{"KORLAN"}, "folders inside");
    if (Tables.NewFolderArray.UpperBound() > 0) std::filesystem::remove_all(Drive().HostPathOf("KORLAN"));
    return 0;
}
