#include "tests/support/ScriptedDesktop.h"

#include <gtest/gtest.h>

#include <ostream>

namespace korlan::test {

ScriptedDesktop& Desktop() {
    static ScriptedDesktop desktop;
    return desktop;
}

void ResetDesktop() {
    Desktop() = ScriptedDesktop{};
}

std::ostream& operator<<(std::ostream& out, const ShownBox& box) {
    return out << '"' << box.title << "\" style " << box.style << ": \"" << box.text << '"';
}

} // namespace korlan::test

namespace korlan {

using test::Desktop;

void OpenFormHost(Form& form) {
    Desktop().form = &form;
}
void CloseFormHost() {
    Desktop().form = nullptr;
}

void ControlChanged(const Control& control, Aspect aspect, std::int32_t row) {
    if (Desktop().onControlChanged) Desktop().onControlChanged(control, aspect, row);
}

void DoEvents() {
    ++Desktop().eventsHandled;
    if (Desktop().onDoEvents) Desktop().onDoEvents();
}

void GiveWay() {
    DoEvents();
}

void RunMessageLoop() {
    if (Desktop().onMessageLoop) Desktop().onMessageLoop();
}

float ScreenWidth() {
    return Desktop().screenWidth;
}
float ScreenHeight() {
    return Desktop().screenHeight;
}

void SetMousePointer(MousePointer pointer) {
    Desktop().pointers.push_back(pointer);
}

std::int32_t ShowMsgBox(const std::string& text, std::int32_t style, const std::string& title) {
    const test::ShownBox box{text, style, title};
    Desktop().boxes.push_back(box);
    if (Desktop().answers.empty()) {
        if ((style & 15) == kBoxOkOnly) return kAnswerOk;
        ADD_FAILURE() << "no answer for the box " << box;
        return kAnswerCancel;
    }
    const std::int32_t answer = Desktop().answers.front();
    Desktop().answers.pop_front();
    return answer;
}

std::string ShowInputBox(const std::string& prompt, const std::string& title, bool secret) {
    Desktop().inputBoxes.push_back({prompt, title, secret});
    if (Desktop().inputs.empty()) {
        ADD_FAILURE() << "no text for the input box \"" << prompt << '"';
        return {};
    }
    std::string text = Desktop().inputs.front();
    Desktop().inputs.pop_front();
    return text;
}

void OpenCompiledHelp(const std::string& file, HelpCommand command, std::int32_t data) {
    Desktop().helpCalls.push_back({file, command, data});
}

std::int32_t DefaultCharset() {
    return Desktop().charset;
}

} // namespace korlan
