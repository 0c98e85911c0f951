// HTTP in the shape of the Windows internet layer: a session, an opened URL, reads in blocks; and the transfer control
// that asks for status and headers only. http and https, nothing else, redirects (at most 20) included. No cache;
// bodies as sent, never unpacked; the system's proxy settings; certificates are verified for https. All calls come from
// one thread; a call may be made from within the wait of another.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace korlan {

// Called at least every 50 ms while a call of this header waits. False abandons the wait: the call fails at once.
using WaitSlice = std::function<bool()>;

using HttpHandle = std::int32_t; // 0 = none

// The longest time to connect and the longest time without a byte, 60 s unless set; both an ordinary failure.
void SetHttpTimeLimit(std::chrono::milliseconds limit);

// `agent` is the User-Agent text. Never blocks. 0 when the host gives no session.
HttpHandle OpenHttpSession(const std::string& agent, WaitSlice wait);

// Sends a GET and waits for the headers of the final answer. 0 when the address is malformed, nobody answers, the
// status is 400 or above or the wait is abandoned. The address goes out as it stands but for blanks (%20; trailing ones
// go), backslashes before the query (/) and bytes above 127 (percent form). Of a body that nobody reads a few hundred
// KB are fetched, not more.
HttpHandle OpenHttpUrl(HttpHandle session, const std::string& url);

// Waits until `block` is full or the body ends. read = 0 with true is the end of the body, which a broken connection
// looks like too; false (read = 0) is a closed handle, an abandoned wait or the time limit.
bool ReadHttpBlock(HttpHandle url, std::span<char> block, std::size_t& read);

// Closing a session closes every URL opened in it.
void CloseHttpHandle(HttpHandle handle);

// One GET whose body is never read: it ends, connection included, when the headers of the final answer are in.
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
