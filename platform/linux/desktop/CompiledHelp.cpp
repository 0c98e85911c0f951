// The file is unpacked in a process of its own: the library that knows the format divides by zero or writes past its
// buffers on some damaged files, and a help file may have come from anywhere. What that process hands over before it
// ends is all we use; when it ends badly, the file counts as damaged.
#include "platform/linux/desktop/CompiledHelp.h"

#include "platform/AsciiText.h"
#include "platform/TextEncoding.h"

#include <chm_lib.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>

namespace korlan {
namespace {

constexpr std::uint64_t kMostBytes = 64u << 20;
constexpr std::uint64_t kLeastRoom = 1u << 20, kMostPacked = 32; // a file unpacks to that many times its size
constexpr rlim_t kLibraryBytes = 8u << 20;                       // what the unpacking itself may take
constexpr std::uint32_t kMostObjects = 20000;
constexpr rlim_t kMostSeconds = 10;
constexpr const char* kSystemObject = "#system";

std::string Key(std::string_view path) {
    path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
    return LowerAsciiText(path);
}

// ---- in the unpacking process ----

void WriteAll(int pipe, const void* bytes, std::size_t count) {
    const char* next = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t written = write(pipe, next, count);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) _exit(1);
        next += written;
        count -= static_cast<std::size_t>(written);
    }
}

struct Unpacking {
    int pipe;
    std::uint64_t room; // bytes left for objects
    std::uint32_t objects = 0;
};

// Hands over one object: two lengths, the path, the bytes. One that is damaged or too large is left out.
int HandOver(chmFile* file, chmUnitInfo* unit, void* context) {
    auto& unpacking = *static_cast<Unpacking*>(context);
    if (++unpacking.objects > kMostObjects) _exit(1);
    if (unit->length == 0 || unit->length > unpacking.room) return CHM_ENUMERATOR_CONTINUE;
    std::string bytes(unit->length, '\0');
    const auto length = static_cast<LONGINT64>(bytes.size());
    if (chm_retrieve_object(file, unit, reinterpret_cast<unsigned char*>(bytes.data()), 0, length) != length)
        return CHM_ENUMERATOR_CONTINUE;
    unpacking.room -= bytes.size();
    const std::uint64_t lengths[2] = {strnlen(unit->path, CHM_MAX_PATHLEN), bytes.size()};
    WriteAll(unpacking.pipe, lengths, sizeof lengths);
    WriteAll(unpacking.pipe, unit->path, lengths[0]);
    WriteAll(unpacking.pipe, bytes.data(), bytes.size());
    return CHM_ENUMERATOR_CONTINUE;
}

// The file says how much memory the library asks for. What the program holds already counts in the limit.
void LimitMemory(rlim_t bytes) {
    unsigned long pages = 0;
    if (std::FILE* sizes = std::fopen("/proc/self/statm", "r")) {
        static_cast<void>(std::fscanf(sizes, "%lu", &pages));
        std::fclose(sizes);
    }
    const rlim_t most = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + bytes;
    const rlimit memory{most, most};
    if (pages > 0) setrlimit(RLIMIT_AS, &memory);
}

[[noreturn]] void Unpack(const char* hostPath, std::uint64_t room, int pipe) {
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGABRT, SIGILL, SIGPIPE, SIGXCPU}) std::signal(signal, SIG_DFL);
    const rlimit seconds{kMostSeconds, kMostSeconds}, noDump{0, 0};
    setrlimit(RLIMIT_CPU, &seconds);
    setrlimit(RLIMIT_CORE, &noDump);
    const int nowhere = open("/dev/null", O_WRONLY);
    if (nowhere >= 0) dup2(nowhere, STDERR_FILENO); // the C library reports a spoilt heap there
    LimitMemory(kLibraryBytes + room);
    chmFile* file = chm_open(hostPath);
    Unpacking unpacking{pipe, room};
    if (!file || !chm_enumerate(file, CHM_ENUMERATE_ALL, HandOver, &unpacking)) _exit(1);
    _exit(0);
}

