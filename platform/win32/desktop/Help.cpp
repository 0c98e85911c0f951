#include "platform/Help.h"

#include "platform/win32/Wide.h"

namespace korlan {
namespace {

using HelpCall = HWND(WINAPI*)(HWND caller, LPCSTR file, UINT command, DWORD_PTR data);

// The system's help control; null on a system without one. Loaded at the first call: few runs open the help.
HelpCall LoadHelpControl() {
    const HMODULE control = LoadLibraryW(L"hhctrl.ocx");
    if (!control) return nullptr;
    return reinterpret_cast<HelpCall>(reinterpret_cast<void*>(GetProcAddress(control, "HtmlHelpA")));
}

} // namespace

void OpenCompiledHelp(const std::string& file, HelpCommand command, std::int32_t data) {
    constexpr UINT kDisplayTopic = 0, kCloseAll = 18;
    static const HelpCall call = LoadHelpControl();
    if (!call) return;
    const bool closes = command == HelpCommand::CloseAll;
    const auto path = CodePagePath(file);
    if (!closes && (!path || GetFileAttributesW(Wide(file).c_str()) == INVALID_FILE_ATTRIBUTES)) return;
    call(nullptr, closes ? nullptr : path->c_str(), closes ? kCloseAll : kDisplayTopic, static_cast<DWORD_PTR>(data));
}

} // namespace korlan
