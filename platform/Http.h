// HTTP in two objects: a session, and the body of an address opened in it, read in blocks; and the transfer control
// that asks for status and headers only. http and https, nothing else, redirects (at most 20) included. No cache;
// bodies as sent, never unpacked; the system's proxy settings; certificates are verified for https, and only https may
// follow https. All calls come from one thread; a call may be made from within the wait of another, but no body is
// destroyed within its own wait and no session within one of its OpenUrl.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace korlan {

// Called at least every 50 ms while a call of this header waits. False abandons the wait: the call fails at once.
using WaitSlice = std::function<bool()>;

// The longest time to connect and the longest time without a byte, 60 s unless set; both an ordinary failure.
void SetHttpTimeLimit(std::chrono::milliseconds limit);

class HttpBody {
public:
    enum class End {
        None,   // the block is full
        OfBody, // the body ended, which a broken connection looks like too
        Failed, // the session was closed, the wait abandoned, or the time limit reached
    };
    virtual ~HttpBody() = default; // closes
    // Waits until `block` is full or nothing more comes. read: the bytes received, also beside OfBody and Failed.
    virtual End Read(std::span<char> block, std::size_t& read) = 0;
};

class HttpSession {
public:
    virtual ~HttpSession() = default; // closes every body opened in it
    // Sends a GET and waits for the headers of the final answer. Null when the address is malformed, nobody answers,
    // the status is 400 or above or the wait is abandoned. The address goes out as it stands but for blanks (%20;
    // trailing ones go), backslashes before the query (/) and bytes above 127 (percent form). Of a body that nobody
    // reads a few hundred KB are fetched, not more.
    virtual std::unique_ptr<HttpBody> OpenUrl(const std::string& url) = 0;
};

// `agent` is the User-Agent text. Never blocks. Null when the host gives no session.
std::unique_ptr<HttpSession> OpenHttpSession(const std::string& agent, WaitSlice wait);

// One GET whose body is never read: it ends when the headers of the final answer are in, and so does its connection,
// unless the body has come whole with them.
class TransferControl {
public:
    explicit TransferControl(const std::string& agent);
    ~TransferControl();
    TransferControl(const TransferControl&) = delete;
    TransferControl& operator=(const TransferControl&) = delete;
    void SetUrl(const std::string& url);
    void ExecuteGet();
    bool StillExecuting(); // turns the transfer for at most 50 ms
    // All headers of the final answer with the status line first ("" when there was no such answer), or the value of
    // one ("" when missing). Characters 10 to 12 of the whole text are the status code.
    std::string GetHeader(const std::string& name = {}) const;
    void Cancel();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace korlan
