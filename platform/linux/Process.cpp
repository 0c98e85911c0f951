// All of Process.h in this one object, so that a test can bring its own version of it.
#include "platform/Process.h"

#include "platform/AsciiText.h"
#include "platform/RuntimeError.h"
#include "platform/linux/FileHandle.h"
#include "platform/linux/HostPath.h"

#include <sys/file.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

namespace korlan {
namespace {

std::string arguments;

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

// --- Finding programs ------------------------------------------------------------------------------------------------

bool IsFile(const std::string& hostPath) {
    struct stat status {};
    return stat(hostPath.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool MayRun(const std::string& hostPath) {
    return IsFile(hostPath) && access(hostPath.c_str(), X_OK) == 0;
}

std::string FindOnPath(const std::string& name) { // "" when it is not there
    const std::string path = Variable("PATH");
    for (std::size_t at = 0; at <= path.size();) {
        const std::size_t end = std::min(path.find(':', at), path.size());
        std::string candidate = path.substr(at, end - at) + "/" + name;
        if (candidate[0] == '/' && end > at && MayRun(candidate)) return candidate;
        at = end + 1;
    }
    return {};
}

std::string FindFile(const std::string& windowsPath) {
    try {
        const std::string host = HostPath(windowsPath);
        return IsFile(host) ? host : std::string();
    } catch (const RuntimeError&) { // its drive is not there
        return {};
    }
}

std::string FindExactly(const std::string& name) {
    if (name.find_first_of("\\/:") != std::string::npos) return FindFile(name);
    const std::string own = ProgramPath();
    const std::string beside = FindFile(own.substr(0, own.rfind('\\') + 1) + name);
    return beside.empty() ? FindOnPath(name) : beside;
}

// The host path of a program by its path or bare name; "" when there is none. A bare name is looked for beside this
// program, then on the PATH, never in the current folder.
std::string FindProgram(const std::string& name) {
    if (name.empty()) return {};
    const std::string exact = FindExactly(name);
    const bool hasExtension = name.find('.', name.find_last_of("\\/:") + 1) != std::string::npos; // npos + 1 is 0
    return exact.empty() && !hasExtension ? FindExactly(name + ".exe") : exact;
}

// --- Command lines ---------------------------------------------------------------------------------------------------

struct Command {
    std::string name;    // of the program as written
    std::string program; // host path, "" when there is none
    std::string_view rest;
};

// A quoted program ends at the closing quote. An unquoted one may hold blanks: the shortest beginning of the line that
// names a file and ends at a blank is the program.
Command FindCommand(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (line.starts_with('"')) {
        const std::size_t end = std::min(line.find('"', 1), line.size());
        const std::string name(line.substr(1, end - 1));
        return {name, FindProgram(name), line.substr(std::min(end + 1, line.size()))};
    }
    for (std::size_t end = 0; end < line.size();) {
        end = std::min(line.find_first_of(" \t", end + 1), line.size());
        const std::string name(line.substr(0, end));
        if (std::string program = FindProgram(name); !program.empty()) return {name, program, line.substr(end)};
    }
    const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
    return {std::string(line.substr(0, end)), {}, line.substr(end)};
}

// Arguments as Windows programs split them: blanks separate outside quotes; 2n backslashes before a quote stand for n
// and the quote counts, 2n+1 for n and a quote of the text; two quotes inside quotes are one of the text.
std::vector<std::string> SplitArguments(std::string_view line) {
    std::vector<std::string> split;
    for (std::size_t at = 0;;) {
        at = line.find_first_not_of(" \t", at);
        if (at == std::string_view::npos) return split;
        std::string& argument = split.emplace_back();
        bool quoted = false;
        while (at < line.size() && (quoted || (line[at] != ' ' && line[at] != '\t'))) {
            const std::size_t behind = std::min(line.find_first_not_of('\\', at), line.size());
            const std::size_t backslashes = behind - at;
            const bool beforeQuote = behind < line.size() && line[behind] == '"';
            argument.append(beforeQuote ? backslashes / 2 : backslashes, '\\');
            at = behind;
            if (!beforeQuote || backslashes % 2 == 1) {
                if (beforeQuote || backslashes == 0) argument += line[at++];
            } else if (quoted && at + 1 < line.size() && line[at + 1] == '"') {
                argument += '"';
                at += 2;
            } else {
                quoted = !quoted;
                ++at;
            }
        }
    }
}

// --- Starting --------------------------------------------------------------------------------------------------------

bool IsWindowsProgram(const std::string& hostPath) {
    const FileHandle file(hostPath, O_RDONLY | O_NONBLOCK);
    std::array<char, 2> mark{};
    return file && pread(file.Descriptor(), mark.data(), 2, 0) == 2 && mark == std::array{'M', 'Z'};
}

// Runs in the process that becomes the program: nothing here may allocate or lock.
[[noreturn]] void BecomeProgram(char* const* argv, int report) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    const int nothing = open("/dev/null", O_RDONLY);
    if (nothing >= 0) dup2(nothing, STDIN_FILENO);
    close_range(3, UINT_MAX, CLOSE_RANGE_CLOEXEC);
    execv(argv[0], argv);
    const int error = errno;
    static_cast<void>(!write(report, &error, sizeof error));
    _exit(127);
}

// Starts the program as nobody's child: the process between ends at once and is the only one waited for. Returns 0 or
// the errno value with which the program could not be started.
int Spawn(std::vector<std::string> words) {
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return errno;
    const FileHandle reading(ends[0]);
    FileHandle writing(ends[1]);
    const pid_t between = fork();
    if (between < 0) return errno;
    if (between == 0) {
        setsid();
        const pid_t program = fork();
        if (program == 0) BecomeProgram(argv.data(), writing.Descriptor());
        const int error = errno;
        if (program < 0) static_cast<void>(!write(writing.Descriptor(), &error, sizeof error));
        _exit(0);
    }
    writing.Close();
    while (waitpid(between, nullptr, 0) < 0 && errno == EINTR) {
    }
    int error = 0;
    ssize_t got = 0;
    do got = read(reading.Descriptor(), &error, sizeof error);
    while (got < 0 && errno == EINTR);
    return got == sizeof error ? error : 0; // the pipe closes when the program starts
}

// --- This program ----------------------------------------------------------------------------------------------------

std::string OwnHostPath() {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = readlink("/proc/self/exe", target.data(), target.size());
    std::string path(target.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    constexpr std::string_view kReplaced = " (deleted)"; // a run may have put a new version in its place
    if (path.ends_with(kReplaced) && !IsFile(path)) path.resize(path.size() - kReplaced.size());
    return path;
}

// One place for each user and program folder, the same from every session.
std::string InstanceLock() {
    const std::string program = OwnHostPath();
    struct stat folder {};
    stat(program.substr(0, program.rfind('/') + 1).c_str(), &folder);
    return "/tmp/klnupdt-" + std::to_string(geteuid()) + '-' + std::to_string(folder.st_dev) + '-' +
           std::to_string(folder.st_ino) + ".lock";
}

[[noreturn]] void RaiseNotFound() {
    throw RuntimeError(kErrFileNotFound);
}

} // namespace

void EndProcess() {
    std::quick_exit(0); // a file under way goes
}

void SetProgramArguments(int argc, char** argv) {
    arguments.clear();
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (i > 1) arguments += ' ';
        arguments += argument.find('"') == std::string::npos ? '"' + argument + '"' : argument;
    }
}

std::string ProgramCommandLine() {
    return arguments;
}

// Found out once: where it lies does not change, and who asks does so for every file.
std::string ProgramPath() {
    static const std::string path = WindowsPath(OwnHostPath());
    return path;
}

bool AnotherInstanceRunning() {
    static FileHandle lock; // held until the process ends; not handed to programs it starts
    if (lock) return false;
    FileHandle file(InstanceLock(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK, 0600);
    struct stat status {};
    const bool ours = file && fstat(file.Descriptor(), &status) == 0 && status.st_uid == geteuid();
    if (!ours) return false; // it cannot be told
    if (flock(file.Descriptor(), LOCK_EX | LOCK_NB) != 0) return errno == EWOULDBLOCK;
    lock = std::move(file);
    return false;
}

void StartProgram(const std::string& commandLine, WindowStyle) {
    Command command = FindCommand(commandLine);
    std::vector<std::string> words = SplitArguments(command.rest);
    const bool isRegistrar = EqualNoCase(command.name, "regsvr32");
    const bool registers = isRegistrar || (words.size() == 1 && EqualNoCase(words[0], "/RegServer"));
    if (isRegistrar) command.program = FindOnPath("regsvr32");
    if (command.program.empty()) {
        if (isRegistrar) return;
        RaiseNotFound();
    }
    words.insert(words.begin(), command.program);
    if (IsWindowsProgram(command.program)) {
        const std::string wine = FindOnPath("wine");
        if (wine.empty() && registers) return;
        if (wine.empty()) RaiseNotFound();
        words.insert(words.begin(), wine);
    }
    const int error = Spawn(std::move(words));
    if (error == ENOENT) RaiseNotFound();
    if (error != 0) throw RuntimeError(kErrInvalidCall);
}

} // namespace korlan
