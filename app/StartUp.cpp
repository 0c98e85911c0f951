#include "app/StartUp.h"

#include "app/CommandLine.h"
#include "app/RunningSuite.h"
#include "app/Wizard.h"
#include "app/base/LocalText.h"
#include "app/base/Paths.h"
#include "app/base/Settings.h"
#include "app/base/frmUpdate.h"
#include "app/localise/UpdtFONT.h"
#include "catalogue/FileList.h"
#include "catalogue/FileTables.h"
#include "library/PartDatabase.h"
#include "library/SearchSequence.h"
#include "platform/FormHost.h"
#include "platform/Help.h"
#include "platform/Log.h"
#include "platform/MsgBox.h"
#include "platform/Process.h"
#include "platform/RuntimeError.h"
#include "platform/SuiteLibrary.h"
#include "transfer/CacheCleanUp.h"

#include <initializer_list>

namespace korlan {

namespace {

void HideLaterControls() {
    for (Control* later : std::initializer_list<Control*>{&frmUpdate.LblLive, &frmUpdate.Option2, &frmUpdate.Option3,
                                                          &frmUpdate.Option4, &frmUpdate.CmdRetry})
        later->SetVisible(false);
}

void RefuseWhileSuiteRuns() {
    bool running = false;
    FindKorlanRunning(running);
    if (!running) return;
    LogLine("the suite is running");
    ShowMsgBox(GetLocalText("Close ", "4925") + GetSysName() + GetLocalText(" before running Live Update", "991870"),
               kBoxCritical + kBoxOkOnly, GetSysName());
    throw RuntimeError(kErrDeliberateAbort);
}

void LogSettings() {
    LogLine("program " + ProgramPath() + ", command line: " + ProgramCommandLine());
    LogLine("settings of " + Settings.IniFilePath + (FileExists(Settings.IniFilePath) ? "" : " (not there)") +
            ": server " + Settings.UpdateUrl + ", libraries " + Settings.LibDir + ", system " + Settings.SysDir);
}

void ReadInstallation() {
    ParseCommandLine();
    AddBackslash(Settings.SysPath);
    frmUpdate.form.Move(ScreenWidth() / 2 - frmUpdate.form.Width() / 2,
                        ScreenHeight() / 2 - frmUpdate.form.Height() / 2);
    frmUpdate.lblUpdate.SetCaption("");
    Flags.CancelRequested = 0;
    Settings.IniFilePath = Settings.SysPath + "TESSARY.INI";
    ReadSuiteSettings();
    LogSettings();
    LoadLocalisation();
}

void BuildWindow() {
    SetTempFolder();
    ApplyLanguageToForm();
    FormFill();
    frmUpdate.form.Show();
    frmUpdate.form.Refresh();
}

void Search() {
    SetMousePointer(MousePointer::Hourglass);
    frmUpdate.IsBusy = 1;
    frmUpdate.cmdHelp.SetEnabled(false);
    TemporaryIntenetFilesCleanUp();
    MakeUpForReplacement();
    InitiateUpdate();
    frmUpdate.cmdHelp.SetEnabled(true);
    frmUpdate.IsBusy = 0;
    SetMousePointer(MousePointer::Default);
}

void StartCompanion() {
    constexpr const char* kLaunchToken = "KEMO274";
    try {
        StartProgram(GetAppFolder() + "\\KLNUPDTR.exe " + kLaunchToken, WindowStyle::MinimizedFocus);
    } catch (const RuntimeError& error) { // the process ends all the same
        LogTrapped("StartCompanion", error);
    }
}

} // namespace

void AttachHandlers() {
    frmUpdate.form.OnQueryUnload = Form_QueryUnload;
    frmUpdate.form.OnUnload = Form_Unload;
    frmUpdate.cmdUpdate.OnClick = cmdUpdate_Click;
    frmUpdate.CmdRetry.OnClick = CmdRetry_Click;
    frmUpdate.cmdCancel.OnClick = cmdCancel_Click;
    frmUpdate.cmdHelp.OnClick = cmdHelp_Click;
    frmUpdate.Option2.OnClick = Option2_Click;
    frmUpdate.Option3.OnClick = Option3_Click;
    frmUpdate.Option4.OnClick = Option4_Click;
    frmUpdate.lvwFilesList.OnItemCheck = lvwFilesList_ItemCheck;
}

void Form_Load() {
    try {
        BeginLog(LogFolder());
        LogLine("KlnUpdt " KLN_VERSION " starts");
        if (AnotherInstanceRunning()) {
            LogLine("another copy is running");
            frmUpdate.form.Unload();
        }
        HideLaterControls();
        ReadInstallation();
        RefuseWhileSuiteRuns();
        BuildWindow();
        Search();
        if (frmUpdate.WizardState == 1) ShowReminderOptions(GetLocalText("Configure Korlan Live Updates", "991861"));
    } catch (const RuntimeError& error) {
        LogTrapped("Form_Load", error);
        LogLine("ends: at its start");
        frmUpdate.IsBusy = 0;
        SetMousePointer(MousePointer::Default);
        EndProcess();
    }
}

void Form_QueryUnload(std::int16_t& cancel, std::int32_t /*mode*/) {
    if (frmUpdate.IsBusy != 0) cancel = -1;
    if (Flags.HelpShown == 0) return;
    OpenCompiledHelp("", HelpCommand::CloseAll, 0);
    Flags.HelpShown = 0;
}

void Form_Unload() {
    Tables.CatalogueDatabase.reset();
    if (Flags.UpdateSucceeded != 0 && Flags.NewUpdaterLoaded != 0) StartCompanion();
    LogLine("ends: the window was closed");
    EndProcess();
}

void FormFill() {
    ListView& list = frmUpdate.lvwFilesList;
    list.SetVisible(false);
    list.ClearColumns();
    list.AddColumn(GetLocalText("File Name", "5675"), 2350, "KLNUPDTA.EXE"); // a name of the usual length
    list.AddColumn(GetLocalText("File Path", "991864"), 2850);
    list.AddColumn(GetLocalText("File Size", "991865"), 975);
    list.AddColumn(GetLocalText("Status", "991257"), 1425, kCopiedFromWeb);
    list.AddColumn(GetLocalText("Invisible", "991866"), 1440);
    list.SetColumnWidth(5, 0); // the list's own data, not for reading
    frmUpdate.lblMsgline.SetCaption("");
    const std::string title = GetSysName() + GetLocalText(" Live Update", "991867");
    frmUpdate.form.SetCaption(title);
    frmUpdate.lblMainHead.SetCaption(title);
    InitLibraryInterface();
    LoadSearchSequences();
}

void InitLibraryInterface() {
    try {
        E_SetString("ServerPath", GetAppFolder());
        if (const std::string iniFile = E_GetString("IniFile"); !iniFile.empty()) Settings.IniFilePath = iniFile;
        DB_CreateDataBase();
    } catch (const RuntimeError& error) { // what was reached before the error stays
        LogTrapped("InitLibraryInterface", error);
    }
}

} // namespace korlan
