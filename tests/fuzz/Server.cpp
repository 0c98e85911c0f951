// Answers of a web server, byte for byte: the input is what comes back on every connection. Every host name leads to
// it, so that no redirect reaches anything else.
#include "platform/Http.h"
#include "tests/fuzz/Target.h"
#include "transfer/HttpTransfer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <mutex>
#include <thread>

using namespace korlan;
using namespace korlan::test;

namespace {

class RawServer {
public:
    RawServer() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* general = reinterpret_cast<sockaddr*>(&address);
        listener_ = socket(AF_INET, SOCK_STREAM, 0);
        Require(bind(listener_, general, length) == 0 && listen(listener_, 64) == 0, "a socket");
        getsockname(listener_, general, &length);
        url_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
        for (const char* proxy : {"http_proxy", "https_proxy", "all_proxy"}) setenv(proxy, url_.c_str(), 1);
        setenv("no_proxy", "", 1);
        SetHttpTimeLimit(std::chrono::seconds(2));
        std::thread([this] { Serve(); }).detach();
    }
    void SetAnswer(std::string_view answer) {
        const std::lock_guard lock(mutex_);
        answer_ = answer;
    }
    const std::string& Url() const { return url_; }

private:
    void Serve() {
        for (int client; (client = accept(listener_, nullptr, nullptr)) >= 0; close(client)) {
            char byte = 0;
            for (int ends = 0; ends < 4 && recv(client, &byte, 1, 0) == 1;)
                ends = (byte == '\r' || byte == '\n') ? ends + 1 : 0;
            const std::lock_guard lock(mutex_);
            send(client, answer_.data(), answer_.size(), MSG_NOSIGNAL);
        }
    }
    int listener_;
    std::string url_, answer_;
    std::mutex mutex_;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static RawServer& server = *new RawServer;
    StartFresh();
    server.SetAnswer(Bytes(data, size));
    std::int32_t length = -1, done = 0;
    bool exists = false;
    MayBeRefused([&] { GetWebFileInformation(server.Url() + "/A.zip", length, exists); });
    DownloadFile(server.Url() + "/A.zip", "C:\\KORLAN\\Temp\\A.zip", done, 10, "A", 1);
    Require(done == 0 || Drive().Read("KORLAN/Temp/A.zip").size() <= size, "no more than was sent");
    return 0;
}
