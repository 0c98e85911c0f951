#include "platform/Gestures.h"

#include "platform/FormHost.h"

#include <chrono>
#include <exception>
#include <utility>

namespace korlan {

namespace {

Wait* innermost = nullptr;
std::exception_ptr thrown;

} // namespace

void RunGesture(const std::function<void()>& gesture) {
    if (thrown || BoxIsUp()) return;
    try {
        gesture();
    } catch (...) { // the one place that must take everything: it is thrown again unchanged
        thrown = std::current_exception();
        if (innermost && innermost->end_) innermost->end_();
    }
}

Wait::Wait(std::function<void()> end) : end_(std::move(end)), outer_(std::exchange(innermost, this)) {}

Wait::~Wait() {
    innermost = outer_;
}

void Wait::Rethrow() {
    if (thrown) std::rethrow_exception(std::exchange(thrown, nullptr));
}

void GiveWay() {
    using Clock = std::chrono::steady_clock;
    static Clock::time_point next;
    if (Clock::now() < next) return;
    DoEvents();
    next = Clock::now() + kDisplayFrame;
}

} // namespace korlan
