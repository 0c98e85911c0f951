// What a call fails with, for tables of expected error numbers; and running as a user who is not the administrator.
#pragma once

#include "platform/RuntimeError.h"
#include "tests/support/Host.h"

#ifndef _WIN32
#include <sys/resource.h>

#include <csignal>
#endif

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
// While this lives no file may grow beyond that many bytes, as on a disk that is full.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit small{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }

private:
    rlimit before_{};
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
