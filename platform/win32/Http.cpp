// platform/Http.h on the system's internet layer. Its calls block, so each transfer has a thread of its own that keeps
// a few hundred KB ahead; the caller waits for it in slices. A transfer that is given up is told so and ends by itself.
#include "platform/Http.h"

#include "platform/HttpText.h"

#include <windows.h>

#include <wininet.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace korlan {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::size_t kReceiveBytes = 1024; // one call of the layer

// A handle of the layer that any thread may close; closing it ends the call that runs on it.
class NetHandle {
public:
    explicit NetHandle(HINTERNET handle) : handle_(handle) {}
    NetHandle(const NetHandle&) = delete;
    NetHandle& operator=(const NetHandle&) = delete;
    ~NetHandle() { Close(); }
    HINTERNET Get() const { return handle_; }
    void Close() {
        if (const HINTERNET handle = handle_.exchange(nullptr)) InternetCloseHandle(handle);
    }

private:
    std::atomic<HINTERNET> handle_;
};

struct Session {
    std::shared_ptr<NetHandle> net;
    WaitSlice wait;
    bool closed = false;
};

std::shared_ptr<Session> NewSession(const std::string& agent, WaitSlice wait) {
    auto session = std::make_shared<Session>();
    session->net =
        std::make_shared<NetHandle>(InternetOpenA(agent.c_str(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
    session->wait = std::move(wait);
    if (!session->net->Get()) return nullptr;
    ULONG connections = 64; // the wizard opens each address twice
    for (const DWORD option : {INTERNET_OPTION_MAX_CONNS_PER_SERVER, INTERNET_OPTION_MAX_CONNS_PER_1_0_SERVER})
        InternetSetOptionA(nullptr, option, &connections, sizeof connections);
    return session;
}

std::string HeadersOf(HINTERNET request) {
    DWORD size = 0;
    HttpQueryInfoA(request, HTTP_QUERY_RAW_HEADERS_CRLF, nullptr, &size, nullptr);
    std::string headers(size, '\0');
    if (!HttpQueryInfoA(request, HTTP_QUERY_RAW_HEADERS_CRLF, headers.data(), &size, nullptr)) return {};
    headers.resize(size);
    return headers;
}

DWORD StatusOf(HINTERNET request) {
    DWORD status = 0, size = sizeof status;
    HttpQueryInfoA(request, HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status, &size, nullptr);
    return status;
}

bool IsSecure(const std::string& url) {
    return _strnicmp(url.c_str(), "https:", 6) == 0;
}

// Where an answer leads; "" when it is the final one. From https only to https.
std::string RedirectTarget(DWORD status, const std::string& headers, const std::string& url) {
    const std::string location(RedirectLocation(static_cast<long>(status), headers));
    if (location.empty()) return {};
    std::string target(url.size() + location.size() + 16, '\0');
    auto size = static_cast<DWORD>(target.size());
    if (!InternetCombineUrlA(url.c_str(), location.c_str(), target.data(), &size, ICU_NO_ENCODE)) return {};
    target.resize(size);
    return target;
}

// One GET. The thread and the caller share it, so that either may end first.
struct Transfer {
    std::mutex mutex;
    std::condition_variable changed;
    std::shared_ptr<NetHandle> net, request; // the session's handle; the answer's, once there is one
    std::string headers;                     // of the final answer
    DWORD status = 0;
    std::string body; // received and not yet read
    bool wantsBody = true;
    bool answered = false, ended = false, abandoned = false;
    std::uint64_t progress = 0; // counts answers and blocks
    std::uint64_t received = 0; // bytes of the body

    void Run(std::string url);
    bool Publish(HINTERNET handle);
    void ReceiveBody();
    void End();
};

void Transfer::End() {
    const std::lock_guard lock(mutex);
    if (request) request->Close();
    ended = true;
    changed.notify_all();
}

// Makes the answer's handle known to the caller, who may close it; false when nobody waits any more.
bool Transfer::Publish(HINTERNET handle) {
    const std::lock_guard lock(mutex);
    ++progress;
    request = std::make_shared<NetHandle>(handle);
    return handle && !abandoned;
}

void Transfer::Run(std::string url) {
    constexpr DWORD kFlags = INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_NO_AUTO_REDIRECT |
                             INTERNET_FLAG_NO_COOKIES | INTERNET_FLAG_NO_UI;
    bool again = false;
    for (int redirects = 0; redirects <= kRedirectLimit; ++redirects) {
        if (!Publish(InternetOpenUrlA(net->Get(), url.c_str(), nullptr, 0, kFlags, 0))) break;
        const std::string text = HeadersOf(request->Get());
        const DWORD code = StatusOf(request->Get());
        // The rest of a body longer than declared comes here as an answer without headers, which the layer makes up.
        if (text.find(':') == std::string::npos && !std::exchange(again, true)) continue;
        if (text.size() > kHeaderBytes || text.find(':') == std::string::npos) break;
        const std::string target = RedirectTarget(code, text, url);
        if (target.empty()) {
            {
                const std::lock_guard lock(mutex);
                headers = text;
                status = code;
                answered = code >= 200;
                changed.notify_all();
            }
            if (wantsBody) ReceiveBody();
            break;
        }
        if (WireUrl(target).empty() || (IsSecure(url) && !IsSecure(target))) break;
        url = WireUrl(target);
    }
    End();
}

// A read waits until its block is full, so the blocks are small.
void Transfer::ReceiveBody() {
    std::string block(kReceiveBytes, '\0');
    for (;;) {
        DWORD got = 0;
        if (!InternetReadFile(request->Get(), block.data(), static_cast<DWORD>(block.size()), &got) || got == 0) return;
        std::unique_lock lock(mutex);
        body.append(block, 0, got);
        received += got;
        ++progress;
        changed.notify_all();
        changed.wait(lock, [this] { return abandoned || body.size() < kKeptBytes; });
        if (abandoned) return;
    }
}

// The caller's side of a transfer.
class Waiting {
public:
    Waiting(std::shared_ptr<Session> session, const std::string& url, bool wantsBody)
        : session_(std::move(session)), transfer_(std::make_shared<Transfer>()), wire_(WireUrl(url)) {
        transfer_->net = session_->net;
        transfer_->wantsBody = wantsBody;
        transfer_->ended = wire_.empty();
        if (!wire_.empty()) std::thread([transfer = transfer_, wire = wire_] { transfer->Run(wire); }).detach();
    }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
    ~Waiting() {
        Abandon();
        const std::lock_guard lock(transfer_->mutex);
        if (!wire_.empty()) LogRequest(wire_, static_cast<long>(transfer_->status), transfer_->received, TimedOut());
    }

    Transfer& Shared() { return *transfer_; }
    bool TimedOut() const { return idle_ >= httpTimeLimit; }

    void Abandon() {
        std::shared_ptr<NetHandle> request;
        {
            const std::lock_guard lock(transfer_->mutex);
            transfer_->abandoned = true;
            request = transfer_->request;
            transfer_->changed.notify_all();
        }
        if (request) request->Close();
    }

    // Waits a slice for `done`, then lets the owner of the session work. False when there is nothing to wait for any
    // more. Only the time spent waiting here counts towards the limit: a handler may have asked the user a question.
    template <class Done>
    bool Slice(Done done) {
        {
            std::unique_lock lock(transfer_->mutex);
            if (done() || transfer_->ended) return true;
            const auto before = SteadyClock::now();
            const std::uint64_t progress = transfer_->progress;
            transfer_->changed.wait_for(lock, std::min<SteadyClock::duration>(kHttpSlice, httpTimeLimit),
                                        [&] { return done() || transfer_->ended; });
            idle_ = transfer_->progress == progress && progress == seen_ ? idle_ + (SteadyClock::now() - before)
                                                                         : SteadyClock::duration{0};
            seen_ = transfer_->progress;
            if (done() || transfer_->ended) return true;
        }
        if (TimedOut()) return false;
        return (!session_->wait || session_->wait()) && !session_->closed;
    }

private:
    std::shared_ptr<Session> session_;
    std::shared_ptr<Transfer> transfer_;
    std::string wire_;
    SteadyClock::duration idle_{0}; // waited without any progress
    std::uint64_t seen_ = 0;
};

class WebBody : public HttpBody {
public:
    WebBody(const std::shared_ptr<Session>& session, const std::string& url)
        : session_(session), waiting_(session, url, true) {}

    bool WaitForAnswer() {
        Transfer& transfer = waiting_.Shared();
        while (!transfer.answered && !transfer.ended)
            if (!waiting_.Slice([&] { return transfer.answered; })) return false;
        return transfer.answered && transfer.status < 400;
    }

    End Read(std::span<char> block, std::size_t& read) override {
        Transfer& transfer = waiting_.Shared();
        for (read = 0; !session_->closed;) {
            {
                const std::lock_guard lock(transfer.mutex);
                const std::size_t count = std::min(block.size() - read, transfer.body.size() - taken_);
                std::copy_n(transfer.body.data() + taken_, count, block.data() + read);
                Forget(transfer, count);
                read += count;
                if (read == block.size()) return End::None;
                if (transfer.ended && transfer.body.size() == taken_) return End::OfBody;
            }
            if (!waiting_.Slice([&] { return transfer.body.size() > taken_; })) break;
        }
        return End::Failed;
    }

private:
    // Bytes read go in large steps: moving the rest for every block would cost more than receiving it.
    void Forget(Transfer& transfer, std::size_t count) {
        taken_ += count;
        if (taken_ < transfer.body.size() && taken_ < kKeptBytes / 4) return;
        transfer.body.erase(0, std::exchange(taken_, 0));
        transfer.changed.notify_all();
    }

    std::shared_ptr<Session> session_;
    Waiting waiting_;
    std::size_t taken_ = 0;
};

class WebSession : public HttpSession {
public:
    explicit WebSession(std::shared_ptr<Session> session) : session_(std::move(session)) {}
    ~WebSession() override {
        session_->closed = true;
        session_->net->Close();
    }

    std::unique_ptr<HttpBody> OpenUrl(const std::string& url) override {
        auto body = std::make_unique<WebBody>(session_, url);
        if (!body->WaitForAnswer()) return nullptr;
        return body;
    }

private:
    std::shared_ptr<Session> session_;
};

} // namespace

std::unique_ptr<HttpSession> OpenHttpSession(const std::string& agent, WaitSlice wait) {
    auto session = NewSession(agent, std::move(wait));
    if (!session) return nullptr;
    return std::make_unique<WebSession>(std::move(session));
}

struct TransferControl::Impl {
    std::shared_ptr<Session> session;
    std::string url, headers;
    std::unique_ptr<Waiting> waiting;
};

TransferControl::TransferControl(const std::string& agent) : impl_(std::make_unique<Impl>()) {
    impl_->session = NewSession(agent, {});
}

TransferControl::~TransferControl() = default;

void TransferControl::SetUrl(const std::string& url) {
    impl_->url = url;
}

void TransferControl::ExecuteGet() {
    impl_->headers.clear();
    impl_->waiting.reset();
    if (impl_->session) impl_->waiting = std::make_unique<Waiting>(impl_->session, impl_->url, false);
}

bool TransferControl::StillExecuting() {
    if (!impl_->waiting) return false;
    Transfer& transfer = impl_->waiting->Shared();
    const bool goesOn = impl_->waiting->Slice([&] { return transfer.ended; });
    const std::lock_guard lock(transfer.mutex);
    if (goesOn && !transfer.ended) return true;
    if (transfer.answered) impl_->headers = transfer.headers;
    return false;
}

std::string TransferControl::GetHeader(const std::string& name) const {
    return name.empty() ? impl_->headers : std::string(HeaderValue(impl_->headers, name));
}

void TransferControl::Cancel() {
    impl_->waiting.reset();
}

} // namespace korlan
