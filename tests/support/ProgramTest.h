// The whole program in a temporary installation, C:\KORLAN, with a scripted desktop and process: base of tests of the
// wizard's own procedures.
#pragma once

#include "app/base/Settings.h"
#include "app/base/frmUpdate.h"
#include "catalogue/FileTables.h"
#include "tests/support/ResetProgram.h"
#include "tests/support/ScriptedDesktop.h"
#include "tests/support/ScriptedProcess.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace korlan::test {

class ProgramTest : public ::testing::Test {
protected:
    ProgramTest() {
        ResetDesktop(); // before the form, which tells the desktop of itself
        ResetProgram();
        ResetProcess();
        Process().programPath = "C:\\KORLAN\\KlnUpdt.EXE";
        for (const char* folder : {"KORLAN/Temp", "KORLAN/SYS", "KORLAN/LIB", "KORLAN/KDS_CML"})
            drive.MakeFolders(folder);
        Settings.IniFilePath = "C:\\KORLAN\\SYS\\TESSARY.INI";
        Settings.TempFolder = "C:\\KORLAN\\Temp";
        Settings.LibDir = "C:\\KORLAN\\LIB";
        Settings.SysDir = "C:\\KORLAN\\SYS";
        Settings.KDScml = "C:\\KORLAN\\KDS_CML";
        for (const char* title : {"File Name", "File Path", "File Size", "Status", "Invisible"})
            frmUpdate.lvwFilesList.AddColumn(title, 1440);
    }

    TempDrive drive;
};

} // namespace korlan::test
