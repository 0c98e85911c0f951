#include "tests/support/HttpServer.h"
#include "tests/support/Sockets.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <sstream>
#include <stdexcept>

namespace korlan::test {
namespace {

SocketHandle Handle(int socket) {
    return static_cast<SocketHandle>(socket);
}

#ifdef _WIN32
using Size = int;
#else
using Size = std::size_t;
#endif
Size SizeOf(const auto& bytes) {
    return static_cast<Size>(bytes.size());
}

// A socket connected to itself: what it says, it hears. Below 0 when there is none.
int TalkingToItself() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* general = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    const int socket = NewSocket(AF_INET, SOCK_DGRAM);
    const bool well = socket >= 0 && bind(Handle(socket), general, size) == 0 &&
                      getsockname(Handle(socket), general, &size) == 0 && connect(Handle(socket), general, size) == 0;
    return well ? socket : -1;
}

} // namespace

HttpServer::HttpServer(Family family) {
    sockaddr_in four{};
    four.sin_family = AF_INET;
    four.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    sockaddr_in6 six{};
    six.sin6_family = AF_INET6;
    six.sin6_addr = in6addr_loopback;
    const bool isFour = family == Family::Four;
    auto* general = isFour ? reinterpret_cast<sockaddr*>(&four) : reinterpret_cast<sockaddr*>(&six);
    socklen_t size = isFour ? sizeof four : sizeof six;
    listener_ = NewSocket(general->sa_family, SOCK_STREAM);
    stop_ = TalkingToItself();
    if (listener_ < 0 || stop_ < 0 || bind(Handle(listener_), general, size) != 0 ||
        listen(Handle(listener_), 64) != 0 || getsockname(Handle(listener_), general, &size) != 0)
        throw std::runtime_error("the test server has no socket");
    base_ = (isFour ? "http://127.0.0.1:" : "http://[::1]:") +
            std::to_string(ntohs(isFour ? four.sin_port : six.sin6_port));
    acceptor_ = std::thread([this] { AcceptLoop(); });
}

HttpServer::~HttpServer() {
    send(Handle(stop_), "x", 1, 0); // to itself, where nobody reads it: ends every wait
    acceptor_.join();
    for (std::thread& connection : connections_) connection.join();
    CloseSocket(listener_);
    CloseSocket(stop_);
}

std::string HttpServer::Url(const std::string& target) const {
    return base_ + target;
}

void HttpServer::Answer(const std::string& target, HttpAnswer answer) {
    const std::lock_guard lock(mutex_);
    answers_[target] = std::move(answer);
}

void HttpServer::Redirect(const std::string& target, const std::string& location, int status) {
    Answer(target, {.status = status, .reason = "Moved", .headers = {{"Location", location}}, .body = "moved"});
}

std::vector<HttpRequest> HttpServer::Requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::vector<std::string> HttpServer::Targets() const {
    std::vector<std::string> targets;
    for (const HttpRequest& request : Requests()) targets.push_back(request.target);
    return targets;
}

std::uint64_t HttpServer::BytesSent(const std::string& target) const {
    const std::lock_guard lock(mutex_);
    const auto found = bytesSent_.find(target);
    return found == bytesSent_.end() ? 0 : found->second;
}

std::size_t HttpServer::Connections() const {
    const std::lock_guard lock(mutex_);
    return connections_.size();
}

bool HttpServer::AllAnswersEnded() const {
    std::unique_lock lock(mutex_);
    return ended_.wait_for(lock, std::chrono::seconds(10), [this] { return underWay_ == 0; });
}

// Waits for one of the events; false when the server ends.
bool HttpServer::WaitFor(int socket, short events) const {
    std::array<pollfd, 2> waited{{{Handle(socket), events, 0}, {Handle(stop_), POLLIN, 0}}};
    while (PollSockets(waited.data(), waited.size()) < 0) { // a signal
    }
    return waited[1].revents == 0;
}

