#include "platform/FormHost.h"

#include "platform/Gestures.h"
#include "platform/win32/desktop/Dpi.h"
#include "platform/win32/desktop/FormView.h"

namespace korlan {
namespace {

constexpr float kTwipsPerInch = 1440;
constexpr ULONGLONG kEventsMilliseconds = 20; // one DoEvents ends after this, however much keeps coming

std::unique_ptr<FormView> view;

void Dispatch(MSG& message) {
    if (view && view->TakesMessage(message)) return;
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

float ScreenTwips(int pixels) {
    return static_cast<float>(pixels) * kTwipsPerInch / static_cast<float>(DpiOf(view ? view->Handle() : nullptr));
}

} // namespace

HWND FormWindow() {
    return view ? view->Handle() : nullptr;
}

void OpenFormHost(Form& form) {
    const INITCOMMONCONTROLSEX controls{sizeof controls,
                                        ICC_LISTVIEW_CLASSES | ICC_STANDARD_CLASSES | ICC_PROGRESS_CLASS};
    InitCommonControlsEx(&controls);
    CloseFormHost();
    view = std::make_unique<FormView>(form);
    if (form.Visible()) form.Show();
}

void CloseFormHost() {
    view.reset();
}

void ControlChanged(const Control& control, Aspect aspect, std::int32_t row) {
    if (view) view->Changed(control, aspect, row);
}

void DoEvents() {
    Wait wait;
    const ULONGLONG end = GetTickCount64() + kEventsMilliseconds;
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        Dispatch(message);
        if (GetTickCount64() >= end) break;
    }
    wait.Rethrow();
}

void RunMessageLoop() {
    Wait wait;
    wait.Rethrow();
    MSG message{};
    while (view && view->Record().Visible() && GetMessageW(&message, nullptr, 0, 0) > 0) {
        Dispatch(message);
        wait.Rethrow();
    }
}

float ScreenWidth() {
    return ScreenTwips(GetSystemMetrics(SM_CXSCREEN));
}

float ScreenHeight() {
    return ScreenTwips(GetSystemMetrics(SM_CYSCREEN));
}

void SetMousePointer(MousePointer pointer) {
    hourglass = pointer == MousePointer::Hourglass;
    SetCursor(LoadCursorW(nullptr, hourglass ? IDC_WAIT : IDC_ARROW));
}

} // namespace korlan
