// The whole wizard against an update server of its own: an installation with one file to update, and the user's clicks.
#pragma once

#include "tests/app/AppFixture.h"
#include "tests/support/HttpServer.h"

#include <string>
#include <vector>

namespace korlan::test {

class SearchTest : public AppTest {
protected:
    SearchTest(); // an INI file with the server's address, no catalogue on the server

    void Publish(const std::string& name, const std::string& bytes) { server.Answer("/u/" + name, {.body = bytes}); }
    // Each row is name, designation, size, date, archive.
    void PublishCatalogue(const std::string& name, const std::vector<std::vector<std::string>>& rows);
    void PublishArchive(const std::string& member, const std::string& content);
    // A master catalogue with the pack SP1.mdb, which offers NEW.TXT for C:\KORLAN\SYS; no archive yet.
    void OfferOneFile();

    // Starts the program; true when the start ended the process.
    static bool Start();
    static bool Click(Button& button);
    static bool CloseWindow();
    // What the user can press: "WizardState IsBusy: captions", buttons that are off in brackets.
    static std::string State();

    HttpServer server;
};

} // namespace korlan::test
