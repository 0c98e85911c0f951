// The cache folder emptied for real, with links and callbacks in the way.
#include "platform/CacheHandler.h"

#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korlan {
namespace {

using test::ScopedVariable;

struct Callback : CacheCallback {
    std::int32_t ScanProgress(std::int64_t) override { return stops; }
    std::int32_t PurgeProgress(std::int64_t, std::int64_t) override { return stops; }
    std::int32_t stops = 0;
};

struct CacheHandlerTest : testing::Test {
    test::TempDrive drive;
    ScopedVariable cache{"XDG_CACHE_HOME", drive.HostPathOf("cache")};
    std::unique_ptr<CacheHandler> handler = CreateCacheHandlerObject("{9B0EFD60-F7B0-11D0-BAEF-00C04FC308C9}");
    Callback callback;
};

TEST_F(CacheHandlerTest, CountsAndEmptiesTheFolderUntilItIsStopped) {
    handler->Initialize("C:\\");
    handler->Purge(0, callback); // on Windows the folder is everybody's
    for (const char* name : {"\\a", "\\b"}) drive.Write(InternetCacheFolder() + name, std::string(60, 'x'));
    EXPECT_EQ(handler->GetSpaceUsed(callback), 120);
    callback.stops = 1;
    EXPECT_EQ(handler->GetSpaceUsed(callback), 60);
    handler->Purge(120, callback);
    callback.stops = 0;
    EXPECT_EQ(handler->GetSpaceUsed(callback), 60);
    handler->Purge(60, callback);
    EXPECT_EQ(handler->GetSpaceUsed(callback), 0);
    EXPECT_EQ(CreateCacheHandlerObject("{00000000-0000-0000-C000-000000000047}"), nullptr) << "no such handler";
    EXPECT_EQ(test::ErrorOf([&] { handler->Initialize("C:"); }) != 0, test::kOnWindows) << "what it refuses is raised";
}

TEST_F(CacheHandlerTest, FollowsNoLink) {
    ONLY_ON_LINUX("the folder is the system's own");
    drive.Write("mine/file", "precious");
    drive.Write("cache/korlan/klnupdt/sub/deep/b", std::string(120, 'b'));
    drive.Write("cache/korlan/klnupdt/.hidden", "123");
    drive.SetMode("cache/korlan/klnupdt/.hidden", 0);
    handler->Initialize("C:\\");
    EXPECT_EQ(handler->GetSpaceUsed(callback), 123);
    const std::string folder = drive.HostPathOf("cache/korlan/klnupdt");
    std::filesystem::create_directory_symlink(drive.HostPathOf("mine"), folder + "/folder");
    std::filesystem::create_symlink(drive.HostPathOf("mine/file"), folder + "/file");
    std::filesystem::create_symlink("nowhere", folder + "/broken");
    handler->Purge(123, callback);
    EXPECT_THAT(drive.Names("cache/korlan/klnupdt"), testing::IsEmpty());

    std::filesystem::remove(folder);
    EXPECT_EQ(handler->GetSpaceUsed(callback), 0) << "a missing folder is an empty cache";
    std::filesystem::create_directory_symlink(drive.HostPathOf("mine"), folder);
    EXPECT_EQ(handler->GetSpaceUsed(callback), 0) << "the folder itself is a link";
    handler->Purge(0, callback);
    EXPECT_EQ(drive.Read("mine/file"), "precious");
}

TEST_F(CacheHandlerTest, TellsItsFolder) {
    ONLY_ON_LINUX("the folder is the system's own");
    EXPECT_EQ(InternetCacheFolder(), "C:\\cache\\korlan\\klnupdt");
    const ScopedVariable home("HOME", drive.HostPathOf("second")), unusable("XDG_CACHE_HOME", "relative");
    EXPECT_EQ(InternetCacheFolder(), "C:\\second\\.cache\\korlan\\klnupdt");
    const ScopedVariable noCache("XDG_CACHE_HOME", std::nullopt), noHome("HOME", std::nullopt);
    EXPECT_EQ(InternetCacheFolder(), "");
    EXPECT_EQ(handler->GetSpaceUsed(callback), 0);
}

} // namespace
} // namespace korlan
