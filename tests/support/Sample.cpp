#include "tests/support/Sample.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

namespace korlan::test {

namespace {

namespace fs = std::filesystem;

fs::path MakeOut() {
    std::string name = (fs::temp_directory_path() / "kln-sample-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("cannot make " + name);
    fs::permissions(name, fs::perms(0755)); // the server runs as somebody else
    for (const char* folder : {"config", "cache"}) fs::create_directory(fs::path(name) / folder);
    return name;
}

sockaddr_in Loopback(int port) {
    return {AF_INET, htons(static_cast<std::uint16_t>(port)), {htonl(INADDR_LOOPBACK)}, {}};
}

int FreePort() {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    auto [address, size] = std::pair{Loopback(0), socklen_t{sizeof(sockaddr_in)}};
    bind(listener, reinterpret_cast<sockaddr*>(&address), size);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    close(listener);
    return ntohs(address.sin_port);
}

bool Answers(int port) {
    const int client = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = Loopback(port);
    const int refused = connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return close(client), refused == 0;
}

std::string Read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

int Shell(const std::string& command) {
    return std::system(command.c_str());
}

} // namespace

Sample::Sample(int country, const std::string& options)
    : out_(MakeOut()), port_(FreePort()), drives_("KLN_DRIVES", (out_ / "drives").string()),
      config_("XDG_CONFIG_HOME", (out_ / "config").string()), cache_("XDG_CACHE_HOME", (out_ / "cache").string()),
      state_("XDG_STATE_HOME", (out_ / "state").string()) {
    const std::string command = KLN_SOURCE "/sample/layout.py " + out_.string() + " " + std::to_string(port_) +
                                " " KLN_BUILD " --country " + std::to_string(country) + " " + options;
    if (Shell(command) != 0) throw std::runtime_error("failed: " + command);
    Serve();
}

void Sample::Serve() {
    if ((server_ = fork()) == 0) {
        execl(KLN_SOURCE "/sample/serve", "serve", out_.c_str(), nullptr);
        _exit(127);
    }
    for (int attempt = 0; attempt < 200 && !Answers(port_); ++attempt) usleep(50000);
    if (!Answers(port_)) throw std::runtime_error("the sample's server does not answer");
}

void Sample::StopServer() {
    if (server_ <= 0) return;
    kill(server_, SIGTERM);
    waitpid(server_, nullptr, 0);
    server_ = -1;
}

Sample::~Sample() {
    StopServer();
    std::error_code ignored;
    fs::remove_all(out_, ignored);
}

std::string Sample::Ini() const {
    return Read(Program() / "SYS" / "TESSARY.INI");
}

bool Sample::Logged(const std::string& text) const {
    return Read(out_ / "state" / "korlan" / "klnupdt.log").find(text) != std::string::npos;
}

int Sample::Compare(const std::string& command) const {
    return Shell(KLN_SOURCE "/sample/compare.py " + command + " " + out_.string());
}

} // namespace korlan::test
