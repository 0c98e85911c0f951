// The clean-up of the real cache folder, and of one file in the folder that the registry names.
#include "transfer/CacheCleanUp.h"

#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korlan {
namespace {

TEST(CacheCleanUp, PurgesTheCacheAndPassesOverWhatItMayNot) {
    const test::TempDrive drive;
    const test::ScopedVariable cache("XDG_CACHE_HOME", drive.HostPathOf("cache"));
    drive.Write("cache/korlan/klnupdt/sub/a", "12345");
    EXPECT_EQ(TemporaryIntenetFilesCleanUp(), 0);
    EXPECT_THAT(drive.Names("cache/korlan/klnupdt"), testing::IsEmpty());

    drive.Write("cache/korlan/klnupdt/a", "12345");
    std::filesystem::permissions(drive.Top(), std::filesystem::perms::all);
    for (const unsigned mode : {0555, 0000}) { // nothing can be deleted there; nothing can be seen there
        drive.SetMode("cache/korlan/klnupdt", mode);
        const test::AsOrdinaryUser user;
        EXPECT_EQ(test::ErrorOf([] { TemporaryIntenetFilesCleanUp(); }), 0) << mode;
    }
    EXPECT_TRUE(drive.Exists("cache/korlan/klnupdt/a"));
}

TEST(CacheCleanUp, DeletesOneFileOfTheCacheFolder) {
    const test::TempDrive drive;
    for (const char* name : {"cache/a.htm", "cache/b.htm", "Not Found/c.htm"}) drive.Write(name, "x");
    std::filesystem::current_path(drive.HostPathOf());
    std::filesystem::create_directory(drive.Top() / "config/korlan");
    const auto registry = drive.Top() / "config/korlan/registry.ini";
    std::ofstream(registry) << "[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\"
                               "Shell folders]\nCache=C:\\cache\n";
    DeleteTempoararyFile("b.htm");
    EXPECT_TRUE(drive.Exists("cache/b.htm")) << "the folder is not known yet";
    GetInternetTempDirectory();
    drive.SetMode("cache/a.htm", 0444);
    DeleteTempoararyFile("A.HTM");
    DeleteTempoararyFile("missing.htm");
    EXPECT_THAT(drive.Names("cache"), testing::ElementsAre("b.htm"));

    std::filesystem::remove(registry);
    GetInternetTempDirectory();
    DeleteTempoararyFile("c.htm");
    EXPECT_TRUE(drive.Exists("Not Found/c.htm"));
}

} // namespace
} // namespace korlan
