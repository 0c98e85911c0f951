// The installation with the sample suite library in it: base of tests of what the program does through that library.
#pragma once

#include "platform/SuiteLibrary.h"
#include "sample/suite/LibraryFile.h"
#include "tests/support/ProgramTest.h"
#include "tests/support/SuitePlace.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

namespace korlan::test {

inline constexpr const char* kIni = "KORLAN/SYS/TESSARY.INI";
inline constexpr const char* kIndex = "KORLAN/LIB/Parts.abd";

struct Installation : ProgramTest {
    Installation() {
        UseSuite(drive, KLN_SUITE_SO);
        frmUpdate.form.SetCaption("Korlan Live Update");
        DB_CreateDataBase();
    }

    // "|" in a descriptor stands for the byte 128.
    void WriteLibrary(const std::string& path, suite::Kind kind, std::vector<suite::Element> elements) const {
        for (suite::Element& element : elements)
            std::replace(element.descriptor.begin(), element.descriptor.end(), '|', '\x80');
        drive.Write(path, suite::LibraryBytes({kind, std::move(elements)}));
    }

    // Runs statements on the index and gives the rows, columns joined by "|", NULL as "-". Makes the file.
    std::vector<std::string> Index(const std::string& sql) const {
        sqlite3* connection = nullptr;
        std::vector<std::string> rows;
        const auto addRow = [](void* target, int count, char** values, char** /*names*/) {
            std::string& row = static_cast<std::vector<std::string>*>(target)->emplace_back();
            for (int i = 0; i < count; ++i) row.append(i > 0 ? "|" : "").append(values[i] ? values[i] : "-");
            return 0;
        };
        sqlite3_open(drive.HostPathOf(kIndex).c_str(), &connection);
        EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), addRow, &rows, nullptr), SQLITE_OK) << sql;
        sqlite3_close(connection);
        return rows;
    }

    void MakeIndex() const {
        Index("CREATE TABLE PartFields (Name,Library,FullName,ExtIndexCode,KdsSimRef,Manufacturer,Type,Technology,"
              "PackageType,MMSimCode,KdsElementCode,Symbol,Package,KdsModel,SSQON,SSQNum)");
    }
};

} // namespace korlan::test
