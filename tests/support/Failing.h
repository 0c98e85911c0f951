// What a call fails with, for tables of expected error numbers; and running as a user who is not the administrator.
#pragma once

#include "platform/RuntimeError.h"
#include "tests/support/Host.h"

#ifndef _WIN32
#include <sys/resource.h>
#include <unistd.h>
#endif

#include <csignal>
#include <cstdint>
#include <stdexcept>

namespace korlan::test {

// The number of the RuntimeError that `call` raises, 0 when it raises none.
template <class Call>
std::int32_t ErrorOf(Call&& call) {
    try {
        call();
        return 0;
    } catch (const RuntimeError& error) {
        return error.Number();
    }
}

#ifndef _WIN32
// While this lives, no file can be written beyond that length: a disk that fills up.
class FileLimit {
public:
    explicit FileLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileLimit(const FileLimit&) = delete;
    FileLimit& operator=(const FileLimit&) = delete;
    ~FileLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, signal_);
    }

private:
    rlimit before_{};
    void (*signal_)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

// The administrator may do anything on this host. While this lives, the process is somebody else.
class AsOrdinaryUser {
public:
    AsOrdinaryUser() {
        constexpr uid_t kNobody = 65534;
        if (user_ == 0 && seteuid(kNobody) != 0) throw std::runtime_error("cannot change the user");
    }
    AsOrdinaryUser(const AsOrdinaryUser&) = delete;
    AsOrdinaryUser& operator=(const AsOrdinaryUser&) = delete;
    ~AsOrdinaryUser() {
        if (user_ == 0 && seteuid(0) != 0) std::abort();
    }

private:
    uid_t user_ = geteuid();
};
#endif

} // namespace korlan::test
