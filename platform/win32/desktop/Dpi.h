// Dots per inch of a window, and the system's measures and fonts at them. Where Windows knows only one value for the
// whole desktop, that one holds.
#pragma once

#include "platform/Fonts.h"

#include <windows.h>

namespace korlan {

int DpiOf(HWND window);

inline int Scaled(int pixelsAt96, int dpi) {
    return MulDiv(pixelsAt96, dpi, 96);
}

int PixelsOf(float twips, int dpi);

// The font nearest to `spec`; what it leaves open is the system's own font for messages, `share` times its size. To be
// deleted by who asked for it.
HFONT MakeFont(const FontSpec& spec, int dpi, double share = 1);

} // namespace korlan
