// platform/Http.h on libcurl's multi interface, turned by the caller's own reads. All sessions share one CURLM, and
// with it the connections: that of an answer which has come whole serves the next request.
#include "platform/Http.h"

#include "platform/AsciiText.h"
#include "platform/HttpText.h"
#include "platform/RuntimeError.h"

#include <curl/curl.h>
#include <dlfcn.h>

#include <algorithm>
#include <csignal>
#include <set>
#include <string_view>
#include <vector>

namespace korlan {
namespace {

using SteadyClock = std::chrono::steady_clock;

// A procedure of libcurl, found when it is first called. The library brings twenty others; linked, they would all be
// loaded before the window.
template <typename Procedure>
class LateProcedure {
public:
    explicit constexpr LateProcedure(const char* name) : name_(name) {}
    template <typename... Arguments>
    auto operator()(Arguments... arguments) const {
        if (!procedure_) {
            static const void* const library = dlopen("libcurl.so.4", RTLD_LAZY | RTLD_GLOBAL);
            procedure_ = library ? reinterpret_cast<Procedure*>(dlsym(RTLD_DEFAULT, name_)) : nullptr;
            if (!procedure_) throw RuntimeError(kErrFileNotFound, "File not found: libcurl.so.4");
        }
        return procedure_(arguments...);
    }

private:
    const char* name_;
    mutable Procedure* procedure_ = nullptr;
};

#define KLN_LATE(name) const auto name = LateProcedure<decltype(::name)>(#name)
KLN_LATE(curl_global_init);
KLN_LATE(curl_easy_init);
KLN_LATE(curl_easy_setopt);
KLN_LATE(curl_easy_getinfo);
KLN_LATE(curl_easy_pause);
KLN_LATE(curl_easy_strerror);
KLN_LATE(curl_easy_cleanup);
KLN_LATE(curl_multi_init);
KLN_LATE(curl_multi_add_handle);
KLN_LATE(curl_multi_perform);
KLN_LATE(curl_multi_poll);
KLN_LATE(curl_multi_info_read);
KLN_LATE(curl_multi_remove_handle);
KLN_LATE(curl_multi_cleanup);
#undef KLN_LATE

constexpr long kReceiveBytes = 64L * 1024; // one receive of the socket

struct MultiCleanup {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

CURLM* Multi() { // null when the library does not start
    static const auto multi = [] {
        // A server that hangs up while TLS says goodbye must not end the program.
        struct sigaction current {};
        if (sigaction(SIGPIPE, nullptr, &current) == 0 && current.sa_handler == SIG_DFL) std::signal(SIGPIPE, SIG_IGN);
        curl_global_init(CURL_GLOBAL_DEFAULT);
        return std::unique_ptr<CURLM, MultiCleanup>(curl_multi_init());
    }();
    return multi.get();
}

class Transfer;

// What a session and its transfers share, so that either may be closed first.
struct Network {
    std::string agent;
    WaitSlice wait;
    std::set<Transfer*> transfers;
    bool closed = false;
};

// One GET.
class Transfer {
public:
    explicit Transfer(std::shared_ptr<Network> network) : network_(std::move(network)) {}
    ~Transfer() { Stop(); }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    bool Start(const std::string& url);
    void Stop();
    // Moves every transfer on, then looks at this one's time limit.
    void Turn();
    // Leaves out of the time limits what has passed while nobody waited: a handler may have asked the user a question.
    void SkipUnwatchedTime();
    // Waits for the network, a slice at most. False when the session was closed or its owner abandons the wait.
    bool Wait();

    bool Answered() const { return answered_; } // the final answer's headers are in
    bool Finished() const { return finished_; } // nothing more will come
    bool TimedOut() const { return timedOut_; }
    bool Closed() const { return network_->closed; }
    long Status() const;
    const std::string& Headers() const { return headers_; }
    void RestartClock() { lastByte_ = SteadyClock::now(); }

    std::size_t Available() const { return body_.size() - taken_; }
    std::size_t Take(std::span<char> block);

private:
    static std::size_t HeaderLine(char* data, std::size_t size, std::size_t count, void* self);
    static std::size_t BodyBytes(char* data, std::size_t size, std::size_t count, void* self);
    static int RequestStarts(void* self, char*, char*, int, int);
    bool AddHeaderLine(std::string_view line);
    static void CollectFinished();
    bool StartsAgain(CURLcode code);
    void Log() const;

