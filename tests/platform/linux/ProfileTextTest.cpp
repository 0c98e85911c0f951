#include "platform/linux/ProfileText.h"

#include <gtest/gtest.h>

namespace korlan {
namespace {

// Files made of the pieces that matter to the rules, with odd bytes among them. Whatever they hold, a value written can
// be read back and deleted again, and what was there stays in front of it.
TEST(ProfileText, AnyBytesCanBeReadAndWritten) {
    unsigned state = 1;
    const auto random = [&](unsigned below) {
        state = state * 1664525u + 1013904223u;
        return (state >> 8) % below;
    };
    const std::string_view pieces[] = {"[S]", "[",  "]", "k",    "=",        "\r", "\n",
                                       ";",   "\"", " ", "\xE9", "\xC3\xA9", "x=1"};
    for (int round = 0; round < 20'000; ++round) {
        SCOPED_TRACE(round);
        const bool utf16 = round % 5 == 0;
        std::string before = utf16 ? "\xFF\xFE" : "";
        for (unsigned i = random(30); i > 0; --i)
            before += random(8) == 0 ? std::string(1, static_cast<char>(random(256))) : std::string(pieces[random(13)]);

        const auto written = ProfileText(before).Write("New", "key", "value");
        const ProfileText after(*written);
        const std::size_t kept = before.size() - (utf16 && before.size() % 2 != 0 ? 1 : 0);
        EXPECT_EQ(written->substr(0, kept), before.substr(0, kept));
        EXPECT_EQ(after.Read("New", "key", "", 100), "value");
        EXPECT_EQ(after.Write("new", "KEY", "value"), std::nullopt);
        const auto deleted = after.Write("New", "key", std::nullopt);
        ASSERT_TRUE(deleted);
        EXPECT_EQ(ProfileText(*deleted).Read("New", "key", "none", 100), "none");
    }
}

} // namespace
} // namespace korlan
