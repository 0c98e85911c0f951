// The toolkit's side of the window: it mirrors the control records and runs the message loop.
// What a handler throws is carried over the toolkit and thrown again by the DoEvents or RunMessageLoop under way.
#pragma once

#include "platform/Controls.h"

#include <chrono>

namespace korlan {

inline constexpr std::chrono::milliseconds kDisplayFrame{16}; // nothing is painted more often

// Makes the (still hidden) window for the form and all its controls. The form must outlive the host.
void OpenFormHost(Form& form);
void CloseFormHost();

// A control record has changed; `row` counts from 1, 0 = none. Cheap. Does nothing for a control no host shows, and may
// be called before main.
void ControlChanged(const Control& control, Aspect aspect, std::int32_t row);

// Handles what is waiting (gestures, paints) and returns; never waits.
void DoEvents();

// DoEvents for a loop that yields at every row or block, where most calls find nothing waiting: at most once a display
// frame; the other calls return at once.
void GiveWay();

// Handles events until the window has gone.
void RunMessageLoop();

// Size of the whole screen in twips.
float ScreenWidth();
float ScreenHeight();

enum class MousePointer : std::int32_t { Default = 0, Hourglass = 11 };
void SetMousePointer(MousePointer pointer);

} // namespace korlan
