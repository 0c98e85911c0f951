// The sample installation with its server, for tests of the whole wizard: laid out in a temporary folder, served by the
// real web server on a free loopback port. Sets the drives and the user's folders for as long as it lives.
#pragma once

#include "tests/support/TempFolder.h"

#include <filesystem>
#include <string>

#include <sys/types.h>

namespace korlan::test {

class Sample {
public:
    // country: entry of the country table, 1 English, 2 German. options: more for sample/layout.py.
    explicit Sample(int country = 1, const std::string& options = {});
    ~Sample();
    Sample(const Sample&) = delete;
    Sample& operator=(const Sample&) = delete;

    std::filesystem::path Program() const { return out_ / "drive_c" / "KORLAN"; } // the program folder
    std::filesystem::path Served() const { return out_ / "www" / "files"; }       // what the server holds
    std::filesystem::path Out() const { return out_; }
    std::string Ini() const;
    bool Logged(const std::string& text) const; // by the last start
    void StopServer();
    // What `sample/compare.py report` says: 0 when every promise of the catalogue is kept.
    int Compare(const std::string& command) const;

private:
    void Serve();
    std::filesystem::path out_;
    int port_ = 0;
    pid_t server_ = -1;
    ScopedVariable drives_, config_, cache_, state_;
};

} // namespace korlan::test
