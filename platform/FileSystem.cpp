// The calls of the file system that are made of others.
#include "platform/FileSystem.h"

#include "platform/RuntimeError.h"

#include <chrono>
#include <map>

namespace korlan {
namespace {

std::map<std::int32_t, FileLook> openStamps; // by handle

} // namespace

bool FileOpensForReading(const std::string& path) {
    const std::int32_t handle = OpenForStamp(path);
    CloseStamp(handle);
    return handle != -1;
}

std::string ReadWholeFile(const std::string& path) {
    return ReadFilePart(path, 0, std::string::npos);
}

std::int32_t OpenForStamp(const std::string& path) {
    try {
        const FileLook look = LookAtFile(path);
        const std::int32_t handle = openStamps.empty() ? 1 : openStamps.rbegin()->first + 1; // stays below 16 bits
        openStamps[handle] = look;
        return handle;
    } catch (const RuntimeError&) {
        return -1;
    }
}

bool IsNormalFile(std::int32_t handle, const std::string& path) {
    const auto stamp = openStamps.find(handle);
    return stamp == openStamps.end() ? !FindNormalFile(path).empty() : stamp->second.isNormal;
}

bool ReadWriteTime(std::int32_t handle, std::int64_t& ticks) {
    const auto stamp = openStamps.find(handle);
    if (stamp == openStamps.end()) return false;
    ticks = stamp->second.ticks;
    return true;
}

void CloseStamp(std::int32_t handle) {
    openStamps.erase(handle);
}

std::int32_t TicksToCalendar(std::int64_t ticks, CalendarTime& time) {
    if (ticks < 0) return 0;
    using namespace std::chrono;
    const sys_seconds moment{floor<seconds>(duration<std::int64_t, std::ratio<1, 10'000'000>>(ticks - TicksOf(0)))};
    const auto day = floor<days>(moment);
    const year_month_day date{day};
    const hh_mm_ss clock{moment - day};
    time.year = static_cast<int>(date.year());
    time.month = static_cast<std::int32_t>(static_cast<unsigned>(date.month()));
    time.day = static_cast<std::int32_t>(static_cast<unsigned>(date.day()));
    time.hour = static_cast<std::int32_t>(clock.hours().count());
    time.minute = static_cast<std::int32_t>(clock.minutes().count());
    time.second = static_cast<std::int32_t>(clock.seconds().count());
    return 1;
}

} // namespace korlan
