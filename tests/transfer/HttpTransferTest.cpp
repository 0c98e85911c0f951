// The two operations on the update server, with a real server, real files and a scripted desktop.
#include "transfer/HttpTransfer.h"

#include "app/Settings.h"
#include "app/frmUpdate.h"
#include "platform/RuntimeError.h"
#include "platform/TextLibrary.h"
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

struct Outcome {
    std::int32_t done;
    std::int32_t failed;
    bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    return out << "done " << outcome.done << ", DownloadFailed " << outcome.failed;
}

constexpr Outcome kLeftAlone{7, 5}; // what every download here starts with
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
    ~HttpTransferTest() override { ResetDesktop(); }

    Outcome Download(const std::string& url, std::int32_t size, const std::string& saveAs = "C:\\a.zip",
                     std::int32_t showStatus = 0, std::string label = "PARTS.ZIP") {
        Outcome outcome = kLeftAlone;
        lines_.clear();
        korlan::Run.DownloadFailed = outcome.failed;
        DownloadFile(url, saveAs, outcome.done, size, label, showStatus);
        outcome.failed = korlan::Run.DownloadFailed;
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
        {"empty, unknown size", filled(0), 0, kJudgedFailed, 0},
        {"empty", filled(0), 1000, kJudgedFailed, 0},
        {"99.5 %", filled(199'000), 200'000, kGood, 199'000},
        {"99.4 %", filled(198'800), 200'000, kJudgedFailed, 198'800},
        {"100.5 %", filled(402), 400, kGood, 402},
        {"100.6 %", filled(1006), 1000, kJudgedFailed, 1006},
        {"cut", {.filling = 9000, .cutsAfter = 3000}, 9000, kJudgedFailed, 3000},
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
    std::string nobody;
    {
        const HttpServer gone;
        nobody = gone.Url("/a");
    }
    server_.Answer("/a", {.body = "new"});
    server_.Answer("/denied", {.status = 403, .reason = "Forbidden", .body = "page"});
    server_.Redirect("/loop", "/loop");
    drive_.Write("a.zip", "old");
    drive_.MakeFolders("FOLDER");
    const struct {
        std::string url, saveAs;
    } rows[] = {
        {"", "C:\\a.zip"},
        {server_.Url("/a"), ""},
        {nobody, "C:\\a.zip"},
        {server_.Url("/missing"), "C:\\a.zip"},
        {server_.Url("/denied"), "C:\\a.zip"},
        {server_.Url("/loop"), "C:\\a.zip"},
        {"//" + server_.Url("/a"), "C:\\a.zip"},
        {server_.Url("/a"), "C:\\NOWHERE\\a.zip"},
        {server_.Url("/a"), "C:\\FOLDER"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(kLeftAlone, Download(row.url, 3, row.saveAs)) << row.url << " " << row.saveAs;
    EXPECT_EQ("old", drive_.Read("a.zip"));
    EXPECT_TRUE(server_.AllConnectionsClosed());
    EXPECT_TRUE(Desktop().boxes.empty());
}

TEST_F(HttpTransferTest, ShowsTheProgressOfEveryBlock) {
    server_.Answer("/a", {.filling = 512 * 1024});
    EXPECT_EQ(kGood, Download(server_.Url("/a"), 512 * 1024));
    ASSERT_EQ(512u, lines_.size());
    EXPECT_EQ("PARTS.ZIP - Transferred :  1KB of  512KB -  0% complete", lines_[0]);
    EXPECT_EQ("PARTS.ZIP - Transferred :  120KB of  512KB -  23% complete", lines_[119]);
    EXPECT_EQ("PARTS.ZIP - Transferred :  512KB of  512KB -  100% complete", lines_[511]);

    const struct {
        std::uint64_t sent;
        std::int32_t expected;
        const char* last;
    } rows[] = {
        {1000, 1000, "PARTS.ZIP - Transferred :  1KB of  1KB -  100% complete"},
        {512, 512, "PARTS.ZIP - Transferred :  0KB of  0KB -  100% complete"}, // a half goes to the even number
        {1536, 2560, "PARTS.ZIP - Transferred :  2KB of  2KB -  60% complete"},
        {1, 200, "PARTS.ZIP - Transferred :  0KB of  0KB -  0% complete"},
        {3, 200, "PARTS.ZIP - Transferred :  0KB of  0KB -  2% complete"},
        {3000, 1000, "PARTS.ZIP - Transferred :  3KB of  1KB -  300% complete"},
        {1024, -2048, "PARTS.ZIP - Transferred :  1KB of -2KB - -50% complete"},
    };
    for (const auto& row : rows) {
        server_.Answer("/a", {.filling = row.sent});
        Download(server_.Url("/a"), row.expected);
        ASSERT_EQ((row.sent + 1023) / 1024, lines_.size());
        EXPECT_EQ(row.last, lines_.back());
    }
    Download(server_.Url("/a"), 0);
    EXPECT_THAT(lines_, ElementsAre()) << "no line without a size";

    localTexts = {{991877, "Geladen:"}, {991850, "K"}, {52128, " von "}, {991879, "% fertig"}};
    server_.Answer("/a", {.filling = 1000});
    Download(server_.Url("/a"), 1000);
    EXPECT_THAT(lines_, ElementsAre("PARTS.ZIP - Geladen:  1K von  1K -  100% fertig"));
}

TEST_F(HttpTransferTest, TurnsTheStatusLineOnlyWhenAsked) {
    server_.Answer("/a", {.filling = 5000});
    korlan::Run.StatusSpinner = "|";
    Download(server_.Url("/a"), 0, "C:\\a.zip", 1);
    EXPECT_EQ(5, statusTurns_);
    EXPECT_EQ("/", korlan::Run.StatusSpinner);
    Download(server_.Url("/a"), 5000, "C:\\a.zip", 0);
    EXPECT_EQ(5, statusTurns_);
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
    EXPECT_TRUE(server_.AllConnectionsClosed());
    for (const HttpRequest& request : server_.Requests())
        EXPECT_THAT(request.head, testing::HasSubstr("\r\nUser-Agent: KlnUpdt\r\n"));
}

TEST_F(HttpTransferTest, ReplacesAReadOnlyTarget) {
    server_.Answer("/a", {.headers = {{"Content-Encoding", "gzip"}}, .body = "as sent"});
    drive_.Write("Sys/A.Zip", "an older and longer copy");
    drive_.SetMode("Sys/A.Zip", 0444);
    EXPECT_EQ(kGood, Download(server_.Url("/a"), 7, "C:\\SYS\\a.zip"));
    EXPECT_THAT(drive_.Names("Sys"), ElementsAre("a.zip"));
    EXPECT_EQ("as sent", drive_.Read("Sys/a.zip"));
}

// The host's limit on the size of a file stands for a disk that fills up.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit before_{};
    void (*handler_)(int);
};

TEST_F(HttpTransferTest, AFullDiskEndsTheDownloadSilently) {
    for (const std::uint64_t size : {3 * kMegabyte, kMegabyte + 10}) { // in the middle, and with the very last bytes
        server_.Answer("/a", {.filling = size});
        const FileSizeLimit limit(kMegabyte);
        EXPECT_EQ(kLeftAlone, Download(server_.Url("/a"), static_cast<std::int32_t>(size))) << size;
    }
    EXPECT_TRUE(server_.AllConnectionsClosed());
    EXPECT_TRUE(Desktop().boxes.empty());
}

TEST_F(HttpTransferTest, CancelEndsEveryWait) {
    const struct {
        const char* name;
        HttpAnswer answer;
        std::size_t blocksBefore;
    } rows[] = {
        {"before the headers", {.stallsBeforeHeaders = true}, 0},
        {"before the body", {.filling = 9000, .stallsAfter = 0}, 0},
        {"in a block", {.filling = 9000, .stallsAfter = 2500}, 2},
        {"between blocks", {.filling = 9000}, 3},
    };
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
    EXPECT_TRUE(server_.AllConnectionsClosed());
}

TEST_F(HttpTransferTest, TellsTheSizeOrShowsWhyNot) {
    const std::string url = server_.Url("/A#.ZIP");
    const std::string address = "/A%23.ZIP";
    const struct {
        const char* name;
        HttpAnswer answer;
        std::int32_t result, size; // size 77 before
        int exists;                // -1 = left alone
        std::string box;
    } rows[] = {
        {"found", {.filling = 1234}, 1, 1234, 1, ""},
        {"empty", {}, 1, 0, 1, ""},
        {"largest", {.declaredLength = "2147483647", .cutsAfter = 0}, 1, 2147483647, 1, ""},
        {"server error", {.status = 500, .reason = "Oops", .body = "page!"}, 1, 5, 1, ""},
        {"redirect without a place", {.status = 302, .reason = "Found", .body = "page"}, 1, 4, 1, ""},
        {"401",
         {.status = 401, .reason = "Unauthorized", .body = "page"},
         0,
         77,
         -1,
         "Unauthorized Access, Download Terminated!" + url},
        {"403",
         {.status = 403, .reason = "Forbidden", .body = "page"},
         0,
         0,
         -1,
         "Access Denied, Download Terminated!" + url},
        {"404", {.status = 404, .reason = "Not Found", .body = "page"}, 0, 0, 0, "File Not Found : " + url},
        {"404 without a length", {.status = 404, .body = "page", .chunked = true}, 0, 0, 0, "File Not Found : " + url},
    };
    for (const bool before : {false, true}) {
        for (const auto& row : rows) {
            server_.Answer(address, row.answer);
            Desktop().boxes.clear();
            std::int32_t size = 77;
            bool exists = before;
            EXPECT_EQ(row.result, GetWebFileInformation(url, size, exists)) << row.name;
            EXPECT_EQ(row.size, size) << row.name;
            EXPECT_EQ(row.exists < 0 ? before : row.exists == 1, exists) << row.name;
            std::vector<ShownBox> boxes;
            if (!row.box.empty()) boxes.push_back({row.box, kBoxOkOnly, "Korlan"});
            EXPECT_EQ(boxes, Desktop().boxes) << row.name;
        }
    }
    EXPECT_TRUE(server_.AllConnectionsClosed());
}

TEST_F(HttpTransferTest, ASizeThatIsNoneReachesTheCaller) {
    server_.Answer("/chunked", {.body = "x", .chunked = true});
    server_.Answer("/text", {.declaredLength = "many"});
    server_.Answer("/large", {.declaredLength = "2147483648", .cutsAfter = 0});
    server_.Redirect("/loop", "/loop");
    const struct {
        std::string url;
        std::int32_t error;
    } rows[] = {
        {server_.Url("/chunked"), kErrTypeMismatch}, {server_.Url("/text"), kErrTypeMismatch},
        {server_.Url("/large"), kErrOverflow},       {server_.Url("/loop"), kErrTypeMismatch},
        {"http://127.0.0.1:1/a", kErrTypeMismatch},  {"", kErrTypeMismatch},
    };
    for (const auto& row : rows) {
        std::int32_t size = 77;
        bool exists = false;
        try {
            GetWebFileInformation(row.url, size, exists);
            ADD_FAILURE() << row.url;
        } catch (const RuntimeError& error) {
            EXPECT_EQ(row.error, error.Number()) << row.url;
        }
        EXPECT_EQ(77, size) << row.url;
        EXPECT_TRUE(exists) << row.url;
    }
    EXPECT_TRUE(Desktop().boxes.empty());
    EXPECT_TRUE(server_.AllConnectionsClosed());
}

TEST_F(HttpTransferTest, TheProbeYieldsWhileTheServerIsSilent) {
    server_.Answer("/a", {.stallsBeforeHeaders = true});
    struct Ended {};
    Desktop().onDoEvents = [] {
        if (Desktop().eventsHandled == 3) throw Ended{}; // Cancel ends the process there
    };
    std::int32_t size = 77;
    bool exists = false;
    EXPECT_THROW(GetWebFileInformation(server_.Url("/a"), size, exists), Ended);
    EXPECT_TRUE(server_.AllConnectionsClosed());
}

} // namespace

namespace korlan {

std::optional<std::string> L32_Object_GetMessage(std::int32_t identifier) {
    const auto found = localTexts.find(identifier);
    return found == localTexts.end() ? std::nullopt : std::optional(found->second);
}

} // namespace korlan
