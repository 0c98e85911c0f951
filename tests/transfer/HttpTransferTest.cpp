// The two operations on the update server, with a real server, real files and a scripted desktop.
#include "transfer/HttpTransfer.h"
#include "tests/support/ResetProgram.h"

#include "app/base/Settings.h"
#include "app/base/frmUpdate.h"
#include "tests/support/Failing.h"
#include "tests/support/HttpServer.h"
#include "tests/support/ScriptedDesktop.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace korlan;
using namespace korlan::test;
using testing::ElementsAre;

namespace {

constexpr std::uint64_t kMegabyte = 1024 * 1024;
using Outcome = std::pair<std::int32_t, std::int32_t>; // done, DownloadFailed
constexpr Outcome kLeftAlone{7, 5};                    // what every download here starts with
constexpr Outcome kGood{1, 0}, kJudgedFailed{1, 1};

class HttpTransferTest : public testing::Test {
protected:
    HttpTransferTest() {
        ResetDesktop();
        ResetProgram();
        Settings.SysName = "Korlan";
        Desktop().onControlChanged = [this](const Control& control, Aspect aspect, std::int32_t) {
            if (&control == &frmUpdate.lblMsgline && aspect == Aspect::Caption)
                lines_.push_back(frmUpdate.lblMsgline.Caption());
        };
    }
    ~HttpTransferTest() override { EXPECT_TRUE(server_.AllAnswersEnded()); }

    Outcome Download(const std::string& url, std::int32_t size, const std::string& saveAs = "C:\\a.zip",
                     std::int32_t showStatus = 0) {
        Outcome outcome = kLeftAlone;
        lines_.clear();
        Flags.DownloadFailed = outcome.second;
        DownloadFile(url, saveAs, outcome.first, size, "PARTS.ZIP", showStatus);
        outcome.second = Flags.DownloadFailed;
        return outcome;
    }

