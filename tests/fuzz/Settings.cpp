// The suite's INI file: the first three lines are section, key and value of a write, the rest is the file.
#include "tests/fuzz/Target.h"

#include <algorithm>
#include <cstring>

using namespace korlan;
using namespace korlan::test;

namespace {

// A text that comes back as it was written: nothing that is trimmed, stripped or belongs to the file's own form.
bool IsPlain(const std::string& text) {
    return !text.empty() && text.size() < 200 &&
           std::ranges::all_of(text, [](char c) { return c > ' ' && c < 127 && !std::strchr("[]=;\"'", c); });
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    StartFresh();
    std::string_view rest = Bytes(data, size);
    const std::string section = TakeLine(rest), key = TakeLine(rest), value = TakeLine(rest);
    Drive().Write("KORLAN/SYS/TESSARY.INI", rest);
    Require(ReadIniString(section, key, "").size() <= 3 * 1023, "a value of bounded length"); // in UTF-8
    ReadSuiteSettings();
    std::int32_t failed = 0;
    WriteIniString(section, key, value, failed);
    if (!IsPlain(section) || !IsPlain(key) || !IsPlain(value) || failed != 0) return 0;
    Require(ReadIniString(section, key, "") == value, "what was written is read: " + value);
    const std::string once = Drive().Read("KORLAN/SYS/TESSARY.INI");
    WriteIniString(section, key, value, failed);
    Require(Drive().Read("KORLAN/SYS/TESSARY.INI") == once, "the same write twice is one write");
    return 0;
}
