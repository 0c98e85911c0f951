// Another program: a thread with windows of its own, which answers their messages.
#pragma once

#include "platform/Window.h"
#include "platform/win32/Wide.h"

#include <windows.h>

#include <functional>
#include <future>
#include <set>
#include <thread>

namespace korlan::test {

class OtherProgram {
public:
    OtherProgram() { manager_ = made_.get_future().get(); }
    OtherProgram(const OtherProgram&) = delete;
    ~OtherProgram() {
        Do([] { PostQuitMessage(0); });
        thread_.join();
    }

    WindowHandle MakeWindow(const std::string& title, bool shown) const {
        HWND window = nullptr;
        Do([&] {
            window = CreateWindowW(L"KorlanFrame", Wide(title).c_str(), WS_POPUP | (shown ? WS_VISIBLE : 0), 10, 20,
                                   200, 100, nullptr, nullptr, nullptr, nullptr);
        });
        return static_cast<WindowHandle>(reinterpret_cast<std::uintptr_t>(window));
    }
    void Destroy(WindowHandle window) const {
        Do([&] { DestroyWindow(At(window)); });
    }
    static HWND At(WindowHandle window) { return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(window)); }
    static bool IsAskedToClose(WindowHandle window) { return asked.contains(At(window)); }

private:
    void Do(const std::function<void()>& what) const {
        SendMessageW(manager_, WM_APP, 0, reinterpret_cast<LPARAM>(&what));
    }
    static LRESULT CALLBACK Answer(HWND window, UINT message, WPARAM wide, LPARAM parameter) {
        if (message == WM_APP) return (*reinterpret_cast<std::function<void()>*>(parameter))(), 0;
        if (message == WM_CLOSE) return asked.insert(window), 0;
        return DefWindowProcW(window, message, wide, parameter);
    }
    void Run() {
        WNDCLASSW description{};
        description.lpfnWndProc = Answer;
        description.lpszClassName = L"KorlanFrame";
        RegisterClassW(&description);
        made_.set_value(CreateWindowW(L"KorlanFrame", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
        for (MSG message{}; GetMessageW(&message, nullptr, 0, 0) > 0;) DispatchMessageW(&message);
    }

    static inline std::set<HWND> asked;
    std::promise<HWND> made_;
    std::thread thread_{[this] { Run(); }};
    HWND manager_ = nullptr;
};

} // namespace korlan::test
