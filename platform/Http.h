// HTTP in the shape of the Windows internet layer: a session, an opened URL, reads in blocks; and the transfer control
// that asks for status and headers only. No cache; the system's proxy settings; certificates are verified for https;
// at most 20 redirects; 60 s to connect, 60 s without a byte, both an ordinary failure.
#pragma once

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

// `agent` is the User-Agent text. Never blocks.
HttpHandle OpenHttpSession(const std::string& agent, WaitSlice wait);

// Sends a GET and waits for the headers. 0 when the address is malformed, nobody answers or the status is 400 or above.
// The text is sent as it stands but for blanks (%20) and backslashes (/).
HttpHandle OpenHttpUrl(HttpHandle session, const std::string& url);

// Waits until `block` is full or the body ends. read = 0 with true is the end of the body, which a broken connection
// looks like too; false is a closed handle or an abandoned wait.
bool ReadHttpBlock(HttpHandle url, std::span<char> block, std::size_t& read);

// Closing a session closes every URL opened in it.
void CloseHttpHandle(HttpHandle handle);

// One GET whose body is never read: it ends when the headers of the final answer are in.
class TransferControl {
public:
    explicit TransferControl(const std::string& agent);
    ~TransferControl();
    TransferControl(const TransferControl&) = delete;
    TransferControl& operator=(const TransferControl&) = delete;
    void SetUrl(const std::string& url);
    void ExecuteGet();
    bool StillExecuting(); // turns the transfer for at most 50 ms
    // All headers with the status line first ("" when nothing came), or the value of one ("" when missing).
    std::string GetHeader(const std::string& name = {}) const;
    void Cancel();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace korlan
