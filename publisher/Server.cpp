#include "publisher/Server.h"

#include "app/base/TextHelpers.h"
#include "platform/Http.h"
#include "platform/RuntimeError.h"
#include "publisher/Files.h"

#include <array>
#include <fstream>
#include <limits>

namespace korlan::publisher {

namespace fs = std::filesystem;

namespace {

constexpr const char* kAgent = "klnpub";

class ServedFolder final : public Server {
public:
    explicit ServedFolder(const fs::path& folder) : folder_(folder) { RequireFolder(folder); }

    Fetched Get(const std::string& name) override {
        const fs::path file = folder_ / Replace(name, "\\", "/");
        std::error_code error;
        if (!fs::is_regular_file(file, error)) return {{}, "it is not there"};
        const std::uintmax_t size = fs::file_size(file, error);
        if (!std::ifstream(file)) return {{}, "it cannot be read"};
        return {file, "", static_cast<std::int64_t>(size), size};
    }

private:
    fs::path folder_;
};

class ServedAddress final : public Server {
public:
    explicit ServedAddress(std::string address) : address_(std::move(address)), scratch_(fs::temp_directory_path()) {
        while (address_.ends_with('/')) address_.pop_back();
    }

    Fetched Get(const std::string& name) override {
        const std::string url = Replace(address_ + "/" + name, "#", "%23"); // as the wizard asks for it
        TransferControl probe(kAgent);
        probe.SetUrl(url);
        probe.ExecuteGet();
        while (probe.StillExecuting()) {
        }
        const std::string head = probe.GetHeader();
        if (head.size() < 12) return {{}, "the server does not answer"};
        if (head[9] != '2') return {{}, "the server answers " + head.substr(9, head.find_first_of("\r\n") - 9)};
        return Body(url, LengthFrom(probe.GetHeader("Content-Length")));
    }

    void Drop(const Fetched& fetched) override {
        std::error_code ignored;
        fs::remove(fetched.file, ignored);
    }

private:
    static std::int64_t LengthFrom(const std::string& header) {
        const bool isNumber = !header.empty() && header.find_first_not_of("0123456789") == std::string::npos;
        return isNumber && header.size() < 18 ? std::stoll(header) : -1;
    }

    Fetched Body(const std::string& url, std::int64_t length) {
        constexpr std::uintmax_t kMost = std::numeric_limits<std::int32_t>::max(); // a wizard counts no further
        const auto session = OpenHttpSession(kAgent, [] { return true; });
        const auto body = session ? session->OpenUrl(url) : nullptr;
        if (!body) return {{}, "the server does not answer a second time"};
        const fs::path file = scratch_.Path() / std::to_string(++count_);
        std::ofstream out(file, std::ios::binary);
        std::array<char, 65536> block;
        std::uintmax_t received = 0;
        HttpBody::End end = HttpBody::End::None;
        while (end == HttpBody::End::None && received <= kMost) {
            std::size_t read = 0;
            end = body->Read(block, read);
            out.write(block.data(), static_cast<std::streamsize>(read));
            received += read;
        }
        if (!out.flush())
            throw RuntimeError(kErrDiskFull, "no room for what is fetched in " + scratch_.Path().string());
        if (end == HttpBody::End::Failed)
            return {{}, "the server stops sending after " + std::to_string(received) + " bytes"};
        return {file, "", length, received};
    }

    std::string address_;
    ScratchFolder scratch_;
    int count_ = 0;
};

} // namespace

std::unique_ptr<Server> OpenServer(const std::string& where) {
    if (where.starts_with("http://") || where.starts_with("https://")) return std::make_unique<ServedAddress>(where);
    return std::make_unique<ServedFolder>(where);
}

} // namespace korlan::publisher
