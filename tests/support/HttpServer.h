// A small real HTTP server on the loopback, one thread a connection, whose misbehaviour is data: what a path answers,
// where it stalls, where it hangs up. It keeps what was asked, and counts connections and bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace korlan::test {

struct HttpAnswer {
    int status = 200;
    std::string reason = "OK";
    std::vector<std::pair<std::string, std::string>> headers{};
    std::string body{};
    std::uint64_t filling = 0;                   // that many 'x' behind the body, made while they are sent
    std::optional<std::string> declaredLength{}; // other than the true one; "" = no Content-Length at all
    bool chunked = false;
    std::size_t pieceSize = 65536;              // of one chunk, or of one write
    bool stallsBeforeHeaders = false;           // a stall lasts until the client hangs up
    std::optional<std::uint64_t> stallsAfter{}; // body bytes
    std::optional<std::uint64_t> cutsAfter{};   // body bytes; then the connection is closed
    std::string informational{};                // sent before the answer, "HTTP/1.1 103 Early Hints\r\n\r\n"
};

struct HttpRequest {
    std::string target; // as it stood in the request line
    std::string head;   // request line and headers
};

class HttpServer {
public:
    enum class Family { Four, Six };
    explicit HttpServer(Family family = Family::Four);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    std::string Url(const std::string& target = {}) const; // "http://127.0.0.1:port" or "http://[::1]:port" + target

    // What a request target answers; any other target gets 404.
    void Answer(const std::string& target, HttpAnswer answer);
    void Redirect(const std::string& target, const std::string& location, int status = 302);

    std::vector<HttpRequest> Requests() const;
    std::vector<std::string> Targets() const;
    std::uint64_t BytesSent(const std::string& target) const; // of bodies
    std::size_t Connections() const;                          // accepted so far
    // Waits until each answer has gone out whole or its client has hung up; false when one has not after ten seconds.
    bool AllAnswersEnded() const;

private:
    void AcceptLoop();
    void Serve(int socket);
    bool ReadHead(int socket, std::string& head) const;
    bool Send(int socket, std::string_view bytes) const;
    bool StallUntilHungUp(int socket) const;
    bool SendAnswer(int socket, const std::string& target, const HttpAnswer& answer);
    bool SendBody(int socket, const std::string& target, const HttpAnswer& answer);
    bool WaitFor(int socket, short events) const;

    int listener_ = -1;
    std::string base_; // of every address
    int stop_ = -1;    // readable once the server ends
    mutable std::mutex mutex_;
    mutable std::condition_variable ended_;
    std::map<std::string, HttpAnswer> answers_;
    std::map<std::string, std::uint64_t> bytesSent_;
    std::vector<HttpRequest> requests_;
    int underWay_ = 0; // answers
    std::vector<std::thread> connections_;
    std::thread acceptor_;
};

} // namespace korlan::test
