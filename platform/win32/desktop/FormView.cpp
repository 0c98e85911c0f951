#include "platform/win32/desktop/FormView.h"

#include "platform/FormHost.h"
#include "platform/Gestures.h"
#include "platform/win32/Wide.h"
#include "platform/win32/desktop/Dpi.h"
#include "platform/win32/desktop/Pictures.h"

#include <windowsx.h>

#include <utility>

namespace korlan {

bool hourglass = false;

namespace {

constexpr const wchar_t* kClass = L"KlnUpdtForm";
constexpr int kFirstIdentifier = 100; // below it are the identifiers of Enter and Escape
constexpr UINT_PTR kFrameTimer = 1;

// A text as it is shown: names and sizes come from the server and may be of any length.
std::wstring ShownText(const std::string& utf8) {
    constexpr std::size_t kLongest = 2000;
    return utf8.size() <= kLongest ? Wide(utf8) : Wide(utf8.substr(0, kLongest)) + L'\u2026';
}

void RegisterFormClass(WNDPROC procedure) {
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    description.lpfnWndProc = procedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    description.hIcon = MakeProgramIcon(GetSystemMetrics(SM_CXICON));
    description.hIconSm = MakeProgramIcon(GetSystemMetrics(SM_CXSMICON));
    description.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    description.lpszClassName = kClass;
    RegisterClassExW(&description); // of a second form it fails, and the first class serves
}

struct WindowKind {
    const wchar_t* className;
    DWORD style;
};

WindowKind KindOf(const Control& control) {
    switch (control.Kind()) {
    case ControlKind::Label:
        return {WC_STATICW, SS_NOPREFIX | (control.Place().lines > 1 ? DWORD{SS_EDITCONTROL} : DWORD{SS_ENDELLIPSIS})};
    case ControlKind::Button: return {WC_BUTTONW, BS_PUSHBUTTON | WS_TABSTOP | WS_GROUP};
    case ControlKind::OptionButton: return {WC_BUTTONW, BS_AUTORADIOBUTTON | BS_NOTIFY | BS_MULTILINE};
    case ControlKind::ProgressBar: return {PROGRESS_CLASSW, PBS_SMOOTH};
    case ControlKind::PictureBox: return {WC_STATICW, SS_OWNERDRAW};
    default: return {nullptr, 0}; // the list makes its own; the others are never seen
    }
}

} // namespace

FormView::FormView(Form& form) : form_(form) {
    RegisterFormClass(Procedure);
    CreateWindowExW(WS_EX_CONTROLPARENT, kClass, Wide(form.Caption()).c_str(), WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                    CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, nullptr, nullptr,
                    GetModuleHandleW(nullptr), this);
    dpi_ = DpiOf(window_);
    for (Control* control : form.Controls()) MakeChild(*control, kFirstIdentifier + static_cast<int>(children_.size()));
    mirroring_ = true;
    for (const auto& child : children_)
        for (const Aspect aspect : {Aspect::Font, Aspect::Columns, Aspect::RowAdded, Aspect::Caption, Aspect::Enabled,
                                    Aspect::Value, Aspect::Visible})
            ChildChanged(*child, aspect, 0);
    FormChanged(Aspect::Caption);
    mirroring_ = false;
    RECT outer{}, client{};
    GetWindowRect(window_, &outer);
    GetClientRect(window_, &client);
    SetWindowPos(window_, nullptr, 0, 0, PixelsOf(form.Width(), dpi_) + outer.right - outer.left - client.right,
                 PixelsOf(form.Height(), dpi_) + outer.bottom - outer.top - client.bottom,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    LayOut();
}

FormView::~FormView() {
    for (const auto& child : children_) DeleteObject(child->font);
    children_.clear();
    SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
    DestroyWindow(window_);
}

void FormView::MakeChild(Control& control, int identifier) {
    auto child = std::make_unique<Child>();
    child->control = &control;
    if (control.Kind() == ControlKind::ListView) {
        child->list = std::make_unique<ListMirror>(static_cast<ListView&>(control), window_, identifier);
        child->list->SetDpi(dpi_);
        child->window = child->list->Handle();
    } else if (WindowKind kind = KindOf(control); kind.className) {
        const bool firstOption = control.Kind() == ControlKind::OptionButton &&
                                 (children_.empty() || children_.back()->control->Kind() != control.Kind());
        if (firstOption) kind.style |= WS_GROUP; // the arrow keys stay among the options
        child->window = CreateWindowExW(0, kind.className, L"", WS_CHILD | kind.style, 0, 0, 0, 0, window_,
                                        reinterpret_cast<HMENU>(static_cast<std::intptr_t>(identifier)),
                                        GetModuleHandleW(nullptr), nullptr);
    } else {
        return;
    }
    childOf_.emplace(&control, child.get());
    children_.push_back(std::move(child));
}

// --- From the records to the window ----------------------------------------------------------------------------------

void FormView::Changed(const Control& control, Aspect aspect, std::int32_t row) {
    const bool outer = std::exchange(mirroring_, true);
    if (&control == &form_) {
        FormChanged(aspect);
    } else if (const auto found = childOf_.find(&control); found != childOf_.end()) {
        ChildChanged(*found->second, aspect, row);
    }
    mirroring_ = outer;
}

void FormView::FormChanged(Aspect aspect) {
    switch (aspect) {
    case Aspect::Caption:
        SetWindowTextW(window_, Wide(form_.Caption()).c_str());
        for (const auto& child : children_) // for a screen reader, what has no caption is called as the window is
            if (!dynamic_cast<const CaptionedControl*>(child->control))
                SetWindowTextW(child->window, Wide(form_.Caption()).c_str());
        break;
    case Aspect::Visible:
        if (form_.Visible())
            ShowForm();
        else
            ShowWindow(window_, SW_HIDE);
        break;
    case Aspect::Enabled: EnableWindow(window_, form_.Enabled()); break;
    case Aspect::Repaint: UpdateWindow(window_); break;
    case Aspect::Place:
        moved_ = true;
        MoveToPlace();
        break;
    default: break;
    }
}

void FormView::ChildChanged(Child& child, Aspect aspect, std::int32_t row) {
    const Control& control = *child.control;
    switch (aspect) {
    case Aspect::Caption: SetCaption(child); return;
    case Aspect::Visible:
        if (!control.Visible()) LeaveFocus(child.window);
        ShowWindow(child.window, control.Visible() ? SW_SHOWNA : SW_HIDE);
        LayOut();
        return;
    case Aspect::Font: SetFont(child); return;
    case Aspect::Focus: ::SetFocus(child.window); return;
    case Aspect::Repaint:
        if (control.Kind() == ControlKind::Label)
            Present(child);
        else
            UpdateWindow(child.window);
        return;
    case Aspect::Enabled:
        if (!control.Enabled()) LeaveFocus(child.window);
        EnableWindow(child.window, control.Enabled());
        break;
    default: break;
    }
    if (child.list) child.list->Changed(aspect, row);
    if (control.Kind() == ControlKind::ProgressBar && aspect == Aspect::Value) {
        const auto& bar = static_cast<const ProgressBar&>(control);
        SendMessageW(child.window, PBM_SETRANGE32, 0, bar.Maximum());
        SendMessageW(child.window, PBM_SETPOS, static_cast<WPARAM>(bar.Value()), 0);
    }
    if (control.Kind() == ControlKind::OptionButton && aspect == Aspect::Value) ShowOptions();
}

// As the records say, whatever was clicked. They are one stop of the Tab key: the selected one, else the first; the
// toolkit makes one that it unchecks none.
void FormView::ShowOptions() {
    HWND stop = nullptr;
    for (const auto& child : children_) {
        if (child->control->Kind() != ControlKind::OptionButton) continue;
        const bool value = static_cast<const OptionButton*>(child->control)->Value();
        Button_SetCheck(child->window, value ? BST_CHECKED : BST_UNCHECKED);
        if (!stop || value) stop = child->window;
    }
    if (stop) SetWindowLongW(stop, GWL_STYLE, GetWindowLongW(stop, GWL_STYLE) | WS_TABSTOP);
}

void FormView::SetCaption(Child& child) {
    const auto* captioned = dynamic_cast<const CaptionedControl*>(child.control);
    if (!captioned) return;
    if (child.control->Kind() == ControlKind::Label) {
        child.text = ShownText(captioned->Caption());
        Present(child);
    } else {
        SetWindowTextW(child.window, ShownText(captioned->Caption()).c_str());
        LayOut(); // a button is as wide as its caption
    }
}

void FormView::SetFont(Child& child) {
    const FontRole role = child.control->Place().font;
    const double share = role == FontRole::Title ? 1.5 : role == FontRole::Heading ? 1.1 : 1;
    const HFONT before = std::exchange(child.font, MakeFont(child.control->Font(), dpi_, share));
    if (child.list)
        child.list->SetFont(child.font);
    else
        SetWindowFont(child.window, child.font, TRUE);
    DeleteObject(before);
    LayOut();
}

void FormView::DpiChanged() {
    dpi_ = DpiOf(window_);
    for (const auto& child : children_) {
        SetFont(*child);
        if (child->list) child->list->SetDpi(dpi_);
    }
    LayOut();
}

// --- Labels ----------------------------------------------------------------------------------------------------------

void FormView::Present(Child& child) {
    if (child.text == child.shown) return;
    if (Clock::now() - child.painted >= kDisplayFrame) {
        PresentNow(child);
    } else if (!std::exchange(timerRuns_, true)) {
        SetTimer(window_, kFrameTimer, static_cast<UINT>(kDisplayFrame.count()), nullptr);
    }
}

void FormView::PresentNow(Child& child) {
    child.shown = child.text;
    SetWindowTextW(child.window, child.shown.c_str());
    UpdateWindow(child.window);
    child.painted = Clock::now();
}

void FormView::PresentLate() {
    KillTimer(window_, kFrameTimer);
    timerRuns_ = false;
    for (const auto& child : children_)
        if (child->control->Kind() == ControlKind::Label) Present(*child);
}

// --- Showing, moving, focus ------------------------------------------------------------------------------------------

void FormView::ShowForm() {
    MoveToPlace();
    ShowWindow(window_, SW_SHOW);
    SetForegroundWindow(window_);
    if (GetFocus() == window_ || !GetFocus()) FocusFirst();
    RedrawWindow(window_, nullptr, nullptr, RDW_ALLCHILDREN | RDW_UPDATENOW); // the first repaint is seen
}

// The window keeps the centre the program has asked for, and stays on the screen.
void FormView::MoveToPlace() {
    RECT outer{}, room{};
    GetWindowRect(window_, &outer);
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &room, 0);
    const LONG width = std::min(outer.right - outer.left, room.right - room.left);
    const LONG height = std::min(outer.bottom - outer.top, room.bottom - room.top);
    LONG left = outer.left, top = outer.top;
    if (moved_) {
        left = PixelsOf(form_.Left(), dpi_) - (width - PixelsOf(form_.Width(), dpi_)) / 2;
        top = PixelsOf(form_.Top(), dpi_) - (height - PixelsOf(form_.Height(), dpi_)) / 2;
    }
    left = std::max(std::min(left, room.right - width), room.left);
    top = std::max(std::min(top, room.bottom - height), room.top);
    SetWindowPos(window_, nullptr, left, top, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

void FormView::LeaveFocus(HWND leaving) {
    if (lastFocus_ == leaving) lastFocus_ = nullptr;
    if (GetFocus() != leaving) return;
    const HWND next = GetNextDlgTabItem(window_, leaving, FALSE);
    ::SetFocus(next && next != leaving ? next : window_);
}

void FormView::FocusFirst() {
    const bool stillThere = lastFocus_ && IsWindowVisible(lastFocus_) && IsWindowEnabled(lastFocus_);
    if (const HWND target = stillThere ? lastFocus_ : GetNextDlgTabItem(window_, nullptr, FALSE)) ::SetFocus(target);
}

// --- From the user to the records ------------------------------------------------------------------------------------

// Enter presses the button that has the focus, as the space bar does; elsewhere it does nothing.
bool FormView::TakesMessage(MSG& message) {
    const bool ours = message.hwnd == window_ || IsChild(window_, message.hwnd);
    if (!ours) return false;
    if (message.message == WM_KEYDOWN && message.wParam == VK_RETURN) {
        for (const auto& child : children_)
            if (child->window == message.hwnd && child->control->Kind() == ControlKind::Button)
                SendMessageW(child->window, BM_CLICK, 0, 0);
        return true;
    }
    return IsDialogMessageW(window_, &message);
}

void FormView::Command(WORD identifier, WORD code) {
    const std::size_t index = identifier - std::size_t{kFirstIdentifier};
    if (mirroring_ || identifier < kFirstIdentifier || index >= children_.size()) return;
    Control* const control = children_[index]->control;
    if (control->Kind() == ControlKind::Button && code == BN_CLICKED) {
        RunGesture([control] { static_cast<Button*>(control)->UserClick(); });
    } else if (control->Kind() == ControlKind::OptionButton) {
        auto* const option = static_cast<OptionButton*>(control);
        const bool byTab = code == BN_SETFOCUS && GetKeyState(VK_TAB) < 0;
        if (code == BN_CLICKED) {
            RunGesture([option] { option->UserClick(); });
            ShowOptions(); // it may have been dropped
        }
        if (byTab) RunGesture([option] { option->SetFocus(); }); // which selects it
    }
}

LRESULT FormView::Notify(NMHDR& header, UINT message, WPARAM wide, LPARAM parameter) {
    for (const auto& child : children_) {
        if (!child->list) continue;
        const HWND list = child->list->Handle();
        bool answered = false;
        const bool itsOwn = header.hwndFrom == list || header.hwndFrom == ListView_GetHeader(list);
        const LRESULT answer = itsOwn ? child->list->Notified(header, answered) : 0;
        if (answered) return answer;
    }
    return DefWindowProcW(window_, message, wide, parameter);
}

LRESULT CALLBACK FormView::Procedure(HWND window, UINT message, WPARAM wide, LPARAM parameter) {
    if (message == WM_NCCREATE) {
        auto* const view = static_cast<FormView*>(reinterpret_cast<CREATESTRUCTW*>(parameter)->lpCreateParams);
        view->window_ = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(view));
    }
    auto* const view = reinterpret_cast<FormView*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return view ? view->Answer(message, wide, parameter) : DefWindowProcW(window, message, wide, parameter);
}

// NOLINTNEXTLINE(readability-function-size): one case a message
LRESULT FormView::Answer(UINT message, WPARAM wide, LPARAM parameter) {
    switch (message) {
    case WM_CLOSE: RunGesture([this] { form_.UserClose(); }); return 0; // the record decides
    case WM_COMMAND: Command(LOWORD(wide), HIWORD(wide)); return 0;
    case WM_NOTIFY: return Notify(*reinterpret_cast<NMHDR*>(parameter), message, wide, parameter);
    case WM_TIMER: PresentLate(); return 0;
    case WM_SIZE: LayOut(); return 0;
    case WM_ACTIVATE:
        if (LOWORD(wide) == WA_INACTIVE && IsChild(window_, GetFocus())) lastFocus_ = GetFocus();
        break;
    case WM_SETFOCUS: FocusFirst(); return 0;
    case WM_GETMINMAXINFO: {
        RECT outer{}, client{};
        GetWindowRect(window_, &outer);
        GetClientRect(window_, &client);
        const SIZE needed = RoomNeeded(static_cast<int>(client.right));
        reinterpret_cast<MINMAXINFO*>(parameter)->ptMinTrackSize = {
            std::max<LONG>(Scaled(520, dpi_), outer.right - outer.left - client.right + needed.cx),
            std::max<LONG>(Scaled(360, dpi_), outer.bottom - outer.top - client.bottom + needed.cy)};
        return 0;
    }
    case WM_SETCURSOR:
        if (!hourglass || LOWORD(parameter) != HTCLIENT) break;
        SetCursor(LoadCursorW(nullptr, IDC_WAIT));
        return TRUE;
    case WM_DRAWITEM: {
        const auto& draw = *reinterpret_cast<DRAWITEMSTRUCT*>(parameter);
        PaintSidePicture(draw.hDC, draw.rcItem);
        return TRUE;
    }
    case WM_PAINT: {
        PAINTSTRUCT paint{};
        PaintHairline(BeginPaint(window_, &paint));
        EndPaint(window_, &paint);
        return 0;
    }
    case WM_DPICHANGED: {
        const auto& place = *reinterpret_cast<RECT*>(parameter);
        SetWindowPos(window_, nullptr, place.left, place.top, place.right - place.left, place.bottom - place.top,
                     SWP_NOZORDER | SWP_NOACTIVATE);
        DpiChanged();
        return 0;
    }
    default: break;
    }
    return DefWindowProcW(window_, message, wide, parameter);
}

} // namespace korlan
