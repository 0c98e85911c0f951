#include "catalogue/DateText.h"
#include "app/base/frmUpdate.h"
#include "catalogue/FileKinds.h"
#include "catalogue/FileTables.h"
#include "tests/support/Failing.h"
#include "tests/support/ResetProgram.h"

#include <gtest/gtest.h>

namespace korlan {
namespace {

TEST(CompareDates, ByComponentsToTheMinute) {
    const std::tuple<const char*, const char*, std::int32_t> cases[] = {
        {"5-3-2004,9:7:59", "5-3-2004,9:7:00", 0},
        {"5-3-2004,9:7:12", "05-03-2004,09:08:00", 1},
        {"1-2-2004,0:0:0", "28-1-2004,23:0:0", 0},
        {"9-3-2004,10:0:0", "10-3-2004,9:0:0", 1},
        {" 5 - 3 -2004, 9 : 7 :12", "5-3-2004,9:7:30 ", 0},
        {"no date at all", "no date at all ", 0}, // equal texts are not parsed
    };
    for (const auto& [date1, date2, expected] : cases) {
        std::int32_t result = -7;
        CompareDates(date1, date2, result);
        EXPECT_EQ(result, expected) << date1 << " against " << date2;
    }
}

TEST(CompareDates, RaisesOnWhatIsNoDate) {
    const std::pair<const char*, std::int32_t> cases[] = {
        {"", kErrInvalidCall},         {"5-Mar-2004,9:7:00", kErrTypeMismatch},
        {"x", kErrInvalidCall},        {"5-3-99999999999,9:7:00", kErrOverflow},
        {"5-3,9:7:00", kErrSubscript}, {"5-3-2004 9:7:00", kErrSubscript},
        {"5-3-2004,9", kErrSubscript}, {"<html><body>", kErrSubscript},
        {"éé", kErrInvalidCall},       {"1-2", kErrSubscript}, // three characters count, not bytes
    };
    std::int32_t result = 0;
    for (const auto& [date, error] : cases) {
        EXPECT_EQ(test::ErrorOf([&] { CompareDates("5-3-2004,9:7:0", date, result); }), error) << date;
        EXPECT_EQ(test::ErrorOf([&] { CompareDates(date, "5-3-2004,9:7:0", result); }), error) << date;
    }
}

TEST(FileKinds, ByTheTextAfterTheFirstDot) {
    const std::tuple<const char*, const char*, std::int32_t> cases[] = {
        {"opamp.spc", "spc", 0},  {"A.B.SPC", "", 0},        {"SPC", "spc", 0},          {"TTL.PART", "part", 0},
        {"X.SYMBOL", "other", 2}, {"X.package", "other", 3}, {"X.PADSTACK", "other", 4}, {"X.DLL", "", 0},
    };
    for (const auto& [name, is, kind] : cases) {
        ResetProgram();
        Tables.FileArray.Append({}).FileName = name;
        Flags.LibElementKind = 9;
        const std::string kinds = std::string(CheckSPCFile(1) ? "spc" : "") + (CheckLibPartFile(1) ? "part" : "") +
                                  (CheckOtherLibFile(1) ? "other" : "");
        EXPECT_EQ(kinds, is) << name;
        EXPECT_EQ(Flags.LibElementKind, kind) << name;
    }
    EXPECT_THROW(CheckSPCFile(2), RuntimeError);
}

} // namespace
} // namespace korlan
