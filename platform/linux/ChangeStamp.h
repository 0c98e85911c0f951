// What tells one state of a file or folder from the next. A time stamp ticks coarsely, so a change may leave the stamp
// as it was when it comes within the same tick; a stamp is worth remembering only once its tick is over (Settled).
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <ctime>

namespace korlan {

struct ChangeStamp {
    std::uint64_t device = 0, inode = 0;
    std::int64_t size = 0, modified = 0, changed = 0; // bytes; nanoseconds since 1970

    bool operator==(const ChangeStamp&) const = default;

    static std::int64_t Nanoseconds(const timespec& time) { return time.tv_sec * 1'000'000'000LL + time.tv_nsec; }

    static ChangeStamp Of(const struct stat& status) {
        return {status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim), Nanoseconds(status.st_ctim)};
    }

    static std::int64_t Now() { // take it before the status: what changes later then has a later stamp
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        return Nanoseconds(now);
    }

    // True when any change after `now` must show in the stamp: kernel ticks last up to 10 ms, and a stamp in whole
    // seconds may come from a file system that keeps one or two of them.
    bool Settled(std::int64_t now) const {
        const std::int64_t tick = changed % 1'000'000'000 == 0 ? 2'100'000'000 : 50'000'000;
        return now - changed > tick;
    }
};

} // namespace korlan
