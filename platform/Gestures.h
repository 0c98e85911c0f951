// Carries what a handler throws over the toolkit, which lets no exception pass. Every call from the toolkit into the
// program goes through RunGesture; every place where the program waits for gestures holds a Wait.
#pragma once

#include <functional>

namespace korlan {

// Runs one gesture of the user. What it throws, of whatever type, is kept and the innermost wait is told to end; until
// that wait has thrown it again, further gestures are dropped. So is one while a box is up: the toolkit keeps mouse and
// keyboard from the window then, but not a screen reader.
void RunGesture(const std::function<void()>& gesture);

bool BoxIsUp(); // of the back end

class Wait {
public:
    // `end` makes the wait return soon; empty for a wait that returns by itself.
    explicit Wait(std::function<void()> end = {});
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;
    ~Wait();

    void Rethrow(); // throws what a gesture has thrown; returns when there is nothing

private:
    friend void RunGesture(const std::function<void()>& gesture);
    std::function<void()> end_;
    Wait* outer_;
};

} // namespace korlan
