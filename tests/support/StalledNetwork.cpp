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

struct HeldLookUps {
    std::mutex mutex;
    std::condition_variable changed;
    std::string name; // "" = none is held
    int held = 0;
};

HeldLookUps& LookUps() {
    static HeldLookUps lookUps;
    return lookUps;
}

void HoldLookUp(const std::string& name) {
    HeldLookUps& lookUps = LookUps();
    std::unique_lock lock(lookUps.mutex);
    if (lookUps.name != name) return;
    ++lookUps.held;
    lookUps.changed.wait(lock, [&] { return lookUps.name != name; });
    --lookUps.held;
    lookUps.changed.notify_all();
}

} // namespace

// Stands in front of the system's own, which it calls for every name that is not held.
extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
    if (node) HoldLookUp(node);
    using LookUp = int (*)(const char*, const char*, const addrinfo*, addrinfo**);
    static const auto systemLookUp = reinterpret_cast<LookUp>(dlsym(RTLD_NEXT, "getaddrinfo"));
    if (node && std::string_view(node).ends_with(".here.test"))
        return systemLookUp("127.0.0.1", service, hints, result);
    if (node && std::string_view(node).ends_with(".test")) return EAI_NONAME; // never asks a network
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
    port_ = ntohs(address.sin_port);
    for (int i = 0; i < 4; ++i) {
        sockets_.push_back(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        connect(sockets_.back(), general, size);
    }
}

StalledListener::~StalledListener() {
    for (const int socket : sockets_) close(socket);
}

std::string StalledListener::Url() const {
    return "http://127.0.0.1:" + std::to_string(port_) + "/a";
}

StalledLookUp::StalledLookUp(const std::string& name) {
    const std::lock_guard lock(LookUps().mutex);
    LookUps().name = name;
}

StalledLookUp::~StalledLookUp() {
    std::unique_lock lock(LookUps().mutex);
    LookUps().name.clear();
    LookUps().changed.notify_all();
    LookUps().changed.wait(lock, [] { return LookUps().held == 0; });
}

} // namespace korlan::test
