#include "app/base/TextHelpers.h"

#include "tests/support/Failing.h"

#include <gmock/gmock.h>

namespace korlan {
namespace {

using test::ErrorOf;

TEST(TextHelpers, TextAsNumber) {
    const auto integers = [](const std::vector<std::string>& texts) {
        std::vector<std::int32_t> numbers;
        for (const std::string& text : texts) numbers.push_back(ToInteger(text));
        return numbers;
    };
    EXPECT_THAT(integers({" -7 ", "+3", "007", "2.5", "3.5", "-2.5"}), testing::ElementsAre(-7, 3, 7, 2, 4, -2));
    for (const char* text : {"2147483648", "99999999999999999999"})
        EXPECT_EQ(ErrorOf([&] { ToInteger(text); }), 6) << text;
    for (const char* text : {"", "  ", "-", "+-3", "1 2", "12x", "inf", "\t5"})
        EXPECT_EQ(ErrorOf([&] { ToInteger(text); }), 13) << '"' << text << '"';

    for (const char* text : {"42", "  42 apples", "+42", "42.9"}) EXPECT_EQ(Val(text), 42) << text;
    EXPECT_EQ(Val("apples"), 0);
    EXPECT_EQ(Val("-99999999999999999999"), INT32_MIN);
}

TEST(TextHelpers, RoundingIsHalfToEven) {
    for (const auto& [value, rounded] : {std::pair{0.5, 0},
                                         {1.5, 2},
                                         {2.5, 2},
                                         {-0.5, 0},
                                         {-1.5, -2},
                                         {2147483647.4, INT32_MAX},
                                         {-2147483648.4, INT32_MIN}})
        EXPECT_EQ(RoundHalfEven(value), rounded) << value;
    for (const double value : {2147483647.5, -2147483649.0, 1e300, 0.0 / 0.0 * 1})
        EXPECT_EQ(ErrorOf([&] { RoundHalfEven(value); }), 6) << value;
}

TEST(TextHelpers, CuttingCountsFromOneAndRefusesBadPositions) {
    EXPECT_EQ(Left("abc", 2) + Left("abc", 9), "ababc");
    EXPECT_EQ(Mid("abc", 1) + Mid("abc", 3) + Mid("abc", 4), "abcc");
    EXPECT_EQ(ErrorOf([] { Left("abc", -1); }), 5);
    EXPECT_EQ(InStr("banana", "an") * 10 + InStrRev("banana", "an") + InStr("banana", "x"), 24);
    EXPECT_EQ(Replace("a#b#", "#", "%23"), "a%23b%23");
    using Pieces = std::vector<std::string>;
    EXPECT_EQ(Split("", ","), Pieces{});
    EXPECT_EQ(Split(",a,,", ","), (Pieces{"", "a", "", ""}));
    EXPECT_EQ(std::string(Piece("a,,b", ",", 2)) + "|" + std::string(Piece("a,,", ",", 2)), "b|");
    for (const char* text : {"", "a,b"}) EXPECT_EQ(ErrorOf([&] { Piece(text, ",", *text ? 2 : 0); }), 9) << text;
}

TEST(TextHelpers, CaseAndBlanks) {
    const std::pair<const char*, const char*> rows[] = {
        {"korlan1[`{", "KORLAN1[`{"}, {"äöüéÿ", "ÄÖÜÉŸ"}, {"плата", "ПЛАТА"}, {"日本", "日本"}, {"a\xC3", "A\xC3"}};
    for (const auto& [lower, upper] : rows) {
        EXPECT_EQ(UpperCase(lower), upper);
        EXPECT_EQ(LowerCase(upper), lower);
    }
    EXPECT_EQ(Trim("  a b\t ") + Trim("   "), "a b\t") << "blanks only";
}

} // namespace
} // namespace korlan