void HttpServer::AcceptLoop() {
    while (WaitFor(listener_, POLLIN)) {
        const int socket = AcceptSocket(listener_);
        if (socket < 0) continue;
        const int on = 1;
        setsockopt(Handle(socket), IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
        const std::lock_guard lock(mutex_);
        connections_.emplace_back([this, socket] { Serve(socket); });
    }
}

void HttpServer::Serve(int socket) {
    std::string head;
    bool goesOn = true;
    while (goesOn && ReadHead(socket, head)) {
        const std::size_t from = head.find(' ') + 1;
        const std::string target = head.substr(from, head.find(' ', from) - from);
        HttpAnswer answer{.status = 404, .reason = "Not Found", .body = "no such page"};
        {
            const std::lock_guard lock(mutex_);
            ++underWay_;
            requests_.push_back({target, head});
            if (const auto found = answers_.find(target); found != answers_.end()) answer = found->second;
        }
        goesOn = SendAnswer(socket, target, answer);
        const std::lock_guard lock(mutex_);
        --underWay_;
        ended_.notify_all();
    }
    CloseSocket(socket);
}

bool HttpServer::ReadHead(int socket, std::string& head) const {
    head.clear();
    std::array<char, 4096> bytes;
    while (!head.ends_with("\r\n\r\n")) {
        if (!WaitFor(socket, POLLIN)) return false;
        const ssize_t count = recv(Handle(socket), bytes.data(), SizeOf(bytes), 0);
        if (count <= 0) return false;
        head.append(bytes.data(), static_cast<std::size_t>(count));
        if (!head.starts_with("GET ")) return false;
    }
    return true;
}

bool HttpServer::Send(int socket, std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t count =
            WaitFor(socket, POLLOUT) ? send(Handle(socket), bytes.data(), SizeOf(bytes), MSG_NOSIGNAL) : -1;
        if (count < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

// False: nothing is left to say.
bool HttpServer::StallUntilHungUp(int socket) const {
    char byte = 0;
    while (WaitFor(socket, POLLIN) && recv(Handle(socket), &byte, 1, 0) > 0) {
    }
    return false;
}

// False when the connection is at its end.
bool HttpServer::SendAnswer(int socket, const std::string& target, const HttpAnswer& answer) {
    if (answer.stallsBeforeHeaders) return StallUntilHungUp(socket);
    std::string head =
        answer.informational + "HTTP/1.1 " + std::to_string(answer.status) + ' ' + answer.reason + "\r\n";
    for (const auto& [name, value] : answer.headers) head.append(name).append(": ").append(value).append("\r\n");
    const std::string length = answer.declaredLength.value_or(std::to_string(answer.body.size() + answer.filling));
    if (answer.chunked)
        head += "Transfer-Encoding: chunked\r\n";
    else if (!length.empty())
        head += "Content-Length: " + length + "\r\n";
    if (!Send(socket, head + "\r\n") || !SendBody(socket, target, answer)) return false;
    return answer.chunked || !length.empty();
}

bool HttpServer::SendBody(int socket, const std::string& target, const HttpAnswer& answer) {
    const std::uint64_t whole = answer.body.size() + answer.filling;
    const std::uint64_t end = std::min({whole, answer.stallsAfter.value_or(whole), answer.cutsAfter.value_or(whole)});
    std::size_t size = 0;
    for (std::uint64_t at = 0; at < end; at += size) {
        size = static_cast<std::size_t>(std::min<std::uint64_t>(end - at, answer.pieceSize));
        const auto from = static_cast<std::size_t>(std::min<std::uint64_t>(at, answer.body.size()));
        std::string piece = answer.body.substr(from, size);
        piece.resize(size, 'x');
        std::ostringstream length;
        length << std::hex << size << "\r\n";
        if (answer.chunked) piece = length.str() + piece + "\r\n";
        if (!Send(socket, piece)) return false;
        const std::lock_guard lock(mutex_);
        bytesSent_[target] += size;
    }
    if (answer.stallsAfter) return StallUntilHungUp(socket);
    return !answer.cutsAfter && (!answer.chunked || Send(socket, "0\r\n\r\n"));
}

} // namespace korlan::test
