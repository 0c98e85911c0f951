// The cache folder emptied for real, with links and callbacks in the way.
#include "platform/CacheHandler.h"

#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korlan {
namespace {

using test::ScopedVariable;
using test::TempDrive;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kClass = "{9B0EFD60-F7B0-11D0-BAEF-00C04FC308C9}";

struct Recorder : CacheCallback {
    std::vector<std::int64_t> scanned, freed;
    std::int64_t toFree = -1;
    std::size_t stopAfter = 100;

    std::int32_t ScanProgress(std::int64_t spaceUsed) override {
        scanned.push_back(spaceUsed);
        return scanned.size() >= stopAfter ? 1 : 0;
    }
    std::int32_t PurgeProgress(std::int64_t spaceFreed, std::int64_t spaceToFree) override {
        freed.push_back(spaceFreed);
        toFree = spaceToFree;
        return freed.size() >= stopAfter ? 1 : 0;
    }
};

class CacheHandlerTest : public testing::Test {
protected:
    CacheHandlerTest() : cache_("XDG_CACHE_HOME", drive_.HostPathOf("cache")) {}

    TempDrive drive_;
    ScopedVariable cache_;
    std::unique_ptr<CacheHandler> handler_ = CreateCacheHandlerObject(kClass);
    Recorder callback_;
};

TEST_F(CacheHandlerTest, CountsAndEmptiesTheFolder) {
    drive_.Write("cache/korlan/klnupdt/a", std::string(100, 'a'));
    drive_.Write("cache/korlan/klnupdt/sub/deep/b", std::string(20, 'b'));
    drive_.Write("cache/korlan/klnupdt/.hidden", "123");
    drive_.SetMode("cache/korlan/klnupdt/.hidden", 0);
    drive_.MakeFolders("cache/korlan/klnupdt/empty");
    drive_.Write("cache/korlan/other", "x");
    handler_->Initialize("C:\\");
    EXPECT_EQ(handler_->GetSpaceUsed(callback_), 123);
    EXPECT_EQ(callback_.scanned.back(), 123);
    handler_->Purge(123, callback_);
    EXPECT_EQ(callback_.freed.back(), 123);
    EXPECT_EQ(callback_.toFree, 123);
    EXPECT_THAT(drive_.Names("cache/korlan/klnupdt"), IsEmpty());
    EXPECT_TRUE(drive_.Exists("cache/korlan/other"));
    EXPECT_EQ(handler_->GetSpaceUsed(callback_), 0);
}

TEST_F(CacheHandlerTest, LinksGoAndWhatTheyNameStays) {
    drive_.Write("mine/file", "precious");
    drive_.Write("cache/korlan/klnupdt/a", "12345");
    const std::string cache = drive_.HostPathOf("cache/korlan/klnupdt/");
    std::filesystem::create_directory_symlink(drive_.HostPathOf("mine"), cache + "folder");
    std::filesystem::create_symlink(drive_.HostPathOf("mine/file"), cache + "file");
    std::filesystem::create_symlink("nowhere", cache + "broken");
    handler_->Purge(handler_->GetSpaceUsed(callback_), callback_);
    EXPECT_THAT(drive_.Names("cache/korlan/klnupdt"), IsEmpty());
    EXPECT_EQ(drive_.Read("mine/file"), "precious");

    std::filesystem::remove(cache.substr(0, cache.size() - 1));
    std::filesystem::create_directory_symlink(drive_.HostPathOf("mine"), cache.substr(0, cache.size() - 1));
    EXPECT_EQ(handler_->GetSpaceUsed(callback_), 0) << "the folder itself is a link";
    handler_->Purge(0, callback_);
    EXPECT_EQ(drive_.Read("mine/file"), "precious");
}

TEST_F(CacheHandlerTest, AMissingFolderIsAnEmptyCache) {
    EXPECT_EQ(handler_->GetSpaceUsed(callback_), 0);
    handler_->Purge(0, callback_);
    EXPECT_THAT(callback_.scanned, IsEmpty());
    EXPECT_FALSE(drive_.Exists("cache"));
}

TEST_F(CacheHandlerTest, TheCallbackStops) {
    for (const char* name : {"a", "b", "c"}) drive_.Write("cache/korlan/klnupdt/sub/" + std::string(name), "12");
    callback_.stopAfter = 2;
    EXPECT_EQ(handler_->GetSpaceUsed(callback_), 4);
    handler_->Purge(6, callback_);
    EXPECT_THAT(callback_.freed, ElementsAre(2, 4));
    EXPECT_EQ(drive_.Names("cache/korlan/klnupdt/sub").size(), 1u);
}

TEST_F(CacheHandlerTest, IsFoundByItsClassAndTellsItsFolder) {
    EXPECT_TRUE(CreateCacheHandlerObject("{9b0efd60-f7b0-11d0-baef-00c04fc308c9}"));
    EXPECT_FALSE(CreateCacheHandlerObject("{9B0EFD60-F7B0-11D0-BAEF-00C04FC308C8}"));
    EXPECT_FALSE(CreateCacheHandlerObject(""));

    EXPECT_EQ(InternetCacheFolder(), "C:\\cache\\korlan\\klnupdt");
    drive_.MakeFolders("second");
    drive_.AddDrive('d', drive_.HostPathOf("second"));
    const ScopedVariable home("HOME", drive_.HostPathOf("second"));
    for (const auto& unusable : {std::optional<std::string>(), std::optional<std::string>("relative")}) {
        const ScopedVariable none("XDG_CACHE_HOME", unusable);
        EXPECT_EQ(InternetCacheFolder(), "D:\\.cache\\korlan\\klnupdt");
    }
    const ScopedVariable noCache("XDG_CACHE_HOME", std::nullopt), noHome("HOME", std::nullopt);
    EXPECT_EQ(InternetCacheFolder(), "");
    EXPECT_EQ(handler_->GetSpaceUsed(callback_), 0);
}

} // namespace
} // namespace korlan
