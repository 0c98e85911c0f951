// A real X server without a screen, and windows of another program on it. $DISPLAY points to the server while the
// object lives. A program that cannot be started throws: the test fails, it does not pass by.
#pragma once

#include <sys/types.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korlan::test {

// A child process, ended with the object.
class ChildProcess {
public:
    explicit ChildProcess(std::vector<const char*> command);
    ChildProcess(const ChildProcess&) = delete;
    ~ChildProcess() { End(); }
    void End();                    // by a signal
    std::optional<int> ExitCode(); // nothing while it runs; -1 when a signal ended it
    void Wait() { Reap(0); }

private:
    void Reap(int options);
    pid_t pid_;
    std::optional<int> exitCode_;
};

class XServer {
public:
    XServer();
    ~XServer() { unsetenv("DISPLAY"); }
    void Stop() { process_.End(); }

private:
    std::string OpenPipe();

    int ready_[2]; // the server writes its display's number into it
    const std::string write_ = OpenPipe();
    ChildProcess process_{{"Xvfb", "-displayfd", write_.c_str(), "-screen", "0", "1024x768x24", "-nolisten", "tcp"}};
};

// Another program: its own connection, its own windows. Everything it reads comes from the server, not from the code
// under test.
class OtherProgram {
public:
    OtherProgram();
    OtherProgram(const OtherProgram&) = delete;
    ~OtherProgram() { xcb_disconnect(connection_); }

    xcb_window_t Root() const { return root_; }
    xcb_atom_t Atom(const std::string& name) const;

    // A window of 200 by 100 at 10, 20 that shows itself to a window manager when `shown`.
    xcb_window_t MakeWindow(const std::string& title, bool shown) const;
    void AskToClose(xcb_window_t window) const; // as a window manager does for the close box
    void Destroy(xcb_window_t window) const;
    void SetProperty(xcb_window_t window, const std::string& name, const std::string& type, const std::string& bytes,
                     std::uint8_t bits = 8) const;
    void SetNumbers(xcb_window_t window, const std::string& name, const std::string& type,
                    const std::vector<std::uint32_t>& values) const {
        SetProperty(window, name, type, {reinterpret_cast<const char*>(values.data()), values.size() * 4}, 32);
    }

    std::string TextProperty(xcb_window_t window, const std::string& name) const;
    std::vector<std::uint32_t> NumberProperty(xcb_window_t window, const std::string& name) const;
    bool Exists(xcb_window_t window) const { return Parent(window) != 0; }
    bool Viewable(xcb_window_t window) const;
    xcb_window_t Parent(xcb_window_t window) const;
    std::vector<xcb_window_t> TopDown() const;      // children of the root, top first
    bool IsAskedToClose(xcb_window_t window) const; // waits for it
    void Sync() const { Parent(root_); }            // whatever is answered, all requests before it are done

private:
    xcb_connection_t* connection_;
    xcb_window_t root_;
};

// True as soon as the condition holds, false when it does not within five seconds.
template <class Condition>
bool Eventually(Condition condition) {
    for (int i = 0; i < 500; ++i, usleep(10000))
        if (condition()) return true;
    return false;
}

} // namespace korlan::test
