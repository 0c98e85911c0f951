// The whole wizard against an update server of its own: an installation with one file to update, and the user's clicks.
#pragma once

#include "app/StartUp.h"
#include "tests/app/AppFixture.h"
#include "tests/support/HttpServer.h"
#include "tests/support/ScriptedWindow.h"
#include "tests/support/SqliteFile.h"
#include "tests/support/ZipWriter.h"

namespace korlan::test {

class SearchTest : public AppTest {
protected:
    SearchTest() { // an INI file with the server's address, no catalogue on the server
        Windows() = {};
        WriteIni("[WEB]\r\nUPDATEONLINE=" + server.Url("/u") + "\r\n");
    }
    void Publish(const std::string& name, const std::string& bytes) { server.Answer("/u/" + name, {.body = bytes}); }
    void PublishCatalogue(const std::string& name, const std::vector<std::vector<std::string>>& rows) {
        RunSql(drive.HostPathOf(name), CatalogueSql(rows));
        Publish(name, drive.Read(name));
    }
    // A master catalogue with the pack SP1.mdb, which offers NEW.TXT for C:\KORLAN\SYS.
    void OfferOneFile() {
        PublishCatalogue("Update.mdb", {{"SP1.mdb", "", "", "", ""}});
        PublishCatalogue("SP1.mdb", {{"NEW.TXT", "\\SYS", "300", "5-3-2004,9:7:12", "NEW.TXT.zip"}});
    }
    void PublishItsArchive() {
        Publish("NEW.TXT.zip", ZipWriter().Add({.name = "NEW.TXT", .data = "new content"}).Bytes());
    }
    // A text table in which every text is "T" and its identifier: what shows tells which identifier was asked for.
    void WriteTextsOf(const std::vector<std::string>& identifiers) const {
        std::string texts;
        for (const std::string& id : identifiers) texts += id + " = T" + id + "\r\n";
        drive.Write("KORLAN\\COUNTRY\\English\\KLNLOCAL.TXT", texts);
    }
    static bool Start() {
        AttachHandlers();
        return Ends(Form_Load);
    }
    static bool Click(Button& button) {
        EXPECT_TRUE(button.Visible() && button.Enabled()) << button.Name();
        return Ends([&] { button.UserClick(); });
    }
    static bool CloseWindow() {
        return Ends([] { frmUpdate.form.UserClose(); });
    }
    // What the user can press: "WizardState IsBusy: captions", buttons that are off in brackets.
    static std::string State() {
        std::string state = std::to_string(frmUpdate.WizardState) + " " + std::to_string(frmUpdate.IsBusy) + ":";
        for (Button* button : {&frmUpdate.cmdUpdate, &frmUpdate.CmdRetry, &frmUpdate.cmdCancel, &frmUpdate.cmdHelp})
            if (button->Visible())
                state += button->Enabled() ? " " + button->Caption() : " (" + button->Caption() + ")";
        return state;
    }

    HttpServer server;
};

} // namespace korlan::test
