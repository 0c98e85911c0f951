// A staging tree and a server's tree in a temporary folder, and what the commands say.
#pragma once

#include "platform/RuntimeError.h"
#include "publisher/Pack.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

namespace korlan::test {

// Everything written to the standard output and error while it lives.
class SaidText {
public:
    SaidText() : out_(std::cout.rdbuf(text_.rdbuf())), error_(std::cerr.rdbuf(text_.rdbuf())) {}
    ~SaidText() {
        std::cout.rdbuf(out_);
        std::cerr.rdbuf(error_);
    }
    SaidText(const SaidText&) = delete;
    SaidText& operator=(const SaidText&) = delete;
    std::string Text() const { return text_.str(); }

private:
    std::ostringstream text_;
    std::streambuf *out_, *error_;
};

class PublisherTest : public testing::Test {
protected:
    PublisherTest() {
        std::filesystem::permissions(drive.Top(), std::filesystem::perms(0755)); // for tests as somebody else
        for (const char* folder : {"staging", "server"}) drive.MakeFolders(folder);
    }
    // A file of the staging tree, of 10 March 2004, 7:minute:13.
    void Stage(const std::string& path, const std::string& content = "content", int minute = 1) const {
        drive.Write("staging/" + path, content);
        drive.Touch("staging/" + path, 2004, 3, 10, 7, minute, 13);
    }
    void ClearStaging() const {
        std::filesystem::remove_all(Host("staging"));
        drive.MakeFolders("staging");
    }
    std::filesystem::path Host(const std::string& path) const { return drive.HostPathOf(path); }

    // The exit code; 3 when it raises, as the program's own. What it says goes to `said`.
    int Publish(const std::string& pack, bool replace = false) {
        const SaidText text;
        int code = 3;
        try {
            code = publisher::Pack({pack, Host("staging"), Host("server"), replace});
            said = text.Text();
        } catch (const RuntimeError& error) {
            said = text.Text() + error.Description();
        }
        return code;
    }

    TempDrive drive;
    std::string said;
};

} // namespace korlan::test
