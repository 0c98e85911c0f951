// The two operations on the update server, with a real server, real files and a scripted desktop.
#include "transfer/HttpTransfer.h"

#include "app/Settings.h"
#include "app/frmUpdate.h"
#include "platform/TextLibrary.h"
#include "tests/support/Failing.h"
#include "tests/support/HttpServer.h"
#include "tests/support/ScriptedDesktop.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <map>
#include <sys/resource.h>

using namespace korlan;
using namespace korlan::test;
using testing::ElementsAre;

namespace {

constexpr std::uint64_t kMegabyte = 1024 * 1024;
std::map<std::int32_t, std::string> localTexts; // what the text library holds

using Outcome = std::pair<std::int32_t, std::int32_t>; // done, DownloadFailed
constexpr Outcome kLeftAlone{7, 5};                    // what every download here starts with
constexpr Outcome kGood{1, 0};
constexpr Outcome kJudgedFailed{1, 1};

class HttpTransferTest : public testing::Test {
protected:
    HttpTransferTest() {
        ResetDesktop();
        ResetProgram();
        localTexts.clear();
        Suite.SysName = "Korlan";
        Desktop().onControlChanged = [this](const Control& control, Aspect aspect, std::int32_t) {
            if (&control == &frmUpdate.lblMsgline && aspect == Aspect::Caption)
                lines_.push_back(frmUpdate.lblMsgline.Caption());
            if (&control == &frmUpdate.lblUpdate && aspect == Aspect::Caption) ++statusTurns_;
        };
    }
    ~HttpTransferTest() override {
        EXPECT_TRUE(server_.AllConnectionsClosed());
        ResetDesktop();
    }

    Outcome Download(const std::string& url, std::int32_t size, const std::string& saveAs = "C:\\a.zip",
                     std::int32_t showStatus = 0) {
        Outcome outcome = kLeftAlone;
        std::string label = "PARTS.ZIP";
        lines_.clear();
        korlan::Run.DownloadFailed = outcome.second;
        DownloadFile(url, saveAs, outcome.first, size, label, showStatus);
        outcome.second = korlan::Run.DownloadFailed;
        return outcome;
    }

