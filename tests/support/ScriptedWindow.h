// The windows of the desktop as a script: stands in for the part of platform/Window.h that finds the running suite.
// Handle n is the n-th title, from the top of the z-order down.
#pragma once

#include <string>
#include <vector>

namespace korlan::test {

struct ScriptedWindows {
    std::vector<std::string> titles;
    std::vector<std::string> touched; // "flash " or "top " and the title, in order
};

ScriptedWindows& Windows();

} // namespace korlan::test
