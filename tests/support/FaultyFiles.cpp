// Preloaded into a program: its files below $KLN_FAULT_TREE fail or the program dies as $KLN_FAULT says, "OPERATION
// PART NUMBER ERROR": at the NUMBER-th (from 1; 0 = at every) operation of that name ("any" for all but stat) on a path
// with PART in it ("*" for all), that errno value, or 0 to be killed right before. What is done is noted, a line each,
// in $KLN_FAULT_LOG. Operations: create write rename delete sync mode stat.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <sstream>
#include <string>

namespace {

template <typename Procedure>
Procedure* Real(const char* name) {
    return reinterpret_cast<Procedure*>(dlsym(RTLD_NEXT, name));
}

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string PathOf(int descriptor) {
    char path[PATH_MAX];
    const ssize_t length = readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), path, sizeof path);
    return {path, length > 0 ? static_cast<std::size_t>(length) : 0};
}

std::string PathAt(int folder, const char* name) {
    return name[0] == '/' || folder == AT_FDCWD ? name : PathOf(folder) + "/" + name;
}

struct Fault {
    std::string operation, part;
    long number = -1;
    int error = 0;
    Fault() { std::istringstream(Variable("KLN_FAULT")) >> operation >> part >> number >> error; }
};

// True, with errno set, when this operation is the one to fail.
bool Fails(const std::string& operation, const std::string& path) {
    static const std::string tree = Variable("KLN_FAULT_TREE"), log = Variable("KLN_FAULT_LOG");
    static const Fault fault;
    static long count = 0;
    if (tree.empty() || !path.starts_with(tree)) return false;
    if (!log.empty()) {
        static auto* const realWrite = Real<ssize_t(int, const void*, size_t)>("write");
        static const int file =
            Real<int(const char*, int, ...)>("open")(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
        const std::string line = operation + " " + path.substr(tree.size()) + "\n";
        static_cast<void>(!realWrite(file, line.data(), line.size()));
    }
    const bool meant = fault.operation == operation || (fault.operation == "any" && operation != "stat");
    if (!meant || (fault.part != "*" && path.find(fault.part) == std::string::npos)) return false;
    if (fault.number != 0 && ++count != fault.number) return false;
    if (fault.error == 0) kill(getpid(), SIGKILL);
    errno = fault.error;
    return true;
}

int OpenAt(int folder, const char* name, int flags, mode_t mode) {
    static auto* const real = Real<int(int, const char*, int, ...)>("openat64");
    const bool changes = (flags & (O_CREAT | O_TRUNC)) != 0;
    return changes && Fails("create", PathAt(folder, name)) ? -1 : real(folder, name, flags, mode);
}

mode_t ModeOf(int flags, va_list list) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(list, mode_t) : 0;
}

} // namespace

#define KLN_OPEN(name)                                                                                                 \
    int name(const char* path, int flags, ...) {                                                                       \
        va_list list;                                                                                                  \
        va_start(list, flags);                                                                                         \
        const mode_t mode = ModeOf(flags, list);                                                                       \
        va_end(list);                                                                                                  \
        return OpenAt(AT_FDCWD, path, flags, mode);                                                                    \
    }
#define KLN_OPENAT(name)                                                                                               \
    int name(int folder, const char* path, int flags, ...) {                                                           \
        va_list list;                                                                                                  \
        va_start(list, flags);                                                                                         \
        const mode_t mode = ModeOf(flags, list);                                                                       \
        va_end(list);                                                                                                  \
        return OpenAt(folder, path, flags, mode);                                                                      \
    }
#define KLN_CALL(result, name, operation, path, parameters, ...)                                                       \
    result name parameters {                                                                                           \
        static auto* const real = Real<result parameters>(#name);                                                      \
        return Fails(operation, path) ? -1 : real(__VA_ARGS__);                                                        \
    }

extern "C" {
KLN_OPEN(open)
KLN_OPEN(open64)
KLN_OPENAT(openat)
KLN_OPENAT(openat64)
KLN_CALL(ssize_t, write, "write", PathOf(file), (int file, const void* bytes, size_t count), file, bytes, count)
KLN_CALL(ssize_t, pwrite, "write", PathOf(file), (int file, const void* bytes, size_t count, off_t at), file, bytes,
         count, at)
KLN_CALL(ssize_t, pwrite64, "write", PathOf(file), (int file, const void* bytes, size_t count, off64_t at), file, bytes,
         count, at)
KLN_CALL(int, ftruncate, "write", PathOf(file), (int file, off_t length), file, length)
KLN_CALL(int, ftruncate64, "write", PathOf(file), (int file, off64_t length), file, length)
KLN_CALL(int, fsync, "sync", PathOf(file), (int file), file)
KLN_CALL(int, fdatasync, "sync", PathOf(file), (int file), file)
KLN_CALL(int, syncfs, "sync", PathOf(file), (int file), file)
KLN_CALL(int, rename, "rename", to, (const char* from, const char* to), from, to)
KLN_CALL(int, renameat, "rename", PathAt(toFolder, to),
         (int fromFolder, const char* from, int toFolder, const char* to), fromFolder, from, toFolder, to)
KLN_CALL(int, unlink, "delete", path, (const char* path), path)
KLN_CALL(int, unlinkat, "delete", PathAt(folder, path), (int folder, const char* path, int flags), folder, path, flags)
KLN_CALL(int, mkdir, "create", path, (const char* path, mode_t mode), path, mode)
KLN_CALL(int, chmod, "mode", path, (const char* path, mode_t mode), path, mode)
KLN_CALL(int, fchmod, "mode", PathOf(file), (int file, mode_t mode), file, mode)
KLN_CALL(int, utimensat, "mode", PathAt(folder, path), (int folder, const char* path, const timespec* times, int flags),
         folder, path, times, flags)
KLN_CALL(int, stat, "stat", path, (const char* path, struct stat* status), path, status)
KLN_CALL(int, stat64, "stat", path, (const char* path, struct stat64* status), path, status)
KLN_CALL(int, lstat, "stat", path, (const char* path, struct stat* status), path, status)
KLN_CALL(int, lstat64, "stat", path, (const char* path, struct stat64* status), path, status)
KLN_CALL(int, fstatat, "stat", PathAt(folder, path), (int folder, const char* path, struct stat* status, int flags),
         folder, path, status, flags)
KLN_CALL(int, fstatat64, "stat", PathAt(folder, path), (int folder, const char* path, struct stat64* status, int flags),
         folder, path, status, flags)
}