    ScopedVariable noProxy_{"no_proxy", "127.0.0.1"};
    TempDrive drive_;
    HttpServer server_;
    std::vector<std::string> lines_; // texts of the message line
    int statusTurns_ = 0;
};

TEST_F(HttpTransferTest, JudgesADownloadByItsRoundedPercentage) {
    const auto filled = [](std::uint64_t size) { return HttpAnswer{.filling = size}; };
    const struct {
        const char* name;
        HttpAnswer answer;
        std::int32_t expected;
        Outcome outcome;
        std::size_t written;
    } rows[] = {
        {"exact", filled(2500), 2500, kGood, 2500},
        {"unknown size", filled(2500), 0, kJudgedFailed, 2500},
        {"empty", filled(0), 1000, kJudgedFailed, 0},
        {"99.5 %", filled(199'000), 200'000, kGood, 199'000},
        {"99.4 %", filled(198'800), 200'000, kJudgedFailed, 198'800},
        {"100.5 %", filled(402), 400, kGood, 402},
        {"100.6 %", filled(1006), 1000, kJudgedFailed, 1006},
        {"cut at 99.5 %", {.filling = 200'000, .cutsAfter = 199'000}, 200'000, kGood, 199'000},
        {"a negative size", filled(1000), -1000, kJudgedFailed, 1000},
        {"percentage beyond 32 bits", filled(25 * kMegabyte), 1, kLeftAlone, 20'972 * 1024},
    };
    for (const auto& row : rows) {
        server_.Answer("/a.zip", row.answer);
        EXPECT_EQ(row.outcome, Download(server_.Url("/a.zip"), row.expected)) << row.name;
        EXPECT_EQ(row.written, drive_.Read("a.zip").size()) << row.name;
    }
    EXPECT_TRUE(Desktop().boxes.empty());
}

TEST_F(HttpTransferTest, FailuresBeforeTheFirstBlockLeaveEverythingAlone) {
    server_.Answer("/a", {.body = "new"});
    server_.Redirect("/loop", "/loop");
    drive_.Write("a.zip", "old");
    drive_.MakeFolders("FOLDER");
    for (const std::string& url :
         {std::string(), std::string("http://127.0.0.1:1/a"), server_.Url("/missing"), server_.Url("/loop")})
        EXPECT_EQ(kLeftAlone, Download(url, 3)) << url;
    for (const char* saveAs : {"", "C:\\NOWHERE\\a.zip", "C:\\FOLDER"})
        EXPECT_EQ(kLeftAlone, Download(server_.Url("/a"), 3, saveAs)) << saveAs;
    EXPECT_EQ("old", drive_.Read("a.zip"));
    EXPECT_TRUE(Desktop().boxes.empty());
}

TEST_F(HttpTransferTest, ShowsTheProgressOfEveryBlock) {
    const auto line = [](const std::string& numbers) { return "PARTS.ZIP - Transferred : " + numbers + "% complete"; };
    server_.Answer("/a", {.filling = 512 * 1024});
    EXPECT_EQ(kGood, Download(server_.Url("/a"), 512 * 1024));
    ASSERT_EQ(512u, lines_.size());
    EXPECT_EQ("PARTS.ZIP - Transferred :  1KB of  512KB -  0% complete", lines_[0]);
    EXPECT_EQ(line(" 120KB of  512KB -  23"), lines_[119]);
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
    expectLast(1, 200, " 0KB of  0KB -  0");
    expectLast(3, 200, " 0KB of  0KB -  2");
    expectLast(3000, 1000, " 3KB of  1KB -  300");
    expectLast(1024, -2048, " 1KB of -2KB - -50");
    localTexts = {{991877, "Geladen:"}, {991850, "K"}, {52128, " von "}, {991879, "% fertig"}};
    server_.Answer("/a", {.filling = 1000});
    Download(server_.Url("/a"), 1000);
    EXPECT_THAT(lines_, ElementsAre("PARTS.ZIP - Geladen:  1K von  1K -  100% fertig"));
    EXPECT_EQ(0, statusTurns_);
    korlan::Run.StatusSpinner = "|";
    Download(server_.Url("/a"), 0, "C:\\a.zip", 1);
    EXPECT_THAT(lines_, ElementsAre()) << "no line without a size";
    EXPECT_EQ(1, statusTurns_);
    EXPECT_EQ("/", korlan::Run.StatusSpinner);
}

TEST_F(HttpTransferTest, AsksTwiceForADownloadAndOnceForItsSize) {
    server_.Answer("/A%23B%23.ZIP", {.filling = 8 * kMegabyte});
    std::int32_t size = 0;
    bool exists = false;
    EXPECT_EQ(1, GetWebFileInformation(server_.Url("/A#B#.ZIP"), size, exists));
    EXPECT_TRUE(server_.AllConnectionsClosed());
    EXPECT_THAT(server_.Targets(), ElementsAre("/A%23B%23.ZIP"));

    EXPECT_EQ(kGood, Download(server_.Url("/A#B#.ZIP"), size));
    EXPECT_THAT(server_.Targets(), ElementsAre("/A%23B%23.ZIP", "/A%23B%23.ZIP", "/A%23B%23.ZIP"));
    EXPECT_LE(server_.MostConnectionsAtOnce(), 2);
    EXPECT_THAT(server_.Requests()[2].head, testing::HasSubstr("\r\nUser-Agent: KlnUpdt\r\n"));
    drive_.Write("Sys/A.Zip", std::string(9 * kMegabyte, 'y'));
    drive_.SetMode("Sys/A.Zip", 0444);
    EXPECT_EQ(kGood, Download(server_.Url("/A#B#.ZIP"), size, "C:\\SYS\\a.zip"));
    EXPECT_THAT(drive_.Names("Sys"), ElementsAre("a.zip")) << "made anew";
    EXPECT_TRUE(drive_.Read("Sys/a.zip") == std::string(8 * kMegabyte, 'x'));
}

// The host's limit on the size of a file stands for a disk that fills up.
TEST_F(HttpTransferTest, AFullDiskEndsTheDownloadSilently) {
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{kMegabyte, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    for (const std::uint64_t size : {3 * kMegabyte, kMegabyte + 10}) { // in the middle, and with the very last bytes
        server_.Answer("/a", {.filling = size});
        EXPECT_EQ(kLeftAlone, Download(server_.Url("/a"), static_cast<std::int32_t>(size))) << size;
    }
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_TRUE(Desktop().boxes.empty());
}

TEST_F(HttpTransferTest, CancelEndsEveryWait) {
    const struct {
        const char* name;
        HttpAnswer answer;
        std::size_t blocksBefore;
    } rows[] = {{"before the headers", {.stallsBeforeHeaders = true}, 0},
                {"before the body", {.filling = 9000, .stallsAfter = 0}, 0},
                {"in a block", {.filling = 9000, .stallsAfter = 2500}, 2},
                {"between blocks", {.filling = 9000}, 3}};
    for (const auto& row : rows) {
        server_.Answer("/a", row.answer);
        drive_.Write("a.zip", "old");
        korlan::Run.CancelRequested = 0;
        const bool opens = !row.answer.stallsBeforeHeaders;
        int eventsAfter = 0;
        int waits = 0;
        Desktop().onDoEvents = [&] {
            if (korlan::Run.CancelRequested != 0) ++eventsAfter;
            const bool begun = !opens || drive_.Read("a.zip") != "old";
            const bool stalled = begun && lines_.size() == row.blocksBefore && ++waits > 3;
            if (stalled || lines_.size() == 3) korlan::Run.CancelRequested = 1;
        };
        EXPECT_EQ(kLeftAlone, Download(server_.Url("/a"), 9000)) << row.name;
        EXPECT_LE(eventsAfter, 1) << row.name;
        EXPECT_EQ(row.blocksBefore, lines_.size()) << row.name;
        EXPECT_EQ(opens ? std::string(row.blocksBefore * 1024, 'x') : "old", drive_.Read("a.zip")) << row.name;
    }
}

TEST_F(HttpTransferTest, TellsTheSizeOrShowsWhyNot) {
    const std::string url = server_.Url("/A#.ZIP");
    const auto page = [](int status, const char* reason) {
        return HttpAnswer{.status = status, .reason = reason, .body = "page"};
    };
    const struct {
        HttpAnswer answer;
        std::int32_t result, size; // size 77 before
        int exists;                // -1 = left alone
        std::string box;
    } rows[] = {
        {{.filling = 1234}, 1, 1234, 1, ""},
        {{}, 1, 0, 1, ""},
        {{.declaredLength = "2147483647", .cutsAfter = 0}, 1, 2147483647, 1, ""},
        {page(500, "Oops"), 1, 4, 1, ""},
        {page(302, "redirect without a place"), 1, 4, 1, ""},
        {page(401, "Unauthorized"), 0, 77, -1, "Unauthorized Access, Download Terminated!" + url},
        {page(403, "Forbidden"), 0, 0, -1, "Access Denied, Download Terminated!" + url},
        {page(404, "Not Found"), 0, 0, 0, "File Not Found : " + url},
    };
    for (const bool before : {false, true}) {
        for (const auto& row : rows) {
            server_.Answer("/A%23.ZIP", row.answer);
            Desktop().boxes.clear();
            std::int32_t size = 77;
            bool exists = before;
            SCOPED_TRACE(row.answer.reason);
            EXPECT_EQ(row.result, GetWebFileInformation(url, size, exists));
            EXPECT_EQ(row.size, size);
            EXPECT_EQ(row.exists < 0 ? before : row.exists == 1, exists);
            std::vector<ShownBox> boxes;
            if (!row.box.empty()) boxes.push_back({row.box, kBoxOkOnly, "Korlan"});
            EXPECT_EQ(boxes, Desktop().boxes);
        }
    }
}

TEST_F(HttpTransferTest, ASizeThatIsNoneAndTheEndInAWaitReachTheCaller) {
    server_.Answer("/chunked", {.body = "x", .chunked = true});
    server_.Answer("/text", {.declaredLength = "many"});
    server_.Answer("/large", {.declaredLength = "2147483648", .cutsAfter = 0});
    server_.Redirect("/loop", "/loop");
    const auto expect = [&](std::int32_t error, const std::string& url) {
        std::int32_t size = 77;
        bool exists = false;
        EXPECT_EQ(error, ErrorOf([&] { GetWebFileInformation(url, size, exists); })) << url;
        EXPECT_TRUE(size == 77 && exists) << url;
    };
    for (const char* target : {"/chunked", "/text", "/loop"}) expect(kErrTypeMismatch, server_.Url(target));
    for (const char* url : {"http://127.0.0.1:1/a", ""}) expect(kErrTypeMismatch, url);
    expect(kErrOverflow, server_.Url("/large"));
    EXPECT_TRUE(Desktop().boxes.empty());
    server_.Answer("/stalled", {.stallsBeforeHeaders = true});
    struct Ended {};
    Desktop().onDoEvents = [] {
        throw Ended{}; // Cancel ends the process there
    };
    std::int32_t size = 77;
    bool exists = false;
    EXPECT_THROW(GetWebFileInformation(server_.Url("/stalled"), size, exists), Ended);
}

} // namespace

namespace korlan {

std::optional<std::string> L32_Object_GetMessage(std::int32_t identifier) {
    const auto found = localTexts.find(identifier);
    return found == localTexts.end() ? std::nullopt : std::optional(found->second);
}

} // namespace korlan