    ScopedVariable noProxy_{"no_proxy", "127.0.0.1"};
    TempDrive drive_;
    HttpServer server_;
    std::vector<std::string> lines_; // texts of the message line
};

TEST_F(HttpTransferTest, JudgesADownloadByItsRoundedPercentage) {
    const auto expect = [&](Outcome outcome, std::int32_t expected, std::uint64_t size, std::size_t written,
                            std::optional<std::uint64_t> cutsAfter = {}) {
        server_.Answer("/a.zip", {.filling = size, .cutsAfter = cutsAfter});
        EXPECT_EQ(outcome, Download(server_.Url("/a.zip"), expected)) << size;
        EXPECT_EQ(written, drive_.Read("a.zip").size()) << size;
    };
    expect(kGood, 2500, 2500, 2500);
    expect(kJudgedFailed, 0, 2500, 2500);
    expect(kJudgedFailed, 1000, 0, 0);
    expect(kGood, 200'000, 199'000, 199'000);         // 99.5 %
    expect(kJudgedFailed, 200'000, 198'800, 198'800); // 99.4 %
    expect(kGood, 400, 402, 402);                     // 100.5 %
    expect(kJudgedFailed, 1000, 1006, 1006);          // 100.6 %
    expect(kGood, 200'000, 200'000, 199'000, 199'000);
    expect(kJudgedFailed, -1000, 1000, 1000);
    expect(kLeftAlone, 1, 25 * kMegabyte, 20'972 * 1024); // a percentage beyond 32 bits
    EXPECT_TRUE(Desktop().boxes.empty());
}

TEST_F(HttpTransferTest, FailuresBeforeTheFirstBlockLeaveEverythingAlone) {
    server_.Answer("/a", {.body = "new"});
    server_.Redirect("/loop", "/loop");
    drive_.Write("a.zip", "old");
    for (const std::string& url :
         {std::string(), std::string("http://127.0.0.1:1/a"), server_.Url("/missing"), server_.Url("/loop")})
        EXPECT_EQ(kLeftAlone, Download(url, 3)) << url;
    for (const char* saveAs : {"", "C:\\NOWHERE\\a.zip", "C:\\"})
        EXPECT_EQ(kLeftAlone, Download(server_.Url("/a"), 3, saveAs)) << saveAs;
    EXPECT_EQ("old", drive_.Read("a.zip"));

    drive_.SetMode("a.zip", 0444);
    std::filesystem::create_hard_link(drive_.HostPathOf("a.zip"), drive_.HostPathOf("linked.zip"));
    EXPECT_EQ(kGood, Download(server_.Url("/a"), 3));
    EXPECT_EQ("new old", drive_.Read("a.zip") + " " + drive_.Read("linked.zip")) << "not written through";
}

TEST_F(HttpTransferTest, ShowsTheProgressOfEveryBlock) {
    const auto line = [](const std::string& numbers) { return "PARTS.ZIP - Transferred : " + numbers + "% complete"; };
    server_.Answer("/a", {.filling = 512 * 1024});
    Download(server_.Url("/a"), 512 * 1024);
    ASSERT_EQ(512u, lines_.size());
    EXPECT_EQ("PARTS.ZIP - Transferred :  1KB of  512KB -  0% complete", lines_[0]);
    EXPECT_EQ(line(" 512KB of  512KB -  100"), lines_[511]);

    const auto expectLast = [&](std::uint64_t sent, std::int32_t expected, const char* numbers) {
        server_.Answer("/a", {.filling = sent});
        Download(server_.Url("/a"), expected);
        ASSERT_EQ((sent + 1023) / 1024, lines_.size());
        EXPECT_EQ(line(numbers), lines_.back());
    };
    expectLast(1000, 1000, " 1KB of  1KB -  100");
    expectLast(512, 512, " 0KB of  0KB -  100"); // a half goes to the even number
    expectLast(1536, 2560, " 2KB of  2KB -  60");
    expectLast(1024, -2048, " 1KB of -2KB - -50");
    Flags.StatusSpinner = "|";
    std::string turns;
    for (int time = 0; time < 4; ++time) {
        Download(server_.Url("/a"), 0, "C:\\a.zip", 1);
        turns += Flags.StatusSpinner;
        EXPECT_THAT(lines_, ElementsAre()) << "no line without a size";
    }
    EXPECT_EQ("/-\\|", turns);
}

TEST_F(HttpTransferTest, AsksTwiceForADownloadAndOnceForItsSize) {
    server_.Answer("/A%23B%23.ZIP", {.filling = 8 * kMegabyte});
    std::int32_t size = 0;
    bool exists = false;
    EXPECT_EQ(1, GetWebFileInformation(server_.Url("/A#B#.ZIP"), size, exists));
    EXPECT_TRUE(server_.AllAnswersEnded());
    EXPECT_EQ(kGood, Download(server_.Url("/A#B#.ZIP"), size));
    EXPECT_THAT(server_.Targets(), ElementsAre("/A%23B%23.ZIP", "/A%23B%23.ZIP", "/A%23B%23.ZIP"));
    EXPECT_LE(server_.Connections(), 3);
    EXPECT_TRUE(drive_.Read("a.zip") == std::string(8 * kMegabyte, 'x'));
}

// The host's limit on the size of a file stands for a disk that fills up.
TEST_F(HttpTransferTest, AFullDiskEndsTheDownloadSilently) {
    const FileLimit limit(kMegabyte);
    for (const std::uint64_t size : {3 * kMegabyte, kMegabyte + 10}) { // in the middle, and with the very last bytes
        server_.Answer("/a", {.filling = size});
        EXPECT_EQ(kLeftAlone, Download(server_.Url("/a"), static_cast<std::int32_t>(size))) << size;
    }
    EXPECT_TRUE(Desktop().boxes.empty());
}

TEST_F(HttpTransferTest, CancelEndsEveryWait) {
    const auto expect = [&](std::size_t blocksBefore, std::size_t bytes, const HttpAnswer& answer) {
        server_.Answer("/a", answer);
        drive_.Write("a.zip", "old");
        Flags.CancelRequested = 0;
        const bool opens = !answer.stallsBeforeHeaders;
        int eventsAfter = 0, waits = 0;
        Desktop().onDoEvents = [&] {
            if (Flags.CancelRequested != 0) ++eventsAfter;
            const bool begun = !opens || drive_.Read("a.zip") != "old";
            const bool stalled = begun && lines_.size() == blocksBefore && ++waits > 3;
            if (stalled || lines_.size() == 3) Flags.CancelRequested = 1;
        };
        EXPECT_EQ(kLeftAlone, Download(server_.Url("/a"), 9000)) << blocksBefore;
        EXPECT_LE(eventsAfter, 1) << blocksBefore;
        EXPECT_EQ((bytes + 1023) / 1024, lines_.size());
        EXPECT_EQ(opens ? std::string(bytes, 'x') : "old", drive_.Read("a.zip"));
    };
    expect(0, 0, {.stallsBeforeHeaders = true});
    expect(0, 0, {.filling = 9000, .stallsAfter = 0});
    expect(2, 2500, {.filling = 9000, .stallsAfter = 2500}); // the part of a block is kept
    expect(3, 3072, {.filling = 9000});                      // between blocks
    server_.Answer("/stalled", {.stallsBeforeHeaders = true});
    Desktop().onDoEvents = [] { throw 1; }; // Cancel may end the process there
    std::int32_t size = 0;
    bool exists = false;
    EXPECT_THROW(GetWebFileInformation(server_.Url("/stalled"), size, exists), int);
}

TEST_F(HttpTransferTest, TellsTheSizeOrShowsWhyNot) {
    std::string url = server_.Url("/A#.ZIP");
    const auto expect = [&](std::int32_t result, std::int32_t sizeAfter, std::optional<bool> existsAfter,
                            const HttpAnswer& answer, const std::string& box = {}) {
        server_.Answer("/A%23.ZIP", answer);
        for (const bool before : {false, true}) {
            Desktop().boxes.clear();
            std::int32_t size = 77;
            bool exists = before;
            const std::string given = "http://me:word@" + url.substr(7); // a box shows it without these
            const std::int32_t error = ErrorOf([&] { EXPECT_EQ(result, GetWebFileInformation(given, size, exists)); });
            EXPECT_EQ(error, sizeAfter == 77 && box.empty() ? result : 0);
            EXPECT_EQ(sizeAfter, size);
            EXPECT_EQ(existsAfter.value_or(before), exists);
            std::vector<ShownBox> boxes;
            if (!box.empty()) boxes.push_back({box + url, kBoxOkOnly, "Korlan"});
            EXPECT_EQ(boxes, Desktop().boxes);
        }
    };
    expect(1, 1234, true, {.filling = 1234});
    expect(1, 0, true, {});
    expect(1, 2147483647, true, {.declaredLength = "2147483647", .cutsAfter = 0});
    expect(1, 4, true, {.status = 500, .reason = "Oops", .body = "page"});
    expect(1, 4, true, {.status = 302, .reason = "redirect without a place", .body = "page"});
    expect(0, 77, {}, {.status = 401, .reason = "Unauthorized"}, "Unauthorized Access, Download Terminated!");
    expect(0, 0, {}, {.status = 403, .reason = "Forbidden"}, "Access Denied, Download Terminated!");
    expect(0, 0, false, {.status = 404, .reason = "Not Found"}, "File Not Found : ");
    expect(kErrTypeMismatch, 77, true, {.body = "x", .chunked = true});
    expect(kErrTypeMismatch, 77, true, {.declaredLength = "many"});
    expect(kErrOverflow, 77, true, {.declaredLength = "2147483648", .cutsAfter = 0});
    url = "http://127.0.0.1:1/a";
    expect(kErrTypeMismatch, 77, true, {});
}

} // namespace