// ---- in the program ----

bool ReadAll(int pipe, void* bytes, std::size_t count) {
    char* next = static_cast<char*>(bytes);
    while (count > 0) {
        const ssize_t got = read(pipe, next, count);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        next += got;
        count -= static_cast<std::size_t>(got);
    }
    return true;
}

void TakeObjects(int pipe, std::uint64_t room, std::map<std::string, std::string>& objects) {
    std::uint64_t lengths[2];
    while (ReadAll(pipe, lengths, sizeof lengths)) {
        if (lengths[0] > CHM_MAX_PATHLEN || lengths[1] > room) return;
        room -= lengths[1];
        std::string path(lengths[0], '\0'), bytes(lengths[1], '\0');
        if (!ReadAll(pipe, path.data(), path.size()) || !ReadAll(pipe, bytes.data(), bytes.size())) return;
        objects.emplace(Key(TextFromBytes(path)), std::move(bytes));
    }
}

bool UnpackApart(const std::string& hostPath, std::map<std::string, std::string>& objects) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(hostPath, error);
    if (error) return false;
    const std::uint64_t room = std::clamp(kMostPacked * size, kLeastRoom, kMostBytes);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    const pid_t process = fork();
    if (process == 0) {
        close(ends[0]);
        Unpack(hostPath.c_str(), room, ends[1]);
    }
    close(ends[1]);
    if (process > 0) TakeObjects(ends[0], room, objects);
    close(ends[0]);
    int state = 1;
    while (process > 0 && waitpid(process, &state, 0) < 0 && errno == EINTR) {
    }
    return process > 0 && WIFEXITED(state) && WEXITSTATUS(state) == 0;
}

// The settings of the file's own project: a version, then entries of a 16-bit code, a 16-bit length and the value.
std::map<int, std::string> ReadProject(const std::string& bytes) {
    const auto number = [&bytes](std::size_t at) {
        return static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1]) << 8;
    };
    std::map<int, std::string> entries;
    for (std::size_t at = 4; at + 4 <= bytes.size();) {
        const auto length = static_cast<std::size_t>(number(at + 2));
        if (at + 4 + length > bytes.size()) break;
        const std::string value = bytes.substr(at + 4, length);
        entries.emplace(number(at), TextFromBytes(value.c_str())); // texts end with a NUL
        at += 4 + length;
    }
    return entries;
}

bool IsPage(const std::string& path) {
    return !path.starts_with("#") && !path.starts_with("$") && (path.ends_with(".htm") || path.ends_with(".html"));
}

std::string FirstPage(const CompiledHelp& help, const std::string& wanted) {
    if (help.Find(wanted)) return wanted;
    for (const HelpTopic& topic : help.topics)
        if (std::string page = topic.page.substr(0, topic.page.find('#')); help.Find(page)) return page;
    for (const auto& [path, bytes] : help.objects)
        if (IsPage(path)) return path;
    return {};
}

} // namespace

const std::string* CompiledHelp::Find(const std::string& path) const {
    const auto at = objects.find(Key(path));
    return at == objects.end() ? nullptr : &at->second;
}

std::optional<CompiledHelp> ReadCompiledHelp(const std::string& hostPath) {
    constexpr int kContentsFile = 0, kDefaultPage = 2, kTitle = 3;
    CompiledHelp help;
    if (!UnpackApart(hostPath, help.objects)) return std::nullopt;
    std::map<int, std::string> project;
    if (const std::string* bytes = help.Find(kSystemObject)) project = ReadProject(*bytes);
    help.title = project[kTitle];
    const std::string* contents = help.Find(project[kContentsFile]);
    for (auto at = help.objects.begin(); !contents && at != help.objects.end(); ++at)
        if (at->first.ends_with(".hhc")) contents = &at->second;
    if (contents) help.topics = ParseHelpContents(TextFromBytes(*contents));
    help.defaultPage = FirstPage(help, project[kDefaultPage]);
    if (help.defaultPage.empty()) return std::nullopt;
    return help;
}

} // namespace korlan
