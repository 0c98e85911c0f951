// See WindowUser.h.
#pragma once

#include "platform/win32/Wide.h"
#include "tests/support/WindowUser.h"

#include <windows.h>

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <map>
#include <vector>

namespace korlan {

HWND FormWindow();

namespace test {

struct User {
    static void SitDown(const Form& seen) { form = &seen; }
    static bool IsActive() { return GetForegroundWindow() == FormWindow(); }
    static void Focus(const Control& control) { ::SetFocus(Find(control)), DoEvents(); }
    static std::string Focused() {
        const auto found = std::ranges::find(form->Controls(), GetFocus(), [](const Control* c) { return Find(*c); });
        return found == form->Controls().end() ? "" : (*found)->Name();
    }
    static void Press(Key key) {
        const std::vector<WORD> keys[] = {{VK_SPACE}, {VK_RETURN}, {VK_TAB}, {VK_DOWN}, {VK_CONTROL, 'A'}};
        Strike(keys[static_cast<std::size_t>(key)]);
    }
    static void PressMnemonic(char letter) { Strike({VK_MENU, static_cast<WORD>(letter)}); }
    static void Click(const Control& control) {
        const Area area = Place(control);
        ClickAt(Find(control), 8, (area.bottom - area.top) / 2);
    }
    static void ClickByReader(const Control& control) { SendMessageW(Find(control), BM_CLICK, 0, 0); }
    static void Choose(std::int32_t row) {
        ListView_SetItemState(List(), -1, 0, LVIS_SELECTED);
        ListView_SetItemState(List(), row - 1, LVIS_FOCUSED | LVIS_SELECTED, LVIS_FOCUSED | LVIS_SELECTED);
    }
    static void ClickRow(std::int32_t row, bool onBox) {
        RECT label{}, icon{};
        ListView_GetItemRect(List(), row - 1, &label, LVIR_LABEL);
        ListView_GetItemRect(List(), row - 1, &icon, LVIR_ICON);
        ClickAt(List(), onBox ? icon.left - 6 : label.right - 4, (label.top + label.bottom) / 2);
    }
    static void CloseWindow() { SendMessageW(FormWindow(), WM_CLOSE, 0, 0); }
    static void PassTime(int milliseconds) {
        for (const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(milliseconds); GetTickCount64() < end;)
            DoEvents(), Sleep(1);
    }

    static bool SeesWindow() { return IsWindowVisible(FormWindow()); }
    static Area Window() { return AreaOf(FormWindow()); }
    static Area Place(const Control& control) { return AreaOf(Find(control)); }
    static int WidthNeeded(const Control& button) { return WidthOf(Find(button), TextOf(Find(button)), FW_NORMAL) + 8; }
    static bool IsChecked(const OptionButton& option) { return Button_GetCheck(Find(option)) == BST_CHECKED; }
    static std::string NameOf(const Control& control) { // of a window its text, which in a label shows each "&"
        std::string text = TextOf(Find(control));
        if (control.Kind() != ControlKind::Label) std::erase(text, '&');
        return text;
    }
    static bool SeesRow(std::int32_t row) {
        const int first = ListView_GetTopIndex(List());
        return first < row && row <= first + ListView_GetCountPerPage(List());
    }
    static bool IsBold(std::int32_t row) { // asks as the list does when it paints
        NMLVCUSTOMDRAW draw{};
        draw.nmcd.hdr = {List(), static_cast<UINT_PTR>(GetDlgCtrlID(List())), static_cast<UINT>(NM_CUSTOMDRAW)};
        draw.nmcd.hdc = CreateCompatibleDC(nullptr);
        draw.nmcd.dwDrawStage = CDDS_ITEMPREPAINT;
        draw.nmcd.dwItemSpec = static_cast<DWORD_PTR>(row - 1);
        const LRESULT answer = SendMessageW(FormWindow(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&draw));
        DeleteDC(draw.nmcd.hdc);
        return answer == CDRF_NEWFONT;
    }
    static bool FitsInBold(std::int32_t row, int column) {
        constexpr int kMargins = 12;
        wchar_t text[100] = {};
        ListView_GetItemText(List(), row - 1, column - 1, text, 100);
        return WidthOf(List(), Narrow(text), FW_BOLD) + kMargins <= ListView_GetColumnWidth(List(), column - 1);
    }
    static std::pair<int, int> Bar(const ProgressBar& bar) {
        return {static_cast<int>(SendMessageW(Find(bar), PBM_GETPOS, 0, 0)),
                static_cast<int>(SendMessageW(Find(bar), PBM_GETRANGE, FALSE, 0))};
    }
    static int PaintsOf(const Label& label) {
        SetWindowSubclass(Find(label), CountTexts, 1, 0);
        return std::exchange(textsPut, 0);
    }

