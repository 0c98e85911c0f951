// The cache folder emptied for real, with links and callbacks in the way.
#include "platform/CacheHandler.h"

#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korlan {
namespace {

using test::ScopedVariable;

struct GoOn : CacheCallback {
    std::int32_t ScanProgress(std::int64_t) override { return 0; }
    std::int32_t PurgeProgress(std::int64_t, std::int64_t) override { return 0; }
};

struct CacheHandlerTest : testing::Test {
    test::TempDrive drive;
    ScopedVariable cache{"XDG_CACHE_HOME", drive.HostPathOf("cache")};
    std::unique_ptr<CacheHandler> handler = CreateCacheHandlerObject("{9B0EFD60-F7B0-11D0-BAEF-00C04FC308C9}");
    GoOn callback;
};

TEST_F(CacheHandlerTest, CountsAndEmptiesTheFolderAndFollowsNoLink) {
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
    EXPECT_EQ(InternetCacheFolder(), "C:\\cache\\korlan\\klnupdt");
    const ScopedVariable home("HOME", drive.HostPathOf("second")), unusable("XDG_CACHE_HOME", "relative");
    EXPECT_EQ(InternetCacheFolder(), "C:\\second\\.cache\\korlan\\klnupdt");
    const ScopedVariable noCache("XDG_CACHE_HOME", std::nullopt), noHome("HOME", std::nullopt);
    EXPECT_EQ(InternetCacheFolder(), "");
    EXPECT_EQ(handler->GetSpaceUsed(callback), 0);
}

} // namespace
} // namespace korlan
