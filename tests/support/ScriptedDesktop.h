// The desktop as a script: the procedures of FormHost.h, MsgBox.h and Help.h and the font question of Fonts.h without a
// window. A test links this file in place of the desktop back end, says what people answer and looks at what was shown.
#pragma once

#include "platform/FormHost.h"
#include "platform/Help.h"
#include "platform/MsgBox.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace korlan::test {

struct ShownBox {
    std::string text;
    std::int32_t style;
    std::string title;
    bool operator==(const ShownBox&) const = default;
};
std::ostream& operator<<(std::ostream& out, const ShownBox& box);

struct ShownInputBox {
    std::string prompt;
    std::string title;
    bool secret;
    bool operator==(const ShownInputBox&) const = default;
};

struct HelpCall {
    std::string file;
    HelpCommand command;
    std::int32_t data;
    bool operator==(const HelpCall&) const = default;
};

struct ScriptedDesktop {
    // What people do. A box with only an OK button is answered OK when the queue is empty; any other box or input box
    // without a queued answer fails the test.
    std::deque<std::int32_t> answers;
    std::deque<std::string> inputs;
    std::function<void()> onDoEvents;    // in every DoEvents
    std::function<void()> onMessageLoop; // in place of the message loop
    std::function<void(const Control& control, Aspect aspect, std::int32_t row)> onControlChanged;

    // What was shown.
    std::vector<ShownBox> boxes;
    std::vector<ShownInputBox> inputBoxes;
    std::vector<HelpCall> helpCalls;
    std::vector<MousePointer> pointers; // in the order set
    Form* form = nullptr;               // the form whose host is open
    std::int32_t eventsHandled = 0;     // calls of DoEvents

    // What the host is like.
    std::int32_t charset = 0;
    float screenWidth = 15360, screenHeight = 11520; // twips
};

// The one desktop of the test program.
ScriptedDesktop& Desktop();

// Back to an empty script; called by a fixture before every test.
void ResetDesktop();

} // namespace korlan::test