    static void Soon(const std::function<void()>& what) { Later(what, false); }
    static void WhenAsked(const std::function<void()>& what) { Later(what, true); }
    static Box SeesBox() {
        Box box;
        const HWND window = UpmostBox(), edit = FindWindowExW(window, nullptr, WC_EDITW, nullptr);
        box.onTop = (GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
        box.isSecret = edit && (GetWindowLongW(edit, GWL_STYLE) & ES_PASSWORD) != 0;
        for (const auto& [text, button] : Children(WC_BUTTONW)) {
            if (!IsWindowVisible(button)) continue;
            box.buttons += (box.buttons.empty() ? "" : " ") + text;
            if (button == GetFocus()) box.standing = text;
        }
        for (const auto& [text, label] : Children(WC_STATICW)) {
            if (SendMessageW(label, STM_GETICON, 0, 0) != 0) box.hasIcon = true;
            if (!text.empty()) box.text = text;
        }
        return box;
    }
    static void Answer(const char* button) {
        button ? SendMessageW(Children(WC_BUTTONW).at(button), BM_CLICK, 0, 0)
               : PostMessageW(UpmostBox(), WM_CLOSE, 0, 0);
    }
    static void Type(const std::string& text) {
        SetWindowTextW(FindWindowExW(UpmostBox(), nullptr, WC_EDITW, nullptr), Wide(text).c_str());
    }

private:
    static inline const Form* form = nullptr;
    static inline int textsPut = 0;
    static inline std::map<UINT_PTR, std::pair<std::function<void()>, bool>> waiting; // by timer; whether for a box

    // The window's children are those controls that can be seen, in the form's order.
    static HWND Find(const Control& control) {
        HWND child = ::GetWindow(FormWindow(), GW_CHILD);
        for (const Control* other : form->Controls()) {
            if (other == &control) return child;
            if (other->Kind() != ControlKind::ImageList) child = ::GetWindow(child, GW_HWNDNEXT);
        }
        return nullptr;
    }
    static HWND List() { return FindWindowExW(FormWindow(), nullptr, WC_LISTVIEWW, nullptr); }
    static std::string TextOf(HWND window) {
        wchar_t text[2000] = {};
        SendMessageW(window, WM_GETTEXT, 2000, reinterpret_cast<LPARAM>(text));
        return Narrow(text);
    }
    static Area AreaOf(HWND window) {
        RECT rect{};
        GetClientRect(FormWindow(), &rect);
        if (window != FormWindow()) GetWindowRect(window, &rect);
        if (window != FormWindow()) MapWindowPoints(nullptr, FormWindow(), reinterpret_cast<POINT*>(&rect), 2);
        return {rect.left, rect.top, rect.right, rect.bottom};
    }
    static int WidthOf(HWND window, const std::string& text, LONG weight) {
        LOGFONTW description{};
        GetObjectW(GetWindowFont(window), sizeof description, &description);
        description.lfWeight = weight;
        const HFONT font = CreateFontIndirectW(&description);
        const HDC device = CreateCompatibleDC(nullptr);
        SelectObject(device, font);
        RECT size{};
        DrawTextW(device, Wide(text).c_str(), -1, &size, DT_CALCRECT | DT_SINGLELINE);
        DeleteDC(device);
        DeleteObject(font);
        return static_cast<int>(size.right);
    }

    static void Strike(const std::vector<WORD>& keys) { // all of them down, and up again
        std::vector<INPUT> inputs(2 * keys.size());
        for (std::size_t i = 0; i < keys.size(); ++i) {
            inputs[i].type = INPUT_KEYBOARD;
            inputs[i].ki.wVk = keys[i];
            inputs[i].ki.wScan = static_cast<WORD>(MapVirtualKeyW(keys[i], MAPVK_VK_TO_VSC));
            inputs[inputs.size() - 1 - i] = inputs[i];
            inputs[inputs.size() - 1 - i].ki.dwFlags = KEYEVENTF_KEYUP;
        }
        SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT));
        DoEvents();
    }
    static void ClickAt(HWND window, int x, int y) {
        PostMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, y));
        PostMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(x, y));
        DoEvents();
    }
    static LRESULT CALLBACK CountTexts(HWND window, UINT message, WPARAM wide, LPARAM parameter, UINT_PTR, DWORD_PTR) {
        textsPut += message == WM_SETTEXT; // which paints, and is all that does
        return DefSubclassProc(window, message, wide, parameter);
    }

    static BOOL CALLBACK TakeDialog(HWND window, LPARAM found) {
        wchar_t name[8] = {};
        GetClassNameW(window, name, 8);
        if (lstrcmpW(name, L"#32770") != 0 || !IsWindowVisible(window)) return TRUE;
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }
    static HWND UpmostBox() {
        HWND box = nullptr;
        EnumThreadWindows(GetCurrentThreadId(), TakeDialog, reinterpret_cast<LPARAM>(&box));
        return box;
    }
    static std::map<std::string, HWND> Children(const wchar_t* className) { // of the box, by their text without "&"
        std::map<std::string, HWND> children;
        for (HWND child = nullptr; (child = FindWindowExW(UpmostBox(), child, className, nullptr)) != nullptr;) {
            std::string text = TextOf(child);
            std::erase(text, '&');
            children[text] = child;
        }
        return children;
    }
    static void CALLBACK OnTimer(HWND, UINT, UINT_PTR timer, DWORD) {
        if (waiting.at(timer).second && !UpmostBox()) return;
        KillTimer(nullptr, timer);
        waiting.extract(timer).mapped().first();
    }
    static void Later(const std::function<void()>& what, bool withBox) {
        waiting[SetTimer(nullptr, 0, USER_TIMER_MINIMUM, OnTimer)] = {what, withBox};
    }
};

} // namespace test
} // namespace korlan
