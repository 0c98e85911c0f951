// The wrapper over the real library, with the user scripted.
#include "transfer/modZip.h"
#include "TestData.h"

#include "platform/MsgBox.h"
#include "tests/support/ScriptedDesktop.h"
#include "tests/support/ScriptedProcess.h"
#include "tests/support/TempFolder.h"
#include "tests/support/ZipWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korlan {
namespace {

using namespace test;
using Outcome = std::pair<std::int32_t, std::int32_t>;

class ModZipTest : public testing::Test {
protected:
    ModZipTest() {
        ResetDesktop();
        modZip = ZipModule{};
        const ZipEntry later{.name = "B.TXT", .data = "new", .date = DosDate(2004, 10, 9), .time = DosTime(10, 9, 0)};
        drive_.Write("A.ZIP", ZipWriter().Add({"sub/A.TXT", "new"}).Add(later).Bytes());
    }

    // Completion flag and result after an extraction; both start with a value of no meaning.
    static Outcome Extract(const std::string& zipFile, const std::string& folder = "C:\\OUT\\") {
        std::int32_t completed = 55, result = 55;
        Unzip(completed, 1, zipFile, folder, result);
        return {completed, result};
    }

    TempDrive drive_;
};

TEST_F(ModZipTest, AsksBeforeItOverwrites) {
    const std::tuple<std::deque<std::int32_t>, const char*, std::size_t> cases[] = {
        {{kAnswerYes, kAnswerNo}, "new old", 2},
        {{kAnswerNo, kAnswerYes}, "old new", 2},
        {{kAnswerCancel}, "old old", 1},
    };
    for (const auto& [answers, contents, boxes] : cases) {
        ResetDesktop();
        for (const char* name : {"OUT/A.TXT", "OUT/B.TXT"}) drive_.Write(name, "old");
        Desktop().answers = answers;
        EXPECT_EQ(Extract("C:\\A.ZIP"), Outcome(1, 0));
        EXPECT_EQ(drive_.Read("OUT/A.TXT") + " " + drive_.Read("OUT/B.TXT"), contents);
        ASSERT_EQ(Desktop().boxes.size(), boxes);
        EXPECT_EQ(Desktop().boxes[0], (ShownBox{"Overwrite sub/A.TXT?", 483, "VBUnZip32 - File Already Exists!"}));
    }
}

TEST_F(ModZipTest, AnEmptyPasswordIsNotAskedForAgain) {
    std::filesystem::copy_file(KLN_TEST_DATA "/zip/zipcrypt.zip", drive_.HostPathOf("LOCKED.ZIP"));
    for (std::size_t extraction = 1; extraction <= 2; ++extraction) { // the flag holds for one extraction
        Desktop().inputs = {""};
        EXPECT_EQ(Extract("C:\\LOCKED.ZIP", "C:\\OUT" + std::to_string(extraction)), Outcome(1, 82));
        EXPECT_EQ(modZip.SkipPassword, 1);
        ASSERT_EQ(Desktop().inputBoxes.size(), extraction);
        EXPECT_EQ(Desktop().inputBoxes.back(), (ShownInputBox{"Please Enter The Password!", "", true}));
    }
    EXPECT_THAT(drive_.Names("OUT1"), testing::ElementsAre("plain.txt"));
    Desktop().inputs = {std::string(300, 'p'), "right"};
    EXPECT_EQ(Extract("C:\\LOCKED.ZIP", "C:\\ELSE"), Outcome(1, 0)) << "a wrong one, then the right one";

    std::filesystem::copy_file(KLN_TEST_DATA "/zip/longest.zip", drive_.HostPathOf("LONGEST.ZIP"));
    std::string longest; // 256 characters, whatever their bytes
    for (int i = 0; i < 256; ++i) longest += "\xC3\xBC";
    Desktop().inputs = {longest + "\xC3\xBC and more"};
    EXPECT_EQ(Extract("C:\\LONGEST.ZIP"), Outcome(1, 0));
}

TEST_F(ModZipTest, CancelIsAnsweredWhileItWrites) {
    ZipWriter archive;
    for (int i = 0; i < 2000; ++i) archive.Add({"F" + std::to_string(i), "x"});
    drive_.Write("MANY.ZIP", archive.Bytes());
    Desktop().onDoEvents = [] { throw ProcessEnded(); };
    EXPECT_THROW(Extract("C:\\MANY.ZIP"), ProcessEnded);
    EXPECT_THAT(drive_.Names("OUT"), testing::Not(testing::Contains(testing::StartsWith("."))));
}

TEST_F(ModZipTest, ListsWhatItExtracts) {
    const ScopedVariable zone("TZ", "UTC");
    EXPECT_EQ(Extract("C:\\A.ZIP", "C:\\ELSE"), Outcome(1, 0));
    EXPECT_EQ(Extract("C:\\A.ZIP"), Outcome(1, 0));
    EXPECT_EQ(modZip.ListText, "Filename:" + std::string(42, ' ') + "Size       Date       Time\n" + "sub/A.TXT" +
                                   std::string(42, ' ') + "3          2003-06-15 12:30\n" + "B.TXT" +
                                   std::string(46, ' ') + "3          2004-10-09 10:09\n");
}

TEST_F(ModZipTest, CompletesWhateverTheLibrarySays) {
    EXPECT_EQ(Extract("C:\\MISSING.ZIP"), Outcome(1, 9));
    modZip.OptionFlags[3] = 1; // an option the library does not know: a run-time error
    EXPECT_EQ(Extract("C:\\A.ZIP"), Outcome(0, 55));
}

} // namespace
} // namespace korlan
