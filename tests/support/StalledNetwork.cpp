#include "tests/support/StalledNetwork.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <stdexcept>

namespace {

std::mutex mutex;
std::condition_variable changed;
std::string stalledName; // "" = none is held
int held = 0;

} // namespace

// Stands in front of the system's own, which it calls for every name outside ".test".
extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
    const std::string name = node ? node : "";
    std::unique_lock lock(mutex);
    ++held;
    changed.wait(lock, [&] { return name.empty() || stalledName != name; });
    --held;
    changed.notify_all();
    lock.unlock();
    static const auto systemLookUp = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    if (name.ends_with(".here.test")) return systemLookUp("127.0.0.1", service, hints, result);
    if (name.ends_with(".test")) return EAI_NONAME; // never asks a network
    return systemLookUp(node, service, hints, result);
}

namespace korlan::test {

StalledListener::StalledListener() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* general = reinterpret_cast<sockaddr*>(&address);
    sockets_.push_back(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (bind(sockets_[0], general, size) != 0 || listen(sockets_[0], 0) != 0 ||
        getsockname(sockets_[0], general, &size) != 0)
        throw std::runtime_error("no socket that stalls");
    url_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/a";
    for (int i = 0; i < 4; ++i) {
        sockets_.push_back(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        connect(sockets_.back(), general, size);
    }
}

StalledListener::~StalledListener() {
    for (const int socket : sockets_) close(socket);
}

StalledLookUp::StalledLookUp(const std::string& name) {
    const std::lock_guard lock(mutex);
    stalledName = name;
}

StalledLookUp::~StalledLookUp() {
    std::unique_lock lock(mutex);
    stalledName.clear();
    changed.notify_all();
    changed.wait(lock, [] { return held == 0; });
}

} // namespace korlan::test