    std::shared_ptr<Network> network_;
    CURL* easy_ = nullptr;
    std::string headers_; // of the answer that is coming in
    std::vector<char> body_;
    std::size_t taken_ = 0; // bytes at the front of body_ already read
    SteadyClock::time_point lastByte_;
    SteadyClock::time_point watched_;    // when somebody last waited for this transfer
    SteadyClock::duration unwatched_{0}; // since the start
    bool secure_ = false;                // the last request went over https
    bool headersComplete_ = false;
    bool answered_ = false;
    bool finished_ = false;
    bool paused_ = false;
    bool timedOut_ = false;
    std::string failure_; // in the library's words
};

bool Transfer::Start(const std::string& url) {
    const std::string wire = WireUrl(url);
    if (!wire.empty()) easy_ = curl_easy_init();
    if (!easy_) {
        finished_ = true;
        return false;
    }
    curl_easy_setopt(easy_, CURLOPT_URL, wire.c_str());
    curl_easy_setopt(easy_, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(easy_, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy_, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy_, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy_, CURLOPT_MAXREDIRS, long{kRedirectLimit});
    curl_easy_setopt(easy_, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(easy_, CURLOPT_USERAGENT, network_->agent.c_str());
    curl_easy_setopt(easy_, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(easy_, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(httpTimeLimit.count()));
    curl_easy_setopt(easy_, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy_, CURLOPT_QUICK_EXIT, 1L); // giving up does not wait for a name look-up under way
    curl_easy_setopt(easy_, CURLOPT_BUFFERSIZE, kReceiveBytes);
    curl_easy_setopt(easy_, CURLOPT_PRIVATE, this);
    curl_easy_setopt(easy_, CURLOPT_HEADERFUNCTION, &HeaderLine);
    curl_easy_setopt(easy_, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, &BodyBytes);
    curl_easy_setopt(easy_, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy_, CURLOPT_PREREQFUNCTION, &RequestStarts);
    curl_easy_setopt(easy_, CURLOPT_PREREQDATA, this);
    RestartClock();
    watched_ = lastByte_;
    network_->transfers.insert(this);
    finished_ = curl_multi_add_handle(Multi(), easy_) != CURLM_OK;
    return !finished_;
}

void Transfer::Stop() {
    if (!easy_) return;
    Log();
    network_->transfers.erase(this);
    curl_multi_remove_handle(Multi(), easy_);
    curl_easy_cleanup(easy_);
    easy_ = nullptr;
    finished_ = true;
}

void Transfer::Log() const {
    const char* address = nullptr;
    curl_off_t bytes = 0;
    curl_easy_getinfo(easy_, CURLINFO_EFFECTIVE_URL, &address);
    curl_easy_getinfo(easy_, CURLINFO_SIZE_DOWNLOAD_T, &bytes);
    LogRequest(address ? address : "", Status(), static_cast<std::uint64_t>(bytes), timedOut_, failure_);
}

void Transfer::Turn() {
    if (finished_) return;
    SkipUnwatchedTime();
    int running = 0;
    const bool well = curl_multi_perform(Multi(), &running) == CURLM_OK;
    CollectFinished();
    watched_ = SteadyClock::now();
    if (finished_) return;
    timedOut_ = watched_ - lastByte_ > httpTimeLimit;
    finished_ = timedOut_ || !well;
}

void Transfer::SkipUnwatchedTime() {
    const SteadyClock::duration skipped = SteadyClock::now() - watched_;
    lastByte_ += skipped;
    unwatched_ += skipped;
    const auto limit = httpTimeLimit + std::chrono::duration_cast<std::chrono::milliseconds>(unwatched_);
    if (!answered_) curl_easy_setopt(easy_, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limit.count()));
}

void Transfer::CollectFinished() {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(Multi(), &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        void* transfer = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
        auto& ended = *static_cast<Transfer*>(transfer);
        const CURLcode code = message->data.result;
        if (ended.StartsAgain(code)) continue;
        ended.finished_ = true;
        if (code != CURLE_OK && !ended.answered_) ended.failure_ = curl_easy_strerror(code);
    }
}

// What a body holds beyond its declared length stays in the connection that it came by, and is no answer to the request
// that uses it next: that one is sent once more, by a connection of its own.
bool Transfer::StartsAgain(CURLcode code) {
    long connected = 0;
    curl_easy_getinfo(easy_, CURLINFO_NUM_CONNECTS, &connected);
    if (code != CURLE_UNSUPPORTED_PROTOCOL || answered_ || connected != 0) return false;
    headers_.clear();
    curl_easy_setopt(easy_, CURLOPT_FRESH_CONNECT, 1L);
    curl_multi_remove_handle(Multi(), easy_);
    return curl_multi_add_handle(Multi(), easy_) == CURLM_OK;
}

bool Transfer::Wait() {
    curl_multi_poll(Multi(), nullptr, 0U, static_cast<int>(kHttpSlice.count()), nullptr);
    watched_ = SteadyClock::now();
    if (network_->wait && !network_->wait()) return false;
    return !network_->closed;
}

long Transfer::Status() const {
    long status = 0;
    curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status);
    return status;
}

std::size_t Transfer::Take(std::span<char> block) {
    const std::size_t count = std::min(block.size(), Available());
    std::copy_n(body_.begin() + static_cast<std::ptrdiff_t>(taken_), count, block.begin());
    taken_ += count;
    if (paused_ && Available() < kKeptBytes / 2) {
        paused_ = false;
        curl_easy_pause(easy_, CURLPAUSE_CONT);
    }
    return count;
}

// Before every request: the first and those of redirects.
int Transfer::RequestStarts(void* self, char*, char*, int, int) {
    auto& transfer = *static_cast<Transfer*>(self);
    transfer.RestartClock();
    const char* scheme = nullptr;
    curl_easy_getinfo(transfer.easy_, CURLINFO_SCHEME, &scheme);
    const bool isSecure = scheme && EqualNoCase(scheme, "https");
    if (transfer.secure_ && !isSecure) return CURL_PREREQFUNC_ABORT;
    transfer.secure_ = isSecure;
    return CURL_PREREQFUNC_OK;
}

std::size_t Transfer::HeaderLine(char* data, std::size_t size, std::size_t count, void* self) {
    const std::size_t bytes = size * count;
    return static_cast<Transfer*>(self)->AddHeaderLine({data, bytes}) ? bytes : 0;
}

// False ends the transfer at once.
bool Transfer::AddHeaderLine(std::string_view line) {
    RestartClock();
    if (answered_) return true; // trailers of a chunked body
    if (headersComplete_) headers_.clear();
    headersComplete_ = Trimmed(line).empty();
    if (headers_.size() + line.size() > kHeaderBytes) return false;
    headers_ += line;
    if (!headersComplete_) return true;
    const long status = Status();
    answered_ = status >= 200 && RedirectLocation(status, headers_).empty();
    return true;
}

std::size_t Transfer::BodyBytes(char* data, std::size_t size, std::size_t count, void* self) {
    auto& transfer = *static_cast<Transfer*>(self);
    transfer.RestartClock();
    if (transfer.Available() >= kKeptBytes) {
        transfer.paused_ = true;
        return CURL_WRITEFUNC_PAUSE;
    }
    auto& body = transfer.body_;
    body.erase(body.begin(), body.begin() + static_cast<std::ptrdiff_t>(transfer.taken_));
    transfer.taken_ = 0;
    body.insert(body.end(), data, data + size * count);
    return size * count;
}

class CurlBody : public HttpBody {
public:
    explicit CurlBody(std::shared_ptr<Network> network) : transfer_(std::move(network)) {}

    bool Open(const std::string& url) {
        if (!transfer_.Start(url)) return false;
        for (transfer_.Turn(); !transfer_.Answered() && !transfer_.Finished(); transfer_.Turn())
            if (!transfer_.Wait()) return false;
        return transfer_.Answered() && !transfer_.TimedOut() && transfer_.Status() < 400;
    }

    End Read(std::span<char> block, std::size_t& read) override {
        read = transfer_.Take(block);
        while (read < block.size() && !transfer_.Finished()) {
            transfer_.Turn();
            if (transfer_.Available() == 0 && !transfer_.Finished() && !transfer_.Wait()) return End::Failed;
            read += transfer_.Take(block.subspan(read));
        }
        if (read == block.size()) return End::None;
        return transfer_.TimedOut() || transfer_.Closed() ? End::Failed : End::OfBody;
    }

private:
    Transfer transfer_;
};

class CurlSession : public HttpSession {
public:
    explicit CurlSession(std::shared_ptr<Network> network) : network_(std::move(network)) {}
    ~CurlSession() override {
        network_->closed = true;
        while (!network_->transfers.empty()) (*network_->transfers.begin())->Stop();
    }
    CurlSession(const CurlSession&) = delete;
    CurlSession& operator=(const CurlSession&) = delete;

    std::unique_ptr<HttpBody> OpenUrl(const std::string& url) override {
        auto body = std::make_unique<CurlBody>(network_);
        if (!body->Open(url)) return nullptr;
        return body;
    }

private:
    std::shared_ptr<Network> network_;
};

} // namespace

std::unique_ptr<HttpSession> OpenHttpSession(const std::string& agent, WaitSlice wait) {
    if (!Multi()) return nullptr;
    return std::make_unique<CurlSession>(std::make_shared<Network>(Network{agent, std::move(wait), {}}));
}

struct TransferControl::Impl {
    std::shared_ptr<Network> network;
    std::string url;
    std::unique_ptr<Transfer> transfer;
};

TransferControl::TransferControl(const std::string& agent) : impl_(std::make_unique<Impl>()) {
    impl_->network = std::make_shared<Network>(Network{agent, {}, {}});
}

TransferControl::~TransferControl() = default;

void TransferControl::SetUrl(const std::string& url) {
    impl_->url = url;
}

void TransferControl::ExecuteGet() {
    impl_->transfer.reset();
    if (!Multi()) return;
    impl_->transfer = std::make_unique<Transfer>(impl_->network);
    impl_->transfer->Start(impl_->url);
}

bool TransferControl::StillExecuting() {
    if (!impl_->transfer || impl_->transfer->Finished()) return false;
    const auto underWay = [this] {
        impl_->transfer->Turn();
        return !impl_->transfer->Finished() && !impl_->transfer->Answered();
    };
    if (underWay()) {
        impl_->transfer->Wait();
        if (underWay()) return true;
    }
    impl_->transfer->Stop();
    return false;
}

std::string TransferControl::GetHeader(const std::string& name) const {
    if (!impl_->transfer || !impl_->transfer->Answered()) return {};
    const std::string& headers = impl_->transfer->Headers();
    return name.empty() ? headers : std::string(HeaderValue(headers, name));
}

void TransferControl::Cancel() {
    if (impl_->transfer) impl_->transfer->Stop();
}

} // namespace korlan
