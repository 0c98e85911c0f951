#include "app/TextHelpers.h"

#include "platform/RuntimeError.h"

#include <gtest/gtest.h>

namespace korlan {
namespace {

// The number of the run-time error that the call raises, 0 for none.
template <class Call>
std::int32_t ErrorOf(Call call) {
    try {
        call();
    } catch (const RuntimeError& error) {
        return error.Number();
    }
    return 0;
}

using Numbers = std::vector<std::pair<const char*, std::int32_t>>;

TEST(TextHelpers, WholeTextAsNumber) {
    const Numbers numbers{{" -7 ", -7}, {"+3", 3},  {"007", 7},
                          {"2.5", 2},   {"3.5", 4}, {"2147483647", 2147483647},
                          {"-2.5", -2}, {"12", 12}, {"-2147483648", INT32_MIN}};
    for (const auto& [text, number] : numbers) EXPECT_EQ(ToInteger(text), number) << '"' << text << '"';
    const Numbers errors{{"2147483648", 6}, {"99999999999999999999", 6},
                         {"", 13},          {"  ", 13},
                         {"-", 13},         {"+-3", 13},
                         {"1 2", 13},       {"12x", 13},
                         {"inf", 13},       {"\t5", 13}};
    for (const auto& [text, error] : errors) EXPECT_EQ(ErrorOf([&] { ToInteger(text); }), error) << '"' << text << '"';
}

TEST(TextHelpers, LeadingNumber) {
    const Numbers rows{{"991848", 991848},
                       {"  42 apples", 42},
                       {"-5", -5},
                       {"+5", 5},
                       {"2.9", 2},
                       {"", 0},
                       {"apples", 0},
                       {"--5", 0},
                       {"4294967297", INT32_MAX},
                       {"-", 0},
                       {"-99999999999999999999", INT32_MIN}};
    for (const auto& [text, number] : rows) EXPECT_EQ(Val(text), number) << '"' << text << '"';
}

TEST(TextHelpers, RoundingIsHalfToEven) {
    for (const auto& [value, rounded] :
         {std::pair{0.5, 0}, {1.5, 2}, {2.5, 2}, {-0.5, 0}, {-1.5, -2}, {2147483647.4, INT32_MAX}})
        EXPECT_EQ(RoundHalfEven(value), rounded) << value;
    for (const double value : {2147483647.5, -2147483649.0, 1e300, 0.0 / 0.0 * 1})
        EXPECT_EQ(ErrorOf([&] { RoundHalfEven(value); }), 6) << value;
}

TEST(TextHelpers, CuttingCountsFromOneAndRefusesBadPositions) {
    EXPECT_EQ(Left("abc", 2) + Left("abc", 9), "ababc");
    EXPECT_EQ(Right("abc", 2) + Right("abc", 9), "bcabc");
    EXPECT_EQ(Mid("abc", 1) + Mid("abc", 3) + Mid("abc", 4), "abcc");
    EXPECT_EQ(ErrorOf([] { Left("abc", -1); }), 5);
    EXPECT_EQ(ErrorOf([] { Right("abc", -1); }), 5);
    EXPECT_EQ(ErrorOf([] { Mid("abc", 0); }), 5);
    EXPECT_EQ(InStr("banana", "an"), 2);
    EXPECT_EQ(InStrRev("banana", "an"), 4);
    EXPECT_EQ(InStr("banana", "x"), 0);
    EXPECT_EQ(Replace("a#b#", "#", "%23"), "a%23b%23");
    using Pieces = std::vector<std::string>;
    EXPECT_EQ(Split("", ","), Pieces{});
    EXPECT_EQ(Split(",a,,", ","), (Pieces{"", "a", "", ""}));
    EXPECT_EQ(ErrorOf([] { Piece(Split("a,b", ","), 2); }), 9);
}

TEST(TextHelpers, CaseAndBlanks) {
    const std::pair<const char*, const char*> rows[] = {{"korlan1[`{", "KORLAN1[`{"},
                                                        {"äöüéÿ", "ÄÖÜÉŸ"},
                                                        {"żółw", "ŻÓŁW"},
                                                        {"плата", "ПЛАТА"},
                                                        {"ёж", "ЁЖ"},
                                                        {"αβγ", "ΑΒΓ"},
                                                        {"日本", "日本"},
                                                        {"a\xC3", "A\xC3"}};
    for (const auto& [lower, upper] : rows) {
        EXPECT_EQ(UpperCase(lower), upper);
        EXPECT_EQ(LowerCase(upper), lower);
    }
    EXPECT_EQ(UpperCase("ß÷×"), "ß÷×");
    EXPECT_EQ(Trim("  a b\t ") + Trim("   "), "a b\t") << "blanks only";
    EXPECT_EQ(SignedText(5) + SignedText(-5), " 5-5");
}

} // namespace
} // namespace korlan
