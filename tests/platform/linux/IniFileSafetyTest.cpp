// What no crash and no full disk may do to a profile file: the promises of this back end's own writer.
#include "platform/IniFile.h"

#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"

#include <sys/wait.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <thread>

namespace korlan {
namespace {

using test::TempDrive;
using testing::ElementsAre;

const std::string kFile = "C:\\TEST.INI";

TEST(ProfileFiles, AFullDiskLeavesTheOldFile) {
    const TempDrive drive;
    const std::string before = "[S]\r\nk=v\r\n;" + std::string(50'000, 'c') + "\r\n";
    drive.Write("TEST.INI", before);
    {
        const test::FileLimit limit(20'000);
        EXPECT_EQ(WriteProfileValue("S", "k", "w", kFile), 112);
    }
    EXPECT_EQ(drive.Read("TEST.INI"), before);
    EXPECT_THAT(drive.Names(), ElementsAre("TEST.INI")); // no temporary file stays
}

// A process is killed while it writes, again and again: the file is always the old one or a new one, whole.
TEST(ProfileFiles, AKilledWriterTearsNothingAndTheNextReadSeesItsChange) {
    const TempDrive drive;
    const std::string rest(200'000, 'r');
    drive.Write("TEST.INI", "[S]\nk=0\n;" + rest + "\n");
    for (int round = 1; round <= 20; ++round) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0)
            for (int i = 0;; ++i) WriteProfileValue("S", "k", std::to_string(i % 10), kFile);
        std::this_thread::sleep_for(std::chrono::milliseconds(round));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        std::string bytes = drive.Read("TEST.INI");
        ASSERT_EQ(ReadProfileValue("S", "k", 1024, kFile), bytes.substr(6, 1));
        bytes[6] = '0';
        ASSERT_TRUE(bytes == "[S]\nk=0\n;" + rest + "\n");
    }
}

} // namespace
} // namespace korlan
