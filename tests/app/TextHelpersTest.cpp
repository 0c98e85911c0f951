#include "app/TextHelpers.h"

#include "platform/RuntimeError.h"

#include <gtest/gtest.h>

#include <functional>

namespace korlan {
namespace {

// The number of the run-time error that the call raises, 0 for none.
std::int32_t ErrorOf(const std::function<void()>& call) {
    try {
        call();
        return 0;
    } catch (const RuntimeError& error) {
        return error.Number();
    }
}

TEST(TextHelpers, WholeTextAsNumber) {
    const struct {
        const char* text;
        std::int32_t number, error;
    } rows[] = {
        {"12", 12, 0},
        {" -7 ", -7, 0},
        {"+3", 3, 0},
        {"007", 7, 0},
        {"2.5", 2, 0},
        {"3.5", 4, 0},
        {"-2.5", -2, 0},
        {"2147483647", 2147483647, 0},
        {"-2147483648", INT32_MIN, 0},
        {"2147483648", 0, 6},
        {"99999999999999999999", 0, 6},
        {"", 0, 13},
        {"  ", 0, 13},
        {"+", 0, 13},
        {"-", 0, 13},
        {"+-3", 0, 13},
        {"1 2", 0, 13},
        {"12x", 0, 13},
        {"inf", 0, 13},
        {"nan", 0, 13},
        {"\t5", 0, 13},
    };
    for (const auto& row : rows) {
        std::int32_t number = 0;
        EXPECT_EQ(ErrorOf([&] { number = ToInteger(row.text); }), row.error) << '"' << row.text << '"';
        EXPECT_EQ(number, row.number) << '"' << row.text << '"';
    }
}

TEST(TextHelpers, LeadingNumber) {
    const struct {
        const char* text;
        std::int32_t number;
    } rows[] = {
        {"991848", 991848},
        {"  42 apples", 42},
        {"-5", -5},
        {"+5", 5},
        {"2.9", 2},
        {"", 0},
        {"apples", 0},
        {"--5", 0},
        {"-", 0},
        {"4294967297", INT32_MAX},
        {"-99999999999999999999", INT32_MIN},
    };
    for (const auto& row : rows) EXPECT_EQ(Val(row.text), row.number) << '"' << row.text << '"';
}

TEST(TextHelpers, RoundingIsHalfToEven) {
    const struct {
        double value;
        std::int32_t rounded;
    } rows[] = {{0.5, 0},   {1.5, 2},    {2.5, 2},     {-0.5, 0},
                {-1.5, -2}, {99.5, 100}, {100.5, 100}, {2147483647.4, INT32_MAX}};
    for (const auto& row : rows) EXPECT_EQ(RoundHalfEven(row.value), row.rounded) << row.value;
    for (const double value : {2147483647.5, -2147483649.0, 1e300, 0.0 / 0.0 * 1})
        EXPECT_EQ(ErrorOf([&] { RoundHalfEven(value); }), 6) << value;
}

TEST(TextHelpers, CuttingCountsFromOneAndRefusesBadPositions) {
    EXPECT_EQ(Left("abc", 2), "ab");
    EXPECT_EQ(Left("abc", 9), "abc");
    EXPECT_EQ(Right("abc", 2), "bc");
    EXPECT_EQ(Right("abc", 9), "abc");
    EXPECT_EQ(Mid("abc", 1), "abc");
    EXPECT_EQ(Mid("abc", 4), "");
    EXPECT_EQ(ErrorOf([] { Left("abc", -1); }), 5);
    EXPECT_EQ(ErrorOf([] { Right("abc", -1); }), 5);
    EXPECT_EQ(ErrorOf([] { Mid("abc", 0); }), 5);
    EXPECT_EQ(InStr("banana", "an"), 2);
    EXPECT_EQ(InStrRev("banana", "an"), 4);
    EXPECT_EQ(InStr("banana", "x"), 0);
    EXPECT_EQ(Replace("a#b#", "#", "%23"), "a%23b%23");
}

TEST(TextHelpers, SplittingKeepsEmptyPieces) {
    using Pieces = std::vector<std::string>;
    EXPECT_EQ(Split("", ","), Pieces{});
    EXPECT_EQ(Split("a", ","), Pieces{"a"});
    EXPECT_EQ(Split(",a,,", ","), (Pieces{"", "a", "", ""}));
    EXPECT_EQ(ErrorOf([] { Piece(Split("a,b", ","), 2); }), 9);
}

TEST(TextHelpers, CaseAndBlanks) {
    const struct {
        const char* lower;
        const char* upper;
    } rows[] = {{"korlan1[`{", "KORLAN1[`{"},
                {"äöüéÿ", "ÄÖÜÉŸ"},
                {"żółw", "ŻÓŁW"},
                {"плата", "ПЛАТА"},
                {"ёж", "ЁЖ"},
                {"αβγ", "ΑΒΓ"},
                {"日本", "日本"},
                {"a\xC3", "A\xC3"}};
    for (const auto& row : rows) {
        EXPECT_EQ(UpperCase(row.lower), row.upper);
        EXPECT_EQ(LowerCase(row.upper), row.lower);
    }
    EXPECT_EQ(UpperCase("ß÷×"), "ß÷×");
    EXPECT_EQ(Trim("  a b\t "), "a b\t") << "blanks only";
    EXPECT_EQ(Trim("   "), "");
    EXPECT_EQ(SignedText(5) + SignedText(-5), " 5-5");
}

} // namespace
} // namespace korlan
