// Whether the suite is open. The wizard must not replace the suite's files under it.
#pragma once

namespace korlan {

// Looks for a top-level window, visible or hidden, whose trimmed title contains the suite's name with a colon behind it
// and is not this program's own. `found` becomes true after that window was flashed and brought to the top; it becomes
// false, and no window is touched, when there is none. Shows no box and does not yield.
void FindKorlanRunning(bool& found);

} // namespace korlan
