// The window's pictures, drawn at the size asked for, so that none is ever stretched.
#pragma once

#include <windows.h>

#include <commctrl.h>

namespace korlan {

// The pictures of an image list, in its order; to be destroyed by who asked for it.
HIMAGELIST MakeListIcons(int count, int side);
HICON MakeProgramIcon(int side);
void PaintSidePicture(HDC target, const RECT& rect);

} // namespace korlan
