// Stands in for the user of the whole program: starts it and drives its window by messages.
//   Driver.exe update PROGRAM    waits for the list, presses Update, Next and Finish
//   Driver.exe nothing PROGRAM   expects that no update is found, presses Finish
// A transfer that failed is tried again once. Ends with 0 when every page came, else with 1, what the window showed and
// the program ended.
#include <windows.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <utility>

namespace {

HANDLE program = nullptr;
bool retried = false;
std::string shown; // all texts of the window as they were last

struct Search {
    std::wstring caption; // of an enabled, visible control; without "&"
    HWND found = nullptr;
    HWND yes = nullptr;   // a question about a library in use: it may be replaced
    HWND retry = nullptr; // a transfer failed, for instance because it stood still for a minute
};

std::wstring TextOf(HWND window) {
    wchar_t text[512] = {};
    SendMessageTimeoutW(window, WM_GETTEXT, 512, reinterpret_cast<LPARAM>(text), SMTO_ABORTIFHUNG, 2000, nullptr);
    std::wstring plain = text;
    std::erase(plain, L'&');
    return plain;
}

BOOL CALLBACK LookAtChild(HWND child, LPARAM search) {
    auto& wanted = *reinterpret_cast<Search*>(search);
    const std::wstring text = TextOf(child);
    if (IsWindowVisible(child) && !text.empty()) shown += std::string(text.begin(), text.end()) + " | ";
    if (text == L"Yes") wanted.yes = child;
    if (text == L"Retry" && IsWindowVisible(child) && IsWindowEnabled(child)) wanted.retry = child;
    if (text == wanted.caption && IsWindowVisible(child) && IsWindowEnabled(child)) wanted.found = child;
    return TRUE;
}

BOOL CALLBACK LookAtWindow(HWND window, LPARAM search) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == GetProcessId(program) && IsWindowVisible(window)) EnumChildWindows(window, LookAtChild, search);
    return TRUE;
}

HWND WaitFor(const std::wstring& caption) {
    using Clock = std::chrono::steady_clock;
    for (const auto end = Clock::now() + std::chrono::seconds(100); Clock::now() < end;) {
        Search search{caption};
        shown.clear();
        EnumWindows(LookAtWindow, reinterpret_cast<LPARAM>(&search));
        if (search.yes) PostMessageW(search.yes, BM_CLICK, 0, 0);
        if (search.found) return search.found;
        if (search.retry && !std::exchange(retried, true)) {
            std::printf("a transfer failed, Retry\n");
            PostMessageW(search.retry, BM_CLICK, 0, 0);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    std::printf("never came: %ls; shown: %s\n", caption.c_str(), shown.c_str());
    TerminateProcess(program, 1);
    std::exit(1);
}

// Presses it, after who waits for a line of output has looked at the page.
void Press(const wchar_t* caption) {
    const HWND button = WaitFor(caption);
    std::printf("page %ls\n", caption);
    std::fflush(stdout);
    if (std::getenv("KLN_SHOTS")) std::this_thread::sleep_for(std::chrono::seconds(2));
    PostMessageW(button, BM_CLICK, 0, 0);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    STARTUPINFOA start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    const auto begun = std::chrono::steady_clock::now();
    if (!CreateProcessA(nullptr, argv[2], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process)) return 2;
    program = process.hProcess;
    if (std::string(argv[1]) == "update") {
        WaitFor(L"Cancel");
        const auto passed = std::chrono::steady_clock::now() - begun;
        std::printf("window after %d ms\n",
                    static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(passed).count()));
        Press(L"Update");
        Press(L"Next");
    } else {
        WaitFor(L"No updates found");
    }
    Press(L"Finish");
    const bool ended = WaitForSingleObject(program, 30'000) == WAIT_OBJECT_0;
    std::printf("%s; last shown: %s\n", ended ? "ended" : "did not end", shown.c_str());
    return ended ? 0 : 1;
}
