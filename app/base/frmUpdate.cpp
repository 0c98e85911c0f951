#include "app/base/frmUpdate.h"

#include "app/base/LocalText.h"
#include "app/base/Settings.h"

namespace korlan {

FrmUpdate frmUpdate;
RunFlags Flags;

namespace {

constexpr float kFormWidth = 10800; // twips: 720 by 480 pixels at 96 dots per inch
constexpr float kFormHeight = 7200;

} // namespace

FrmUpdate::FrmUpdate()
    : form("frmUpdate", "991867", " Live Update", kFormWidth, kFormHeight),
      lblMainHead("lblMainHead", "991867", " Live Update"), lblUpdate("lblUpdate"),
      ilsCleanUp("ilsCleanUp", {"Dot", "", "DELETE", "BDot", "FOLDEROPEN", "FOLDER", "", "NOTDELETE"}),
      lvwFilesList("lvwFilesList", ilsCleanUp), lblMsgline("lblMsgline"), prgRun("prgRun"),
      LblLive("LblLive", "991861", "Configure Korlan Live Updates"),
      Option2("Option2", "991871", "Remind me after 15 days"), Option3("Option3", "991872", "Remind me after 30 days"),
      Option4("Option4", "991873", "Turn Off any future Live Updates"), LblOptionExplain("LblOptionExplain"),
      picSteps("picSteps"), files_temp("files_temp"), cmdUpdate("cmdUpdate", "9989", "&Update"),
      CmdRetry("CmdRetry", "991852", "Retry"), cmdCancel("cmdCancel", "991875", "C&ancel"),
      cmdHelp("cmdHelp", "1725", "&Help") {
    cmdUpdate.SetEnabled(false);
    cmdHelp.SetEnabled(false);
    files_temp.SetVisible(false);
    prgRun.SetVisible(false);
    form.SetControls({&lblMainHead, &lblUpdate, &lvwFilesList, &lblMsgline, &prgRun, &LblLive, &Option2, &Option3,
                      &Option4, &LblOptionExplain, &cmdUpdate, &CmdRetry, &cmdCancel, &cmdHelp, &picSteps, &files_temp,
                      &ilsCleanUp});
    PlaceControls();
    for (OptionButton* option : {&Option2, &Option3, &Option4}) option->SetGroup({&Option2, &Option3, &Option4});
}

// Status, message and explanation are sentences that grow when translated.
void FrmUpdate::PlaceControls() {
    picSteps.SetPlace({.region = Region::Side});
    lblMainHead.SetPlace({.region = Region::Heading, .font = FontRole::Title});
    lblUpdate.SetPlace({.region = Region::Status, .lines = 2});
    lvwFilesList.SetPlace({.region = Region::List});
    LblLive.SetPlace({.region = Region::Reminder, .font = FontRole::Heading});
    for (OptionButton* option : {&Option2, &Option3, &Option4}) option->SetPlace({.region = Region::Reminder});
    LblOptionExplain.SetPlace({.region = Region::Reminder, .lines = 2});
    lblMsgline.SetPlace({.region = Region::Message, .lines = 2});
    prgRun.SetPlace({.region = Region::Message});
    for (Button* button : {&cmdUpdate, &CmdRetry, &cmdCancel, &cmdHelp}) button->SetPlace({.region = Region::Buttons});
}

void TurnSpinner(std::string& spinner) {
    if (spinner == "|") {
        spinner = "/";
    } else if (spinner == "/") {
        spinner = "-";
    } else if (spinner == "-") {
        spinner = "\\";
    } else if (spinner == "\\") {
        spinner = "|";
    }
}

void EditMsgline(const std::string& text) {
    frmUpdate.lblMsgline.SetCaption(text);
    frmUpdate.lblMsgline.Refresh();
}

void LiveUpdateStatus() {
    TurnSpinner(Flags.StatusSpinner);
    frmUpdate.lblUpdate.SetCaption(GetLocalText("Searching for updated ", "991846") + Settings.SysName +
                                   GetLocalText(" files. This may take some time.....", "991847") +
                                   Flags.StatusSpinner);
}

} // namespace korlan
