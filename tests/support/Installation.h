// A small installation on a temporary drive, with the sample suite library, scripted people and a fresh program.
#pragma once

#include "app/base/Settings.h"
#include "app/base/frmUpdate.h"
#include "catalogue/FileTables.h"
#include "platform/SuiteLibrary.h"
#include "sample/suite/LibraryFile.h"
#include "tests/support/ResetProgram.h"
#include "tests/support/ScriptedDesktop.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

namespace korlan::test {

inline constexpr const char* kIni = "Korlan/SYS/TESSARY.INI";
inline constexpr const char* kIndex = "Korlan/LIB/Parts.abd";

struct Installation : testing::Test {
    Installation() {
        ResetProgram();
        ResetDesktop();
        for (const char* folder : {"Korlan/LIB", "Korlan/SYS", "Korlan/Temp"}) drive.MakeFolders(folder);
        std::filesystem::create_symlink(KLN_SUITE_SO, drive.HostPathOf("Korlan/libklwupdt.so"));
        Settings.IniFilePath = "C:\\Korlan\\SYS\\TESSARY.INI";
        Settings.LibDir = "C:\\Korlan\\LIB", Settings.SysDir = "C:\\Korlan\\SYS",
        Settings.TempFolder = "C:\\Korlan\\Temp";
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

    TempDrive drive;
};

} // namespace korlan::test
