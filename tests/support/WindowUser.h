// The user in front of the window: what he does with keys, mouse and screen reader, and what he sees. One version for
// each back end; the cases of DesktopTest.cpp know no other way to the window.
#pragma once

#include "platform/Controls.h"
#include "platform/FormHost.h"
#include "platform/MsgBox.h"

#include <functional>
#include <string>
#include <utility>

namespace korlan::test {

struct Area { // pixels of the window
    int left = 0, top = 0, right = 0, bottom = 0;
    bool operator==(const Area&) const = default;
    bool Holds(const Area& a) const {
        return left <= a.left && top <= a.top && a.right <= right && a.bottom <= bottom && a.left < a.right;
    }
    bool Meets(const Area& a) const { return a.left < right && left < a.right && a.top < bottom && top < a.bottom; }
};

enum class Key { Space, Return, Tab, Down, SelectAll };

struct Box {
    std::string text, buttons, standing; // the buttons in order of their names; the default one
    bool hasIcon = false, onTop = false, isSecret = false;
};

} // namespace korlan::test
