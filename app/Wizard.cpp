#include "app/Wizard.h"

#include "app/ReminderSchedule.h"
#include "app/base/LocalText.h"
#include "app/base/Paths.h"
#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "app/base/frmUpdate.h"
#include "catalogue/AppliedPacks.h"
#include "catalogue/Catalogue.h"
#include "catalogue/Comparison.h"
#include "catalogue/DateText.h"
#include "catalogue/FileList.h"
#include "platform/FileSystem.h"
#include "platform/FormHost.h"
#include "platform/Log.h"
#include "platform/MsgBox.h"
#include "platform/Process.h"
#include "platform/RuntimeError.h"
#include "transfer/HttpTransfer.h"
#include "transfer/UpdateRun.h"

namespace korlan {

namespace {

template <typename Handler>
void Quietly(const char* name, Handler handler) {
    try {
        handler();
    } catch (const RuntimeError& error) { // the flags tell what was reached
        LogTrapped(name, error);
    }
}

// True when the file of that name came from the server into the temporary folder.
bool Fetch(const std::string& name) {
    std::int32_t done = 0;
    DownloadFile(Settings.UpdateUrl + "/" + name, InTempFolder(name), done, 0, "", 1);
    return done != 0; // an unknown size always counts as a failed download, so that flag says nothing here
}

// The text up to the first line end.
std::string FirstLine(const std::string& path) {
    constexpr std::size_t kLongestLine = 1024;
    const std::string text = ReadFilePart(path, 0, kLongestLine);
    if (text.empty()) throw RuntimeError(kErrPastEndOfFile);
    return text.substr(0, text.find_first_of("\r\n"));
}

void ShowConnectionError() {
    if (Flags.CancelRequested != 0) EndProcess();
    LogLine("shown: connection error");
    frmUpdate.WizardState = 1;
    frmUpdate.cmdUpdate.SetVisible(false);
    frmUpdate.cmdCancel.SetCaption(GetLocalText("&Close", "9917"));
    // The text is fixed, "occured" and the missing blank included.
    frmUpdate.lblUpdate.SetCaption(
        GetLocalText("Live Update Error. An internet connection error occured.Please try again later", "991849"));
}

// Hands over to the self-update launcher when the server's build of this program is newer. Without a note there is
// nothing to compare.
void CheckForNewerBuild() {
    const std::string note = "KlnUpdt.txt";
    LiveUpdateStatus();
    if (FileExists(InTempFolder(note))) RemoveFile(InTempFolder(note));
    if (!Fetch(note)) return;
    const std::string serverDate = FirstLine(InTempFolder(note));
    std::int32_t newer = 0;
    const std::string ownDate = GetFileStamp(GetAppFolder() + "\\KlnUpdt.EXE");
    LogLine("this program is of " + ownDate + ", the server's of " + serverDate);
    CompareDates(ownDate, serverDate, newer);
    if (newer == 0) return;
    StartProgram(GetAppFolder() + "\\KLNUPSLF.EXE", WindowStyle::NormalFocus);
    throw RuntimeError(kErrDeliberateAbort);
}

// What Update and Retry alike do when no transfer failed.
void EndRun() {
    if (Flags.CancelRequested != 0) EndProcess();
    frmUpdate.cmdCancel.SetEnabled(false);
    DoEvents(); // impatient clicks on Cancel die here: they were not meant for Next
    frmUpdate.IsBusy = 0;
    frmUpdate.UpdateDone = 1;
    frmUpdate.cmdHelp.SetEnabled(true);
    frmUpdate.cmdCancel.SetEnabled(true);
    frmUpdate.WizardState = 2;
    frmUpdate.cmdUpdate.SetVisible(false);
}

void RecordSuccess(const std::string& message) {
    LogLine("shown: " + message);
    UpdateIniFile();
    Flags.UpdateSucceeded = 1;
    EditMsgline(message);
}

void Update() {
    Flags.DownloadFailed = 0;
    frmUpdate.IsBusy = 1;
    Flags.UpdateSucceeded = 0;
    frmUpdate.cmdUpdate.SetEnabled(false);
    frmUpdate.cmdHelp.SetEnabled(false);
    frmUpdate.lvwFilesList.SetLocked(true);
    LogLine("update of " + DecimalText(frmUpdate.CheckedCount) + " files");
    CreateNewFolders();
    const std::int32_t failed = UpdateFilesFromWeb();
    if (Flags.DownloadFailed == 1) return; // the run has shown Retry; the window stays busy
    EndRun();
    frmUpdate.cmdCancel.SetCaption(GetLocalText("Next", "327"));
    if (failed == 0) RecordSuccess(GetLocalText("Live Update completed Successfully", "10486"));
}

// Retry has other identifiers than Update for the same texts, by which they are translated, and names the button Next
// only after success.
void Retry() {
    LogLine("retry");
    frmUpdate.CmdRetry.SetEnabled(false);
    frmUpdate.IsRetry = 1;
    const std::int32_t failed = UpdateFilesFromWeb();
    if (Flags.DownloadFailed != 1) {
        EndRun();
        if (failed != 0) return;
        RecordSuccess(GetLocalText("Live Update completed Successfully", "991860"));
        frmUpdate.cmdCancel.SetCaption(GetLocalText("Next", "991863"));
        return;
    }
    frmUpdate.CmdRetry.SetEnabled(true);
    ShowRetry(GetLocalText("Live Update failed.", "991855") + GetLocalText("Click Retry to try again", "991856"));
}

void TurnToReminderPage() {
    frmUpdate.lvwFilesList.SetVisible(false);
    // 991860 and 991861 stand the other way round than after a search, on purpose.
    frmUpdate.lblUpdate.SetCaption(GetLocalText("Live Update completed Successfully", "991861"));
    frmUpdate.lblMsgline.SetVisible(false);
    ShowReminderOptions(GetLocalText("Configure Korlan Live Updates", "991860"));
    frmUpdate.cmdCancel.SetCaption(GetLocalText("Finish", "11200"));
    frmUpdate.WizardState = 0;
}

void QuitWhileBusy() {
    // The text is fixed, "Updation" included.
    const std::string question = GetLocalText("Updation in progress, do you want to quit live update", "991862");
    if (ShowMsgBox(question, kBoxYesNo + kBoxQuestion, GetSysName()) != kAnswerYes) return;
    RegistryWrite(kSettingsApplication, kSettingsSection, "LiveDay", "0");
    RegistryWrite(kSettingsApplication, kSettingsSection, "NxtLiveDay", "0");
    Flags.CancelRequested = 1;
    LogLine("ends: cancelled at work");
    EndProcess();
}

void Cancel() {
    SaveReminderChoice();
    if (frmUpdate.WizardState == 2) {
        TurnToReminderPage();
    } else if (frmUpdate.IsBusy != 0) {
        QuitWhileBusy();
    } else {
        if (Flags.UpdateSucceeded == 1) CleanUpTemporaryFiles();
        Flags.CancelRequested = 1;
        LogLine("ends: by the button " + frmUpdate.cmdCancel.Caption());
        EndProcess();
    }
}

} // namespace

void InitiateUpdate() {
    IniWebR();
    LiveUpdateStatus();
    frmUpdate.form.Refresh();
    LiveUpdateStatus();
    const std::string catalogue = "Update.mdb";
    if (!Fetch(catalogue)) {
        ShowConnectionError();
        return;
    }
    CheckForNewerBuild();
    std::string cataloguePath = InTempFolder(catalogue);
    std::int32_t found = 1;
    GetLatestFiles(cataloguePath, found);
    if (found == 0) {
        ShowNoUpdates();
        return;
    }
    CompareUpdatableFiles();
    DisplayFilesInformationsFromWeb();
    frmUpdate.cmdUpdate.SetEnabled(true);
    frmUpdate.lvwFilesList.SetFocus(); // Return on Cancel, where the focus stood, would end the program unasked
}

void cmdUpdate_Click() {
    Quietly("cmdUpdate_Click", Update);
}

void CmdRetry_Click() {
    Quietly("CmdRetry_Click", Retry);
}

void cmdCancel_Click() {
    Quietly("cmdCancel_Click", Cancel);
}

void cmdHelp_Click() {
    Quietly("cmdHelp_Click", [] { ShowHelp(GetAppFolder() + "\\KlnUpdt.HLP", HelpCommand::DisplayTopic, 0); });
}

void Option2_Click() {
    frmUpdate.LblOptionExplain.SetCaption(GetLocalText("Run Live Update Program after 15 days", "991869"));
}

void Option3_Click() {
    frmUpdate.LblOptionExplain.SetCaption(GetLocalText("Run Live Update Program after 30 days", "991876"));
}

void Option4_Click() { // the identifier of the first option, whose text translations show
    frmUpdate.LblOptionExplain.SetCaption(GetLocalText("Turn Off any future Live Updates", "991869"));
}

void ShowReminderOptions(const std::string& heading) {
    FontSpec bold = frmUpdate.LblLive.Font();
    bold.bold = true;
    frmUpdate.LblLive.SetFont(bold);
    frmUpdate.LblLive.SetCaption(heading);
    frmUpdate.LblLive.SetVisible(true);
    frmUpdate.Option2.SetVisible(true);
    frmUpdate.Option2.SetFocus();
    frmUpdate.Option3.SetVisible(true);
    frmUpdate.Option4.SetVisible(true);
}

void ShowHelp(const std::string& file, HelpCommand command, std::int32_t data) {
    OpenCompiledHelp(Left(file, static_cast<std::int64_t>(file.size()) - 3) + "chm", command, data);
    Flags.HelpShown = -1;
}

} // namespace korlan
