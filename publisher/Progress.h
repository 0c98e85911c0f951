// What a long command is at, for whoever waits at a terminal: one line on the standard error that rewrites itself.
// Anywhere else nothing is shown.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <string>

namespace korlan::publisher {

class Progress {
public:
    explicit Progress(std::string what) : what_(std::move(what)), shown_(isatty(STDERR_FILENO) == 1) {}
    ~Progress() {
        if (shown_) std::fputs("\r\033[K", stderr);
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    void At(std::size_t done, std::size_t all, const std::string& name) const {
        if (shown_) std::fprintf(stderr, "\r\033[K%s %zu of %zu: %.60s", what_.c_str(), done, all, name.c_str());
    }

private:
    std::string what_;
    bool shown_;
};

} // namespace korlan::publisher
