// The wrapper over the real library, with the user scripted.
#include "transfer/modZip.h"

#include "platform/MsgBox.h"
#include "platform/RuntimeError.h"
#include "tests/support/ScriptedDesktop.h"
#include "tests/support/TempFolder.h"
#include "tests/support/ZipWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korlan {
namespace {

using test::Desktop;
using test::ShownBox;
using test::ShownInputBox;
using test::TempDrive;
using test::ZipWriter;
using testing::ElementsAre;
using testing::HasSubstr;

class ModZipTest : public testing::Test {
protected:
    ModZipTest() {
        test::ResetDesktop();
        modZip = ZipModule{};
        drive_.MakeFolders("OUT");
    }

    // Completion flag and result after an extraction; both start with a value of no meaning.
    std::pair<std::int32_t, std::int32_t> Extract(std::string zipFile, std::string folder = "C:\\OUT\\") {
        std::int32_t completed = 55, result = 55;
        Unzip(completed, 1, zipFile, folder, result);
        return {completed, result};
    }

    TempDrive drive_;
};

using Outcome = std::pair<std::int32_t, std::int32_t>;

TEST_F(ModZipTest, AsksBeforeItOverwrites) {
    drive_.Write("A.ZIP", ZipWriter().Add({"sub/A.TXT", "new"}).Add({"B.TXT", "new"}).Bytes());
    const struct {
        std::deque<std::int32_t> answers;
        const char *a, *b;
        std::size_t boxes;
    } cases[] = {
        {{kAnswerNo, kAnswerNo}, "old", "old", 2},
        {{kAnswerYes, kAnswerNo}, "new", "old", 2},
        {{kAnswerNo, kAnswerYes}, "old", "new", 2},
        {{kAnswerCancel}, "old", "old", 1},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(testing::PrintToString(row.answers));
        test::ResetDesktop();
        drive_.Write("OUT/A.TXT", "old");
        drive_.Write("OUT/B.TXT", "old");
        Desktop().answers = row.answers;
        EXPECT_EQ(Extract("C:\\A.ZIP"), Outcome(1, 0));
        EXPECT_EQ(drive_.Read("OUT/A.TXT"), row.a);
        EXPECT_EQ(drive_.Read("OUT/B.TXT"), row.b);
        ASSERT_EQ(Desktop().boxes.size(), row.boxes);
        EXPECT_EQ(Desktop().boxes[0], (ShownBox{"Overwrite sub/A.TXT?", 483, "VBUnZip32 - File Already Exists!"}));
    }
}

// Members marked as encrypted whose data no password opens.
std::string LockedArchive() {
    const std::string data(40, 'x');
    return ZipWriter()
        .Add({.name = "ONE.TXT", .data = data, .flags = 1, .sizeError = 0u - 12u})
        .Add({.name = "TWO.TXT", .data = data, .flags = 1, .sizeError = 0u - 12u})
        .Bytes();
}

TEST_F(ModZipTest, AnEmptyPasswordIsNotAskedForAgain) {
    drive_.Write("LOCKED.ZIP", LockedArchive());
    for (int extraction = 1; extraction <= 2; ++extraction) { // the flag holds for one extraction
        Desktop().inputs = {""};
        EXPECT_EQ(Extract("C:\\LOCKED.ZIP"), Outcome(1, 82));
        EXPECT_EQ(modZip.SkipPassword, 1);
        ASSERT_EQ(Desktop().inputBoxes.size(), static_cast<std::size_t>(extraction));
        EXPECT_EQ(Desktop().inputBoxes[0], (ShownInputBox{"Please Enter The Password!", "", true}));
    }
    EXPECT_TRUE(drive_.Names("OUT").empty());

    Desktop().inputs = {std::string(300, 'p'), ""};
    EXPECT_EQ(Extract("C:\\LOCKED.ZIP"), Outcome(1, 82)) << "a wrong one, then none";
    drive_.Write("A.ZIP", ZipWriter().Add({"A.TXT", "a"}).Bytes());
    EXPECT_EQ(Extract("C:\\A.ZIP"), Outcome(1, 0));
    EXPECT_EQ(modZip.SkipPassword, 0);
}

TEST_F(ModZipTest, NamesAndTextsOutliveTheCall) {
    drive_.Write("A.ZIP", ZipWriter().Add({"sub/A.TXT", "abc"}).Bytes());
    drive_.Write("B.ZIP", ZipWriter().Add({"B.TXT", "b"}).Bytes());
    EXPECT_EQ(Extract("C:\\A.ZIP"), Outcome(1, 0));
    EXPECT_THAT(modZip.TextBuffer, HasSubstr("inflating: sub/A.TXT\n"));
    std::istringstream listing(modZip.ListText);
    std::string head, row;
    std::getline(listing, head);
    std::getline(listing, row);
    for (const char* column : {"Filename:", "Size", "Date", "Time"}) EXPECT_THAT(head, HasSubstr(column));
    EXPECT_EQ(row.substr(0, 10), "sub/A.TXT ");
    EXPECT_EQ(row.substr(head.find("Size"), 2), "3 ");
    EXPECT_EQ(row.substr(head.find("Date"), 10), "2003-06-15");
    EXPECT_EQ(row.substr(head.find("Time")), "12:30");

    EXPECT_EQ(Extract("C:\\B.ZIP", ""), Outcome(1, 0)) << "the folder of the call before";
    EXPECT_EQ(modZip.TextBuffer.find("A.TXT"), std::string::npos) << "cleared";
    EXPECT_EQ(modZip.ListText.find("A.TXT"), std::string::npos) << "cleared";
    EXPECT_EQ(Extract("", "C:\\ELSE"), Outcome(1, 0)) << "the archive of the call before";
    EXPECT_THAT(drive_.Names("OUT"), ElementsAre("A.TXT", "B.TXT"));
    EXPECT_THAT(drive_.Names("ELSE"), ElementsAre("B.TXT"));
}

TEST_F(ModZipTest, CompletesWhateverTheLibrarySays) {
    drive_.Write("BAD.ZIP", ZipWriter().Add({.name = "A.TXT", .data = "a", .checkSumError = 1}).Bytes());
    EXPECT_EQ(Extract("C:\\BAD.ZIP"), Outcome(1, 3));
    EXPECT_EQ(Extract("C:\\MISSING.ZIP"), Outcome(1, 9));

    modZip.OptionFlags[3] = 1; // an option the library does not know: a run-time error
    EXPECT_EQ(Extract("C:\\BAD.ZIP"), Outcome(0, 55));
    try {
        VBUnzip("C:\\BAD.ZIP", "C:\\OUT", modZip.OptionFlags);
        ADD_FAILURE() << "no error";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.Number(), kErrInvalidCall);
        EXPECT_EQ(error.Source(), "CodeModule::VBUnzip");
    }
}

} // namespace
} // namespace korlan
