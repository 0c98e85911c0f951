#include "app/frmUpdate.h"
#include "catalogue/Catalogue.h"
#include "catalogue/DateText.h"
#include "catalogue/FileKinds.h"
#include "catalogue/FileTables.h"
#include "platform/RuntimeError.h"

#include <gtest/gtest.h>

namespace korlan {
namespace {

TEST(CompareDates, ByComponentsToTheMinute) {
    const struct {
        const char* date1;
        const char* date2;
        std::int32_t result;
    } cases[] = {
        {"5-3-2004,9:7:59", "5-3-2004,9:7:00", 0},
        {"5-3-2004,9:7:12", "05-03-2004,09:08:00", 1},
        {"5-3-2004,9:9:12", "05-03-2004,09:08:00", 0},
        {"31-12-2003,23:59:59", "1-1-2004,0:0:0", 1},
        {"1-2-2004,0:0:0", "28-1-2004,23:0:0", 0},
        {"9-3-2004,10:0:0", "10-3-2004,9:0:0", 1},
        {" 5 - 3 -2004, 9 : 7 :12", "5-3-2004,9:7:30 ", 0},
        {"no date at all", "no date at all ", 0}, // equal texts are not parsed
        {"", "  ", 0},
    };
    for (const auto& c : cases) {
        std::int32_t result = -7;
        CompareDates(c.date1, c.date2, result);
        EXPECT_EQ(result, c.result) << c.date1 << " against " << c.date2;
    }
}

TEST(CompareDates, RaisesOnWhatIsNoDate) {
    const struct {
        const char* date1;
        const char* date2;
        std::int32_t error;
    } cases[] = {
        {"", "5-3-2004,9:7:0", kErrInvalidCall},
        {"5-3-2004,9:7:0", "x", kErrInvalidCall},
        {"5-3-2004,9:7:0", "5-3-2004 9:7:00", kErrSubscript},
        {"5-3-2004,9:7:0", "5-3,9:7:00", kErrSubscript},
        {"5-3-2004,9:7:0", "5-3-2004,9", kErrSubscript},
        {"5-3-2004,9:7:0", "5-Mar-2004,9:7:00", kErrTypeMismatch},
        {"5-3-2004,9:7:0", "<html><body>", kErrSubscript},
        {"5-3-2004,9:7:0", "5-3-99999999999,9:7:00", kErrOverflow},
    };
    for (const auto& c : cases) {
        std::int32_t result = 0;
        try {
            CompareDates(c.date1, c.date2, result);
            ADD_FAILURE() << c.date2 << " was taken";
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.Number(), c.error) << c.date1 << " against " << c.date2;
        }
    }
}

TEST(FileKinds, ByTheTextAfterTheFirstDot) {
    const struct {
        const char* name;
        bool spc, part, other;
        std::int32_t kind;
    } cases[] = {
        {"OPAMP.SPC", true, false, false, 0},      {"opamp.spc", true, false, false, 0},
        {"A.B.SPC", false, false, false, 0},       {"SPC", true, false, false, 0},
        {"TTL.PART", false, true, false, 0},       {"X.SYMBOL", false, false, true, 2},
        {"X.package", false, false, true, 3},      {"X.PADSTACK", false, false, true, 4},
        {"X.DLL", false, false, false, 0},         {"", false, false, false, 0},
    };
    for (const auto& c : cases) {
        ResetProgram();
        Tables.FileArray.Append({}).FileName = c.name;
        korlan::Run.LibElementKind = 9;
        EXPECT_EQ(CheckSPCFile(1), c.spc) << c.name;
        EXPECT_EQ(CheckLibPartFile(1), c.part) << c.name;
        EXPECT_EQ(CheckOtherLibFile(1), c.other) << c.name;
        EXPECT_EQ(korlan::Run.LibElementKind, c.kind) << c.name;
    }
    EXPECT_THROW(CheckSPCFile(2), RuntimeError);
}

TEST(GetFileNameZip, SplitsAtTheFirstDot) {
    const struct {
        const char* path;
        const char* zip; // null: an invalid argument
    } cases[] = {
        {"C:\\X\\PARTS.DLL", "PARTSDOTTDLL.zip"},
        {"C:\\X\\A.B.C", "ADOTTB.C.zip"},
        {"C:\\X\\.A", "DOTTA.zip"},
        {"PARTS.DLL", nullptr},
        {"C:\\X\\PARTS", nullptr},
        {"", nullptr},
    };
    for (const auto& c : cases) {
        std::string zip = "untouched";
        if (c.zip) {
            GetFileNameZip(c.path, zip);
            EXPECT_EQ(zip, c.zip) << c.path;
        } else {
            EXPECT_THROW(GetFileNameZip(c.path, zip), RuntimeError) << c.path;
            EXPECT_EQ(zip, "untouched") << c.path;
        }
    }
}

} // namespace
} // namespace korlan
