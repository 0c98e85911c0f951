#include "platform/TextLibrary.h"

#include "platform/TextEncoding.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace korlan {
namespace {

using namespace std::literals;
using test::TempDrive;

std::string Message(std::int32_t identifier) {
    return L32_Object_GetMessage(identifier).value_or("<none>");
}

TEST(TextLibrary, ReadsEveryLineItUnderstands) {
    const TempDrive drive;
    const auto expect = [&](std::int32_t identifier, const char* expected, std::initializer_list<std::string> files) {
        for (const std::string& file : files) {
            drive.Write("KLNLOCAL.TXT", file);
            L32_Object_Create("C:\\klnlocal.txt");
            EXPECT_EQ(Message(identifier), expected) << file;
        }
    };
    expect(99335, "Kann nicht:", {"99335=Kann nicht: ", "99335 Kann nicht: \r\n", "\t99335\t\tKann nicht:\t\r\n"});
    expect(7, "a = b", {"007 = a = b", "7 a = b\n7 second\n", "7\n7=\n7   \n7 a = b"}); // an empty text is none
    expect(7, "a\nb\\n\\t\\", {"7 a\\nb\\\\n\\t\\"});
    expect(7, "<none>", {"; 7 note\n;7=x\n\n8 y", "7 a\0b\n8 y"s, "\xFF\xFE\67\0 \0x\0"s});
    expect(7, "<none>", {"7x\n7;x\n7.5 x\n-7 x\n+7 x\n0x7 x\n[7] x\nx 7\n99999999999 x"});
    expect(7, "Größe €", {"7 Gr\xF6\xDF\x65 \x80", "7 Größe €", "\xEF\xBB\xBF\67 Größe €"});
}

TEST(TextLibrary, AFileThatCannotBeReadLeavesNoTexts) {
    const TempDrive drive;
    drive.Write("good.txt", "7 x");
    drive.Write("large.txt", "7 x\n" + std::string(4 * 1024 * 1024, ';'));
    for (const char* path : {"C:\\none.txt", "C:\\large.txt", "C:\\", "Q:\\x", ""}) {
        L32_Object_Create("C:\\good.txt");
        ASSERT_EQ(Message(7), "x");
        L32_Object_Create(path);
        EXPECT_EQ(Message(7), "<none>") << path;
    }
}

TEST(TextEncoding, TellsUtf8FromTheCodePage) {
    const struct {
        std::string bytes, text;
    } rows[] = {{"plain\x80\x92\x9F", "plain€’Ÿ"},
                {"é\xF0\x9F\x98\x80", "é\xF0\x9F\x98\x80"},
                {"not all valid: é\xE9", "not all valid: Ã©é"},
                {"cut short: \xE2\x82", "cut short: â‚"}};
    for (const auto& row : rows) EXPECT_EQ(TextFromBytes(row.bytes), row.text);
    EXPECT_EQ(BytesFromText("aé€Ж\xFF\xF0\x9F\x98\x80Ÿ"), "a\xE9\x80???\x9F");
}

} // namespace
} // namespace korlan
