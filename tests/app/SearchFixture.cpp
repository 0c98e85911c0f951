#include "tests/app/SearchFixture.h"

#include "app/StartUp.h"
#include "tests/support/ScriptedWindow.h"
#include "tests/support/SqliteFile.h"
#include "tests/support/ZipWriter.h"

namespace korlan::test {

SearchTest::SearchTest() {
    Windows() = {};
    WriteIni("[WEB]\r\nUPDATEONLINE=" + server.Url("/u") + "\r\n");
}

void SearchTest::PublishCatalogue(const std::string& name, const std::vector<std::vector<std::string>>& rows) {
    RunSql(drive.HostPathOf(name), CatalogueSql(rows));
    Publish(name, drive.Read(name));
}

void SearchTest::PublishArchive(const std::string& member, const std::string& content) {
    Publish(member + ".zip", ZipWriter().Add({.name = member, .data = content}).Bytes());
}

void SearchTest::OfferOneFile() {
    PublishCatalogue("Update.mdb", {{"SP1.mdb", "", "", "", ""}});
    PublishCatalogue("SP1.mdb", {{"NEW.TXT", "\\SYS", "300", "5-3-2004,9:7:12", "NEW.TXT.zip"}});
}

bool SearchTest::Start() {
    return Ends([] {
        AttachHandlers();
        Form_Load();
    });
}

bool SearchTest::Click(Button& button) {
    EXPECT_TRUE(button.Visible() && button.Enabled()) << button.Name();
    return Ends([&] { button.UserClick(); });
}

bool SearchTest::CloseWindow() {
    return Ends([] { frmUpdate.form.UserClose(); });
}

std::string SearchTest::State() {
    std::string state = std::to_string(frmUpdate.WizardState) + " " + std::to_string(frmUpdate.IsBusy) + ":";
    for (const Button* button : {&frmUpdate.cmdUpdate, &frmUpdate.CmdRetry, &frmUpdate.cmdCancel, &frmUpdate.cmdHelp})
        if (button->Visible()) state += button->Enabled() ? " " + button->Caption() : " (" + button->Caption() + ")";
    return state;
}

} // namespace korlan::test
