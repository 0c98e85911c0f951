// The host's own widget style, with what it lacks on a dark theme.
#pragma once

class QWidget;

namespace korlan {

// Check boxes and option buttons of `widget` get an outline that can be seen on a dark palette.
void OutlineIndicators(QWidget& widget);

} // namespace korlan
