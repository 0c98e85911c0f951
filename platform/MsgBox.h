// Message and input boxes. Modal: both return only when the user has answered, and keep the window alive meanwhile.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// Style values as Windows documents them; a style is one of each group, added.
enum MsgBoxStyle : std::int32_t {
    kBoxOkOnly = 0,
    kBoxYesNoCancel = 3,
    kBoxYesNo = 4,
    kBoxCritical = 16,
    kBoxQuestion = 32,
    kBoxExclamation = 48,
    kBoxSystemModal = 4096,
};

enum MsgBoxAnswer : std::int32_t { kAnswerOk = 1, kAnswerCancel = 2, kAnswerYes = 6, kAnswerNo = 7 };

// The low four bits of `style` choose the buttons, the next four the icon, the next four the default button.
// A button code no box has (6 and above) shows Yes, No and Cancel; an icon code no box has shows none.
// An empty title shows the program's own, "KlnUpdt". Closing the box answers Cancel where it has one, else No, else OK.
std::int32_t ShowMsgBox(const std::string& text, std::int32_t style, const std::string& title);

// One line of text from the user; empty when he leaves it empty or cancels. `secret` hides what is typed.
std::string ShowInputBox(const std::string& prompt, const std::string& title, bool secret);

} // namespace korlan
