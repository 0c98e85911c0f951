// What every back end's HTTP must do, against a real server on the loopback.
#include "platform/Http.h"
#include "tests/support/HttpServer.h"
#include "tests/support/StalledNetwork.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <deque>
#include <optional>
#include <stdexcept>
#include <thread>

using namespace korlan;
using namespace korlan::test;
using testing::ElementsAre;
using testing::StartsWith;

namespace {

constexpr std::uint64_t kMegabyte = 1024 * 1024;

class Session {
public:
    explicit Session(WaitSlice wait = {}) : handle_(OpenHttpSession("KlnUpdt", std::move(wait))) {}
    ~Session() { Close(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    void Close() { CloseHttpHandle(handle_); }
    HttpHandle Open(const std::string& url) const { return OpenHttpUrl(handle_, url); }

private:
    HttpHandle handle_;
};

struct WholeBody {
    std::string bytes;
    std::vector<std::size_t> blocks;
    bool well = true; // no read failed
};

WholeBody ReadAll(HttpHandle url) {
    WholeBody body;
    std::array<char, 1024> block;
    for (;;) {
        std::size_t read = 99;
        body.well = ReadHttpBlock(url, block, read);
        if (read == 0) return body;
        body.bytes.append(block.data(), read);
        body.blocks.push_back(read);
    }
}

std::string Pattern(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 31 + i / 251);
    return text;
}

std::string Probe(TransferControl& control, const std::string& url) {
    control.SetUrl(url);
    control.ExecuteGet();
    while (control.StillExecuting()) {
    }
    return control.GetHeader();
}

class HttpTest : public testing::Test {
protected:
    HttpTest() {
        for (const char* name :
             {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"})
            unset_.emplace_back(name, std::nullopt);
    }
    ~HttpTest() override { SetHttpTimeLimit(std::chrono::seconds(60)); }

    std::deque<ScopedVariable> unset_;
    HttpServer server_;
};

TEST_F(HttpTest, SendsTheAddressAsItStandsButForBlanksAndBackslashes) {
    const struct {
        std::string given, sent;
    } rows[] = {
        {"/a b.zip", "/a%20b.zip"},
        {"/a?q=b c", "/a?q=b%20c"},
        {"/a   ", "/a"},
        {"/LIB\\a.zip", "/LIB/a.zip"},
        {"/a?p=C:\\x", "/a?p=C:\\x"},
        {"//a/../b/./c", "//a/../b/./c"},
        {"/a%23b%20c", "/a%23b%20c"},
        {"/;=&+@!~,'()*", "/;=&+@!~,'()*"},
        {"/\xC3\xA4", "/%c3%a4"},
        {"", "/"},
    };
    for (const auto& row : rows) {
        server_.Answer(row.sent, {.body = "x"});
        EXPECT_NE(0, Session().Open(server_.Url(row.given))) << row.given;
        EXPECT_EQ(row.sent, server_.Targets().back()) << row.given;
    }
    server_.Answer("/upper", {.body = "x"});
    EXPECT_NE(0, Session().Open("HTTP" + server_.Url("/upper").substr(4)));
}

TEST_F(HttpTest, RefusesAddressesThatAreNone) {
    const std::string host = server_.Url("/a").substr(7);
    for (const std::string& url : {std::string(), std::string("   "), host, " http://" + host, "//http://" + host,
                                   "http:" + host, "http:///" + host, std::string("http://"), std::string("http://?a"),
                                   "htp://" + host, "ftp://" + host, std::string("file:///etc/passwd"),
                                   server_.Url("/a\r\nX-Injected: 1"), std::string("http://127.0.0.1:99999/a")}) {
        EXPECT_EQ(0, Session().Open(url)) << url;
        TransferControl control("KlnUpdt");
        EXPECT_EQ("", Probe(control, url)) << url;
    }
    EXPECT_EQ(0, server_.ConnectionsOpened());
}

TEST_F(HttpTest, AsksWithTheFewHeadersItNeeds) {
    server_.Answer("/a", {});
    Session().Open(server_.Url("/a"));
    TransferControl control("Probe");
    Probe(control, server_.Url("/a"));
    const std::string host = "Host: 127.0.0.1:" + std::to_string(server_.Port());
    const auto requests = server_.Requests();
    ASSERT_EQ(2u, requests.size());
    EXPECT_EQ("GET /a HTTP/1.1\r\n" + host + "\r\nUser-Agent: KlnUpdt\r\nAccept: */*\r\n\r\n", requests[0].head);
    EXPECT_EQ("GET /a HTTP/1.1\r\n" + host + "\r\nUser-Agent: Probe\r\nAccept: */*\r\n\r\n", requests[1].head);
}

TEST_F(HttpTest, GoesThroughTheProxyOfTheSystem) {
    const ScopedVariable proxy("http_proxy", server_.Url());
    server_.Answer("http://updates.invalid/a", {.body = "by proxy"});
    const Session session;
    EXPECT_EQ("by proxy", ReadAll(session.Open("http://updates.invalid/a")).bytes);
}

TEST_F(HttpTest, FillsBlocksUntilTheBodyEnds) {
    const std::string body = Pattern(2500);
    const std::vector<std::size_t> three{1024, 1024, 452};
    const struct {
        const char* name;
        HttpAnswer answer;
        std::vector<std::size_t> blocks;
    } rows[] = {
        {"ten blocks", {.body = Pattern(10240)}, std::vector<std::size_t>(10, 1024)},
        {"one block", {.body = Pattern(1024)}, {1024}},
        {"less than a block", {.body = Pattern(1000)}, {1000}},
        {"empty", {}, {}},
        {"small writes", {.body = body, .pieceSize = 7}, three},
        {"chunks", {.body = body, .chunked = true, .pieceSize = 100}, three},
        {"no length", {.body = body, .declaredLength = ""}, three},
        {"cut", {.body = body, .declaredLength = "9999", .cutsAfter = 1500}, {1024, 476}},
        {"cut between chunks", {.body = body, .chunked = true, .pieceSize = 100, .cutsAfter = 1500}, {1024, 476}},
        {"more than declared", {.body = body, .declaredLength = "1500", .cutsAfter = 2500}, {1024, 476}},
        {"packed", {.headers = {{"Content-Encoding", "gzip"}}, .body = body}, three},
        {"early hints", {.body = body, .informational = "HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n"}, three},
    };
    for (const auto& row : rows) {
        server_.Answer("/a", row.answer);
        const Session session;
        const HttpHandle url = session.Open(server_.Url("/a"));
        const WholeBody read = ReadAll(url);
        EXPECT_EQ(row.blocks, read.blocks) << row.name;
        EXPECT_EQ(row.answer.body.substr(0, read.bytes.size()), read.bytes) << row.name;
        EXPECT_TRUE(read.well) << row.name;
        const WholeBody again = ReadAll(url);
        EXPECT_TRUE(again.well && again.bytes.empty()) << row.name << ": the end is not the end";
    }
}

TEST_F(HttpTest, ReadsBlocksLargerThanItsOwnBuffer) {
    const std::string body = Pattern(3 * kMegabyte);
    server_.Answer("/a", {.body = body});
    const Session session;
    const HttpHandle url = session.Open(server_.Url("/a"));
    std::string block(2 * kMegabyte, '\0');
    std::size_t read = 0;
    ASSERT_TRUE(ReadHttpBlock(url, block, read));
    ASSERT_EQ(2 * kMegabyte, read);
    EXPECT_TRUE(block == body.substr(0, read));
    ASSERT_TRUE(ReadHttpBlock(url, block, read));
    EXPECT_TRUE(block.substr(0, read) == body.substr(2 * kMegabyte));
}

TEST_F(HttpTest, OpensByTheStatusOfTheFinalAnswer) {
    server_.Answer("/good", {.body = "good"});
    for (const int status : {200, 206, 300, 304, 399}) {
        server_.Answer("/a", {.status = status, .reason = "Odd", .body = status == 304 ? "" : "page"});
        EXPECT_NE(0, Session().Open(server_.Url("/a"))) << status;
    }
    for (const int status : {400, 401, 403, 404, 407, 500, 503}) {
        server_.Answer("/a", {.status = status, .reason = "Bad", .body = "page"});
        EXPECT_EQ(0, Session().Open(server_.Url("/a"))) << status;
    }
    for (const int status : {301, 302, 303, 307, 308}) {
        server_.Redirect("/a", "/good", status);
        const Session session;
        EXPECT_EQ("good", ReadAll(session.Open(server_.Url("/a"))).bytes) << status;
        server_.Redirect("/a", "/missing", status);
        EXPECT_EQ(0, session.Open(server_.Url("/a"))) << status;
    }
    for (const char* location : {"file:///etc/passwd", "ftp://127.0.0.1/a", "gopher://127.0.0.1/a"}) {
        server_.Redirect("/a", location);
        EXPECT_EQ(0, Session().Open(server_.Url("/a"))) << location;
    }
}

TEST_F(HttpTest, FollowsTwentyRedirects) {
    server_.Answer("/20", {.body = "there"});
    for (int i = 0; i < 20; ++i) server_.Redirect("/" + std::to_string(i), "/" + std::to_string(i + 1));
    const Session session;
    EXPECT_EQ("there", ReadAll(session.Open(server_.Url("/0"))).bytes);

    server_.Redirect("/loop", "/loop");
    const std::size_t before = server_.Requests().size();
    EXPECT_EQ(0, session.Open(server_.Url("/loop")));
    EXPECT_EQ(before + 21, server_.Requests().size());
    TransferControl control("KlnUpdt");
    EXPECT_EQ("", Probe(control, server_.Url("/loop")));
}

TEST_F(HttpTest, BoundsWhatAnUnreadBodyFetchesAndLeavesNoSocket) {
    server_.Answer("/unread", {.filling = 100 * kMegabyte});
    server_.Answer("/read", {.filling = 30 * kMegabyte});
    Session session;
    EXPECT_NE(0, session.Open(server_.Url("/unread")));
    EXPECT_EQ(30 * kMegabyte, ReadAll(session.Open(server_.Url("/read"))).bytes.size());
    EXPECT_LT(server_.BytesSent("/unread"), 16 * kMegabyte); // what the system's own buffers hold
    EXPECT_EQ(2, server_.MostConnectionsAtOnce());
    session.Close();
    EXPECT_TRUE(server_.AllConnectionsClosed());
}

TEST_F(HttpTest, PausedBodiesCanStillBeReadWhole) {
    server_.Answer("/first", {.filling = 5 * kMegabyte});
    server_.Answer("/second", {.filling = 5 * kMegabyte});
    const Session session;
    const HttpHandle first = session.Open(server_.Url("/first"));
    const HttpHandle second = session.Open(server_.Url("/second"));
    EXPECT_EQ(5 * kMegabyte, ReadAll(second).bytes.size());
    EXPECT_EQ(5 * kMegabyte, ReadAll(first).bytes.size());
}

TEST_F(HttpTest, AbandonsEveryKindOfWaitAtOnce) {
    const StalledListener silent;
    const StalledLookUp lookUp("stalled.test");
    server_.Answer("/headers", {.stallsBeforeHeaders = true});
    for (const std::string& url : {std::string("http://stalled.test/a"), silent.Url(), server_.Url("/headers")}) {
        int slices = 0;
        const Session session([&] { return ++slices < 3; });
        EXPECT_EQ(0, session.Open(url)) << url;
        EXPECT_EQ(3, slices) << url;
    }
    server_.Answer("/body", {.body = Pattern(3000), .stallsAfter = 1500});
    int slices = 0;
    const Session session([&] { return ++slices < 5; });
    const WholeBody body = ReadAll(session.Open(server_.Url("/body")));
    EXPECT_FALSE(body.well);
    EXPECT_EQ(1024u, body.bytes.size());
    EXPECT_EQ(5, slices);
}

TEST_F(HttpTest, GivesUpAtTheTimeLimit) {
    const StalledListener silent;
    const StalledLookUp lookUp("stalled.test");
    server_.Answer("/headers", {.stallsBeforeHeaders = true});
    server_.Answer("/body", {.body = Pattern(3000), .stallsAfter = 1500});
    SetHttpTimeLimit(std::chrono::milliseconds(200));
    for (const std::string& url : {std::string("http://stalled.test/a"), silent.Url(), server_.Url("/headers")}) {
        EXPECT_EQ(0, Session().Open(url)) << url;
        TransferControl control("KlnUpdt");
        EXPECT_EQ("", Probe(control, url)) << url;
    }
    const Session session;
    const WholeBody body = ReadAll(session.Open(server_.Url("/body")));
    EXPECT_FALSE(body.well);
    EXPECT_EQ(1024u, body.bytes.size());
}

// A question may stand before the user for minutes while the connection comes about behind it.
TEST_F(HttpTest, TheTimeAHandlerTakesIsNotCounted) {
    server_.Answer("/a", {.body = "x"});
    std::string url = server_.Url("/a");
    url.replace(url.find("127.0.0.1"), 9, "slow.here.test");
    SetHttpTimeLimit(std::chrono::milliseconds(200));
    std::optional<StalledLookUp> lookUp("slow.here.test");
    const auto handler = [&] {
        if (lookUp) std::this_thread::sleep_for(std::chrono::milliseconds(400));
        lookUp.reset();
        return true;
    };
    const Session session(handler);
    EXPECT_NE(0, session.Open(url));

    lookUp.emplace("slow.here.test");
    TransferControl control("KlnUpdt");
    control.SetUrl(url);
    control.ExecuteGet();
    while (control.StillExecuting()) handler();
    EXPECT_THAT(control.GetHeader(), StartsWith("HTTP/1.1 200"));
}

TEST_F(HttpTest, ClosingDuringAWaitEndsIt) {
    server_.Answer("/body", {.body = Pattern(100), .declaredLength = "3000", .stallsAfter = 100});
    HttpHandle toClose = 0;
    const HttpHandle session = OpenHttpSession("KlnUpdt", [&] {
        if (toClose != 0) CloseHttpHandle(toClose);
        return true;
    });
    const HttpHandle first = OpenHttpUrl(session, server_.Url("/body"));
    const HttpHandle second = OpenHttpUrl(session, server_.Url("/body"));
    for (const auto& [reading, closing] : {std::pair{first, first}, {second, session}}) {
        toClose = closing;
        const WholeBody body = ReadAll(reading);
        EXPECT_FALSE(body.well);
        EXPECT_EQ("", body.bytes);
    }
    EXPECT_TRUE(server_.AllConnectionsClosed());
    EXPECT_EQ(0, OpenHttpUrl(session, server_.Url("/body")));
    EXPECT_FALSE(ReadAll(first).well);

    server_.Answer("/headers", {.stallsBeforeHeaders = true});
    toClose = OpenHttpSession("KlnUpdt", [&] {
        CloseHttpHandle(toClose);
        return true;
    });
    EXPECT_EQ(0, OpenHttpUrl(toClose, server_.Url("/headers")));
    EXPECT_TRUE(server_.AllConnectionsClosed());
}

TEST_F(HttpTest, AHandlerThatThrowsInAWaitLeavesNothingBehind) {
    server_.Answer("/headers", {.stallsBeforeHeaders = true});
    {
        const Session session([]() -> bool { throw std::runtime_error("handler"); });
        EXPECT_THROW(session.Open(server_.Url("/headers")), std::runtime_error);
        EXPECT_THROW(session.Open(server_.Url("/headers")), std::runtime_error);
    }
    EXPECT_TRUE(server_.AllConnectionsClosed());
}

TEST_F(HttpTest, UnreachableServersAreAnOrdinaryFailure) {
    std::string nobody;
    {
        const HttpServer gone;
        nobody = gone.Url("/a");
    }
    TransferControl control("KlnUpdt");
    EXPECT_EQ(0, Session().Open(nobody));
    EXPECT_EQ("", Probe(control, nobody));
    EXPECT_EQ(0, Session().Open("https" + server_.Url("/a").substr(4))) << "no TLS there";
    EXPECT_EQ("", Probe(control, "https" + server_.Url("/a").substr(4)));
}

TEST_F(HttpTest, TheProbeBringsTheFinalHeadersAndNoBody) {
    server_.Answer("/a", {.headers = {{"X-Empty", ""}, {"X-Two", "  two words "}}, .filling = 100 * kMegabyte});
    server_.Answer("/gone", {.status = 404, .reason = "Not Found", .body = "page"});
    server_.Answer("/hints", {.body = "x", .informational = "HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n"});
    server_.Redirect("/moved", "/a");
    server_.Redirect("/moved-away", "/gone");
    TransferControl control("KlnUpdt");
    EXPECT_EQ("", control.GetHeader());
    EXPECT_FALSE(control.StillExecuting());

    const std::string whole =
        "HTTP/1.1 200 OK\r\nX-Empty: \r\nX-Two:   two words \r\nContent-Length: 104857600\r\n\r\n";
    for (const char* target : {"/a", "/moved"}) {
        EXPECT_EQ(whole, Probe(control, server_.Url(target))) << target;
        EXPECT_EQ("104857600", control.GetHeader("content-LENGTH"));
        EXPECT_EQ("two words", control.GetHeader("X-Two"));
        EXPECT_EQ("", control.GetHeader("X-Empty"));
        EXPECT_EQ("", control.GetHeader("Content"));
        EXPECT_EQ("", control.GetHeader("HTTP/1.1 200 OK"));
        EXPECT_TRUE(server_.AllConnectionsClosed()) << target;
    }
    EXPECT_LT(server_.BytesSent("/a"), 32 * kMegabyte); // two probes: what the system's own buffers hold
    EXPECT_THAT(Probe(control, server_.Url("/moved-away")), StartsWith("HTTP/1.1 404 Not Found\r\n"));
    EXPECT_THAT(Probe(control, server_.Url("/hints")), StartsWith("HTTP/1.1 200 OK\r\n"));
}

TEST_F(HttpTest, ACancelledProbeEnds) {
    server_.Answer("/a", {.stallsBeforeHeaders = true});
    TransferControl control("KlnUpdt");
    control.SetUrl(server_.Url("/a"));
    control.ExecuteGet();
    while (server_.Requests().empty()) EXPECT_TRUE(control.StillExecuting());
    control.Cancel();
    EXPECT_FALSE(control.StillExecuting());
    EXPECT_EQ("", control.GetHeader());
    EXPECT_TRUE(server_.AllConnectionsClosed());
}

} // namespace
