#include "platform/win32/desktop/Dpi.h"

#include "platform/win32/Wide.h"

#include <cmath>

namespace korlan {
namespace {

template <class Procedure>
Procedure* UserProcedure(const char* name) { // null before Windows 10
    return reinterpret_cast<Procedure*>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), name)));
}

// The bitmap faces of old systems have no letters for other sizes; their outline twins have.
std::wstring FaceOf(const std::string& face) {
    return face == "MS Sans Serif" || face == "System" ? L"Microsoft Sans Serif" : Wide(face);
}

} // namespace

int DpiOf(HWND window) {
    static auto* const ofWindow = UserProcedure<UINT WINAPI(HWND)>("GetDpiForWindow");
    if (const UINT dpi = window && ofWindow ? ofWindow(window) : 0; dpi != 0) return static_cast<int>(dpi);
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dpi;
}

int PixelsOf(float twips, int dpi) {
    return static_cast<int>(std::lround(static_cast<double>(twips) * dpi / 1440));
}

HFONT MakeFont(const FontSpec& spec, int dpi, double share) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    LOGFONTW font = metrics.lfMessageFont;
    font.lfHeight = static_cast<LONG>(std::lround(share * MulDiv(font.lfHeight, dpi, DpiOf(nullptr))));
    if (spec.points > 0) font.lfHeight = -static_cast<LONG>(std::lround(static_cast<double>(spec.points) * dpi / 72));
    if (!spec.face.empty()) lstrcpynW(font.lfFaceName, FaceOf(spec.face).c_str(), LF_FACESIZE);
    font.lfCharSet = static_cast<BYTE>(spec.charset);
    if (spec.bold || share > 1.2) font.lfWeight = FW_BOLD;
    return CreateFontIndirectW(&font);
}

} // namespace korlan
