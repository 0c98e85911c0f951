// The wizard's form as a record of controls and values, and the flags of a run. Data, and the two procedures everything
// else calls to show progress. StartUp connects the handlers; the logic lives in the files named after it.
#pragma once

#include "platform/Controls.h"

#include <cstdint>
#include <string>

namespace korlan {

struct FrmUpdate {
    FrmUpdate();

    Form form;
    Label lblMainHead;      // heading
    Label lblUpdate;        // status line of the search and of the outcome
    ImageList ilsCleanUp;   // the list's icons
    ListView lvwFilesList;  // the files found
    Label lblMsgline;       // progress of transfers, outcome of a run
    ProgressBar prgRun;     // the run as a whole: records transferred, then installed; hidden at all other times
    Label LblLive;          // heading of the reminder page
    OptionButton Option2;   // remind after 15 days
    OptionButton Option3;   // remind after 30 days
    OptionButton Option4;   // no reminders
    Label LblOptionExplain; // explanation of the chosen reminder
    PictureBox picSteps;    // side picture
    FileListBox files_temp; // hidden list of the files in a folder
    Button cmdUpdate;
    Button CmdRetry;
    Button cmdCancel; // Cancel while working; becomes Next, Finish or Close
    Button cmdHelp;

    std::int32_t IsBusy = 0;       // a search or a run is under way: the window does not close
    std::int32_t WizardState = 0;  // 0 searching or listing, 1 ended without a list, 2 a run has ended
    std::int32_t IsRetry = 0;      // the run is repeated
    std::int32_t ResumeIndex = 0;  // record at which the download pass stands
    std::int32_t UpdateDone = 0;   // a run has ended; part of the record, read by nothing here
    std::int32_t CheckedCount = 0; // checked rows as the list's handler has counted them

private:
    void PlaceControls();
};

extern FrmUpdate frmUpdate;

struct RunFlags {
    std::int32_t CancelRequested = 0;
    std::int32_t UpdateSucceeded = 0;  // the last run ended without a failed file
    std::int32_t NewUpdaterLoaded = 0; // a run installed KLNUPDTA.EXE
    std::int32_t DownloadFailed = 0;
    std::int16_t HelpShown = 0;
    std::string StatusSpinner = "|"; // "|", "/", "-" or "\"
    std::int32_t LibElementKind = 0; // 2 symbol, 3 package, 4 padstack, 0 none of them
};

extern RunFlags Flags;

inline constexpr const char* kCopiedFromWeb = "Copied from web"; // status of a row whose archive is there

// Turns "|" to "/", "/" to "-", "-" to "\", "\" to "|"; anything else stays.
void TurnSpinner(std::string& spinner);

void EditMsgline(const std::string& text); // shows it on the message line at once
void LiveUpdateStatus();                   // turns the spinner and rewrites the status line

} // namespace korlan
