// What every back end's HTTP must do, against a real server on the loopback.
#include "platform/Http.h"
#include "tests/support/HttpServer.h"
#ifndef _WIN32
#include "tests/support/StalledNetwork.h"
#endif
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <set>
#include <sstream>
#include <thread>

using namespace korlan;
using namespace korlan::test;
using testing::StartsWith;

namespace {

constexpr std::uint64_t kMegabyte = 1024 * 1024;

std::unique_ptr<HttpSession> Session(WaitSlice wait = {}) {
    return OpenHttpSession("KlnUpdt", std::move(wait));
}

bool Opens(const std::string& url) {
    return Session()->OpenUrl(url) != nullptr;
}

struct WholeBody {
    std::string bytes;
    std::vector<std::size_t> blocks;
    HttpBody::End end = HttpBody::End::None;
};

WholeBody ReadAll(HttpBody& opened) {
    WholeBody body;
    std::string block(1024, '\0');
    while (body.end == HttpBody::End::None) {
        std::size_t read = 99;
        body.end = opened.Read(block, read);
        body.blocks.push_back(read);
        body.bytes.append(block, 0, read);
    }
    return body;
}

std::string Pattern(std::size_t size) {
    std::string text;
    while (text.size() < size) text += static_cast<char>(text.size() * 31 + text.size() / 251);
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
        for (const char* name : {"http_proxy", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"})
            SetVariable(name, nullptr);
        server_.Answer("/headers", {.stallsBeforeHeaders = true});
    }
    ~HttpTest() override { SetHttpTimeLimit(std::chrono::seconds(60)); }

    HttpServer server_;
};

// Neither the session nor the probe gets anything there.
void ExpectNothingAt(const std::string& url) {
    EXPECT_FALSE(Opens(url)) << url;
    TransferControl control("KlnUpdt");
    EXPECT_EQ("", Probe(control, url)) << url;
}

TEST_F(HttpTest, SendsTheAddressAsItStandsButForBlanksAndBackslashes) {
    const auto expect = [&](const char* given, const char* sent) {
        server_.Answer(sent, {.body = "x"});
        EXPECT_TRUE(Opens(server_.Url(given))) << given;
        EXPECT_EQ(sent, server_.Targets().back()) << given;
    };
    expect("/a b.zip", "/a%20b.zip");
    if (!kOnWindows) // whose own layer turns these too
        expect("/a?q=b c&p=C:\\x  ", "/a?q=b%20c&p=C:\\x");
    expect("/LIB\\a.zip", "/LIB/a.zip");
    expect("/a%23b;=&+@!~,'()*", "/a%23b;=&+@!~,'()*");
    expect("/\xC3\xA4", "/%c3%a4");
}

TEST_F(HttpTest, RefusesAddressesWithoutAServerBehindThem) {
    const std::string host = server_.Url("/a").substr(7);
    for (const std::string& url :
         {std::string(), std::string("   "), host, " http://" + host, "//http://" + host, "http:" + host,
          "http:///" + host, std::string("http://?a"), "ftp://" + host, std::string("file:///etc/passwd"),
          server_.Url("/a\r\nX-Injected: 1"), std::string("http://127.0.0.1:99999/a")})
        ExpectNothingAt(url);
    EXPECT_EQ(0, server_.Connections());
    ExpectNothingAt("https://" + host);                // no TLS there
    const std::string nobody = HttpServer().Url("/a"); // gone again
    ExpectNothingAt(nobody);
}

TEST_F(HttpTest, AsksWithFewHeaders) {
    server_.Answer("/a", {});
    Opens(server_.Url("/a"));
    TransferControl control("Probe");
    Probe(control, server_.Url("/a"));
    ASSERT_EQ(2u, server_.Requests().size());
    const auto lines = [](const std::string& head) { // in any order
        std::set<std::string> found;
        std::istringstream text(head);
        for (std::string line; std::getline(text, line) && line != "\r";) found.insert(line);
        return found;
    };
    const std::string host = "Host: " + server_.Url().substr(7) + "\r", get = "GET /a HTTP/1.1\r",
                      all = "Accept: */*\r";
    for (const std::size_t i : {0, 1})
        EXPECT_EQ(lines(server_.Requests()[i].head),
                  (std::set{get, host, all, std::string("User-Agent: ") + (i == 0 ? "KlnUpdt\r" : "Probe\r")}));
}

TEST_F(HttpTest, FillsBlocksUntilTheBodyEnds) {
    const std::string body = Pattern(2500);
    const auto expect = [&](const std::vector<std::size_t>& blocks, const HttpAnswer& answer) {
        server_.Answer("/a", answer);
        const auto session = Session();
        const auto url = session->OpenUrl(server_.Url("/a"));
        const WholeBody read = ReadAll(*url), again = ReadAll(*url);
        EXPECT_EQ(blocks, read.blocks);
        EXPECT_EQ(answer.body.substr(0, read.bytes.size()), read.bytes);
        for (const HttpBody::End end : {read.end, again.end}) EXPECT_EQ(HttpBody::End::OfBody, end);
        EXPECT_EQ("", again.bytes) << "the end is not the end";
    };
    const std::vector<std::size_t> whole{1024, 1024, 452}, cut{1024, 476};
    expect({1024, 0}, {.body = Pattern(1024)});
    expect(whole, {.body = body, .pieceSize = 7});
    expect(whole, {.body = body, .chunked = true, .pieceSize = 100});
    expect(cut, {.body = body, .declaredLength = "9999", .cutsAfter = 1500});
    expect(whole, {.headers = {{"Content-Encoding", "gzip"}}, .body = body}); // as it came
    expect(cut, {.body = body, .declaredLength = "1500"});
    server_.Answer("/b", {.body = "good"});
    server_.Answer("/more", {.body = Pattern(150'000), .declaredLength = "100000"});
    for (const char* longer : {"/a", "/more"}) {
        EXPECT_THAT(ReadAll(*Session()->OpenUrl(server_.Url(longer))).bytes.size(), testing::AnyOf(1500, 100'000));
        const auto session = Session();
        const auto next = session->OpenUrl(server_.Url("/b"));
        ASSERT_TRUE(next) << "what is more than declared is nobody's answer";
        EXPECT_EQ("good", ReadAll(*next).bytes);
    }
}

TEST_F(HttpTest, OpensByTheStatusOfTheFinalAnswer) {
    server_.Answer("/good", {.body = "good"});
    for (const int status : {200, 206, 300, 304, 399, 400, 401, 404, 500}) {
        server_.Answer("/a", {.status = status, .reason = "Odd", .body = status == 304 ? "" : "page"});
        EXPECT_EQ(status < 400, Opens(server_.Url("/a"))) << status;
    }
    for (const int status : {301, 302, 303, 307, 308}) {
        server_.Redirect("/a", "/good", status);
        const auto session = Session();
        EXPECT_EQ("good", ReadAll(*session->OpenUrl(server_.Url("/a"))).bytes) << status;
    }
    server_.Redirect("/out", "file:///etc/passwd");
    EXPECT_FALSE(Opens(server_.Url("/out")));
    server_.Redirect("/loop", "/loop");
    const std::size_t before = server_.Requests().size();
    EXPECT_FALSE(Opens(server_.Url("/loop")));
    EXPECT_EQ(before + 21, server_.Requests().size());
    for (const std::size_t lines : {60, 90}) { // 256 KB of headers is the limit; Wine's layer cuts a line at 4 KB
        server_.Answer("/long", {.headers = std::vector(lines, std::pair(std::string("X"), std::string(3'500, 'h')))});
        EXPECT_EQ(lines == 60, Opens(server_.Url("/long"))) << lines;
    }
}

TEST_F(HttpTest, BoundsWhatAnUnreadBodyFetchesAndUsesConnectionsAgain) {
    for (const char* target : {"/unread", "/read"}) server_.Answer(target, {.filling = 30 * kMegabyte});
    auto session = Session();
    const auto unread = session->OpenUrl(server_.Url("/unread")), read = session->OpenUrl(server_.Url("/read")),
               open = session->OpenUrl(server_.Url("/unread"));
    EXPECT_EQ(30 * kMegabyte, ReadAll(*read).bytes.size());
    EXPECT_LT(server_.BytesSent("/unread"), 32 * kMegabyte); // what the system's own buffers hold
    EXPECT_EQ(3, server_.Connections());
    EXPECT_EQ(30 * kMegabyte, ReadAll(*unread).bytes.size()) << "a paused body goes on";
    session.reset();
    EXPECT_TRUE(server_.AllAnswersEnded());
    EXPECT_EQ(HttpBody::End::Failed, ReadAll(*open).end) << "closed with its session";
    EXPECT_EQ(30 * kMegabyte, ReadAll(*Session()->OpenUrl(server_.Url("/read"))).bytes.size());
    EXPECT_EQ(3, server_.Connections()) << "another session, one of those connections";
}

TEST_F(HttpTest, EveryKindOfWaitIsAbandonedAtOnceOrAtTheTimeLimit) {
    std::vector<std::string> urls{server_.Url("/headers")};
#ifndef _WIN32 // where a test can make neither stall
    const StalledListener silent;
    const StalledLookUp lookUp("stalled.test");
    urls.insert(urls.end(), {"http://stalled.test/a", silent.Url()});
#endif
    server_.Answer("/body", {.body = Pattern(3000), .stallsAfter = 1500});
    for (const std::string& url : urls) {
        int slices = 0;
        EXPECT_EQ(nullptr, Session([&] { return ++slices < 3; })->OpenUrl(url)) << url;
        EXPECT_EQ(3, slices) << url;
    }
    SetHttpTimeLimit(std::chrono::milliseconds(200));
    for (const std::string& url : urls) ExpectNothingAt(url);
    for (const bool abandoned : {true, false}) { // what came before the end of the wait is not lost
        int idle = 0;
        const auto session = Session([&] { return !abandoned || server_.BytesSent("/body") < 1500 || idle++ == 0; });
        const auto url = session->OpenUrl(server_.Url("/body"));
        const WholeBody body = ReadAll(*url);
        EXPECT_EQ(HttpBody::End::Failed, body.end);
        EXPECT_EQ(Pattern(kOnWindows ? 1024 : 1500), body.bytes); // its layer waits for whole blocks
    }
}

#ifndef _WIN32
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
    EXPECT_NE(nullptr, Session(handler)->OpenUrl(url));

    lookUp.emplace("slow.here.test");
    TransferControl control("KlnUpdt");
    control.SetUrl(url);
    control.ExecuteGet();
    while (control.StillExecuting()) handler();
    EXPECT_THAT(control.GetHeader(), StartsWith("HTTP/1.1 200"));
}
#endif

TEST_F(HttpTest, TheProbeBringsTheFinalHeadersAndNoBody) {
    server_.Answer("/a", {.headers = {{"X-Empty", ""}, {"X-Two", "  two words "}}, .filling = 100 * kMegabyte});
    server_.Answer("/hints", {.informational = "HTTP/1.1 103 Early Hints\r\n\r\n"});
    server_.Redirect("/moved", "/a");
    TransferControl control("KlnUpdt");
    EXPECT_EQ("", control.GetHeader());
    const std::string whole =
        "HTTP/1.1 200 OK\r\nX-Empty: \r\nX-Two:   two words \r\nContent-Length: 104857600\r\n\r\n";
    for (const char* target : {"/a", "/moved"}) {
        const std::string headers = Probe(control, server_.Url(target));
        EXPECT_THAT(headers, StartsWith("HTTP/1.1 200 OK\r\n")) << target;
        EXPECT_TRUE(kOnWindows || headers == whole) << target; // its layer trims the values
        EXPECT_EQ("104857600", control.GetHeader("content-LENGTH"));
        EXPECT_EQ("two words", control.GetHeader("X-Two"));
        EXPECT_EQ("", control.GetHeader("X-Empty") + control.GetHeader("Content"));
        EXPECT_TRUE(kOnWindows || server_.AllAnswersEnded()) << target;
    }
    if (!kOnWindows) {                                      // whose layer empties a connection that it keeps
        EXPECT_LT(server_.BytesSent("/a"), 32 * kMegabyte); // two probes: what the system's own buffers hold
    }
    EXPECT_THAT(Probe(control, server_.Url("/gone")), StartsWith("HTTP/1.1 404 Not Found\r\n"));
    if (!kOnWindows) { // the test host takes the hints for the answer
        EXPECT_THAT(Probe(control, server_.Url("/hints")), StartsWith("HTTP/1.1 200 OK\r\n"));
    }

    control.SetUrl(server_.Url("/headers"));
    control.ExecuteGet();
    while (server_.Targets().back() != "/headers") EXPECT_TRUE(control.StillExecuting());
    control.Cancel();
    EXPECT_FALSE(control.StillExecuting());
    EXPECT_TRUE(kOnWindows || server_.AllAnswersEnded());
}

} // namespace
