// Two waits that a server cannot bring about: a connection nobody takes, and a name look-up that does not come back.
#pragma once

#include <string>
#include <vector>

namespace korlan::test {

// A port of 127.0.0.1 whose queue is full: connecting to it neither succeeds nor fails.
class StalledListener {
public:
    StalledListener();
    ~StalledListener();
    StalledListener(const StalledListener&) = delete;
    StalledListener& operator=(const StalledListener&) = delete;
    const std::string& Url() const { return url_; } // "http://127.0.0.1:port/a"

private:
    std::vector<int> sockets_;
    std::string url_;
};

// While it lives, the look-up of this name does not end. Names ending in ".here.test" are this machine. Its end waits
// for the look-ups that it held.
class StalledLookUp {
public:
    explicit StalledLookUp(const std::string& name);
    ~StalledLookUp();
    StalledLookUp(const StalledLookUp&) = delete;
    StalledLookUp& operator=(const StalledLookUp&) = delete;
};

} // namespace korlan::test
