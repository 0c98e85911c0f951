// All of Process.h in this one object, so that a test can bring its own version of it.
#include "platform/Process.h"

#include "platform/RuntimeError.h"
#include "platform/win32/Wide.h"

#include <utility>

namespace korlan {

void EndProcess() {
    TerminateProcess(GetCurrentProcess(), 0);
    for (;;) Sleep(INFINITE);
}

void SetProgramArguments(int, char**) {} // the system knows them as they were given

std::string ProgramCommandLine() {
    const std::wstring_view line = GetCommandLineW();
    const bool quoted = line.starts_with(L'"');
    std::size_t end = quoted ? line.find(L'"', 1) : line.find_first_of(L" \t");
    if (end == std::wstring_view::npos) return {};
    end = line.find_first_not_of(L" \t", end + 1);
    return end == std::wstring_view::npos ? std::string() : Narrow(line.substr(end));
}

std::string ProgramPath() {
    constexpr DWORD kLongestPath = 32'768;
    std::wstring path(kLongestPath, 0);
    path.resize(GetModuleFileNameW(nullptr, path.data(), kLongestPath));
    return Narrow(path);
}

bool AnotherInstanceRunning() {
    static HANDLE mutex = nullptr; // held until the process ends
    if (mutex) return false;
    mutex = CreateMutexW(nullptr, FALSE, L"Local\\KlnUpdt"); // of this user's session
    if (!mutex) return GetLastError() == ERROR_ACCESS_DENIED;
    if (GetLastError() != ERROR_ALREADY_EXISTS) return false;
    CloseHandle(std::exchange(mutex, nullptr));
    return true;
}

void StartProgram(const std::string& commandLine, WindowStyle style) {
    std::wstring line = Wide(commandLine); // the call may write to it
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESHOWWINDOW;
    start.wShowWindow = style == WindowStyle::MinimizedFocus ? SW_SHOWMINIMIZED : SW_SHOWNORMAL;
    PROCESS_INFORMATION process{};
    const bool isEmpty = line.find_first_not_of(L" \t\"") == std::wstring::npos || line.starts_with(L"\"\"");
    if (isEmpty ||
        !CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process)) {
        const DWORD error = isEmpty ? ERROR_FILE_NOT_FOUND : GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) throw RuntimeError(kErrFileNotFound);
        throw RuntimeError(kErrInvalidCall);
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
}

} // namespace korlan
