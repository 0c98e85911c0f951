#include "publisher/CatalogueFile.h"

#include "catalogue/DateText.h"
#include "platform/Database.h"
#include "platform/FileSystem.h"
#include "platform/jet/JetWriter.h"
#include "platform/linux/HostPath.h"

namespace korlan::publisher {

CatalogueRows ReadCatalogue(const std::filesystem::path& file) {
    const auto database = OpenDatabase(WindowsPath(std::filesystem::absolute(file).string()), false, true, "");
    const auto rows = database->OpenRecordset("SELECT * FROM Files");
    CatalogueRows read;
    for (; !rows->Eof(); rows->MoveNext())
        read.push_back({rows->Text("FileName"), rows->Text("FilePath"), rows->Text("FileSize"), rows->Text("Filedate"),
                        rows->Text("FileZipName")});
    return read;
}

std::string BytesOfCatalogue(const CatalogueRows& rows) {
    jet::TextTable table{"Files", {"FileName", "FilePath", "FileSize", "Filedate", "FileZipName"}, {}};
    for (const CatalogueRow& row : rows)
        table.rows.push_back({row.FileName, row.FilePath, row.FileSize, row.Filedate, row.FileZipName});
    return jet::Jet3FileOf(table);
}

std::string DateTextOf(std::int64_t modified) {
    CalendarTime time{};
    TicksToCalendar(TicksOf(modified), time);
    return DateText(time);
}

std::int64_t EvenSecond(std::int64_t modified) {
    return modified - (modified & 1);
}

} // namespace korlan::publisher
