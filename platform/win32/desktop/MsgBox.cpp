#include "platform/MsgBox.h"

#include "platform/Gestures.h"
#include "platform/Log.h"
#include "platform/win32/Wide.h"

#include <cstring>
#include <vector>

namespace korlan {

HWND FormWindow();

namespace {

std::wstring TitleOf(const std::string& title) {
    return Wide(title.empty() ? "KlnUpdt" : title);
}

// The window that the box belongs to: another box of ours, or the form.
HWND Owner() {
    const HWND form = FormWindow();
    return form && IsWindowVisible(form) ? GetLastActivePopup(form) : nullptr;
}

UINT ButtonsOf(std::int32_t style) {
    const std::int32_t code = style & 15;
    return static_cast<UINT>(code > 5 ? kBoxYesNoCancel : code);
}

UINT CountOf(UINT buttons) {
    if (buttons == MB_OK) return 1;
    return buttons == MB_ABORTRETRYIGNORE || buttons == MB_YESNOCANCEL ? 3 : 2;
}

UINT SystemStyle(std::int32_t style) {
    const UINT buttons = ButtonsOf(style), icon = static_cast<UINT>(style & 0xF0),
               chosen = static_cast<UINT>(style >> 8 & 15);
    return buttons | (icon <= MB_ICONINFORMATION ? icon : 0) | (chosen < CountOf(buttons) ? chosen << 8 : 0) |
           static_cast<UINT>(style & kBoxSystemModal);
}

BOOL CALLBACK EndIfDialog(HWND window, LPARAM ended) {
    wchar_t name[8] = {};
    GetClassNameW(window, name, 8);
    if (lstrcmpW(name, L"#32770") != 0) return TRUE;
    *reinterpret_cast<bool*>(ended) = EndDialog(window, IDCANCEL);
    return FALSE; // the topmost only: the others wait behind it
}

// A handler has thrown while the user was asked: the box goes, and what was thrown goes on.
void EndTopmostBox() {
    bool ended = false;
    EnumThreadWindows(GetCurrentThreadId(), EndIfDialog, reinterpret_cast<LPARAM>(&ended));
}

// --- The input box ---------------------------------------------------------------------------------------------------

constexpr WORD kPrompt = 10, kEdit = 11;

// A dialog as the system takes it: one record a control, each at a multiple of four bytes.
class DialogTemplate {
public:
    DialogTemplate(const std::wstring& title, SHORT width, SHORT height) {
        DLGTEMPLATE head{};
        head.style = DS_MODALFRAME | DS_CENTER | DS_SETFONT | WS_POPUP | WS_CAPTION | WS_SYSMENU;
        head.cx = width, head.cy = height;
        Add(&head, sizeof head);
        AddText(L""); // menu
        AddText(L""); // class
        AddText(title);
        const WORD points = 9;
        Add(&points, sizeof points);
        AddText(L"MS Shell Dlg 2");
    }
    void AddControl(WORD kind, DWORD style, WORD identifier, const RECT& place, const std::wstring& text) {
        bytes_.resize((bytes_.size() + 3) & ~std::size_t{3});
        DLGITEMTEMPLATE item{};
        item.style = style | WS_CHILD | WS_VISIBLE;
        item.x = static_cast<SHORT>(place.left), item.y = static_cast<SHORT>(place.top);
        item.cx = static_cast<SHORT>(place.right), item.cy = static_cast<SHORT>(place.bottom);
        item.id = identifier;
        Add(&item, sizeof item);
        const WORD windowClass[] = {0xFFFF, kind};
        Add(windowClass, sizeof windowClass);
        AddText(text);
        const WORD nothing = 0;
        Add(&nothing, sizeof nothing);
        ++reinterpret_cast<DLGTEMPLATE*>(bytes_.data())->cdit;
    }
    LPCDLGTEMPLATE Get() const { return reinterpret_cast<LPCDLGTEMPLATE>(bytes_.data()); }

private:
    void Add(const void* from, std::size_t count) {
        const auto* first = static_cast<const char*>(from);
        bytes_.insert(bytes_.end(), first, first + count);
    }
    void AddText(const std::wstring& text) { Add(text.c_str(), (text.size() + 1) * sizeof(wchar_t)); }
    std::vector<char> bytes_;
};

INT_PTR CALLBACK AnswerInput(HWND dialog, UINT message, WPARAM wide, LPARAM parameter) {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(dialog, GWLP_USERDATA, parameter);
    const bool ends = message == WM_COMMAND && (LOWORD(wide) == IDOK || LOWORD(wide) == IDCANCEL);
    if (ends && LOWORD(wide) == IDOK) {
        std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(GetDlgItem(dialog, kEdit))) + 1, 0);
        text.resize(GetDlgItemTextW(dialog, kEdit, text.data(), static_cast<int>(text.size())));
        *reinterpret_cast<std::string*>(GetWindowLongPtrW(dialog, GWLP_USERDATA)) = Narrow(text);
    }
    if (ends) EndDialog(dialog, LOWORD(wide));
    return message == WM_INITDIALOG || ends;
}

} // namespace

bool BoxIsUp() { // a box disables its owner
    return FormWindow() && !IsWindowEnabled(FormWindow());
}

std::int32_t ShowMsgBox(const std::string& text, std::int32_t style, const std::string& title) {
    LogLine("box: " + text);
    Wait wait(EndTopmostBox);
    const int answer = MessageBoxW(Owner(), Wide(text).c_str(), TitleOf(title).c_str(), SystemStyle(style));
    wait.Rethrow();
    if (CountOf(ButtonsOf(style)) == 1) return kAnswerOk; // by the close box too
    return answer != 0 ? answer : kAnswerCancel;
}

std::string ShowInputBox(const std::string& prompt, const std::string& title, bool secret) {
    constexpr WORD kButtonClass = 0x0080, kEditClass = 0x0081, kStaticClass = 0x0082;
    DialogTemplate dialog(TitleOf(title), 240, 78);
    const DWORD editStyle = WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL | (secret ? ES_PASSWORD : 0);
    dialog.AddControl(kStaticClass, SS_NOPREFIX, kPrompt, {7, 7, 226, 26}, Wide(prompt));
    dialog.AddControl(kEditClass, editStyle, kEdit, {7, 36, 226, 14}, L"");
    dialog.AddControl(kButtonClass, BS_DEFPUSHBUTTON | WS_TABSTOP, IDOK, {128, 57, 50, 14}, L"OK");
    dialog.AddControl(kButtonClass, BS_PUSHBUTTON | WS_TABSTOP, IDCANCEL, {183, 57, 50, 14}, L"Cancel");
    std::string entered;
    Wait wait(EndTopmostBox);
    DialogBoxIndirectParamW(GetModuleHandleW(nullptr), dialog.Get(), Owner(), AnswerInput,
                            reinterpret_cast<LPARAM>(&entered));
    wait.Rethrow();
    return entered;
}

} // namespace korlan
