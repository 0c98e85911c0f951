// The clean-up's conversation with a scripted handler, and its two procedures on the cache folder.
#include "transfer/CacheCleanUp.h"

#include "platform/RuntimeError.h"
#include "platform/SettingsStore.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korlan {
namespace {

struct HandlerScript {
    std::vector<std::string> calls = {};
    std::string folder = "C:\\Cache\\IE";
    bool keyOpens = true, exists = true;
    std::int64_t spaceUsed = 5'000'000'000;
    std::string failing = {};      // the call that raises 70
    std::string registryText = {}; // what the registry answers
};
HandlerScript script;
int handlersAlive = 0;

void Record(const std::string& name, const std::string& what = {}) {
    script.calls.push_back(name + what);
    if (script.failing == name) throw RuntimeError(kErrPermissionDenied);
}

class ScriptedHandler : public CacheHandler {
public:
    ScriptedHandler() { ++handlersAlive; }
    ~ScriptedHandler() override { --handlersAlive; }
    void Initialize(const std::string& volume) override { Record("Initialize ", volume); }
    std::int64_t GetSpaceUsed(CacheCallback& callback) override {
        Record("GetSpaceUsed");
        EXPECT_EQ(callback.ScanProgress(1), 0);
        return script.spaceUsed;
    }
    void Purge(std::int64_t spaceToFree, CacheCallback& callback) override {
        Record("Purge ", std::to_string(spaceToFree));
        EXPECT_EQ(callback.PurgeProgress(1, spaceToFree), 0);
    }
};

} // namespace

std::unique_ptr<CacheHandler> CreateCacheHandlerObject(const std::string& classId) {
    Record("Create ", classId);
    return script.exists ? std::make_unique<ScriptedHandler>() : nullptr;
}

std::string InternetCacheFolder() {
    return script.folder;
}

bool CacheHandlerKeyOpens() {
    return script.keyOpens;
}

std::string ReadRegistryText(RegistryRoot root, const std::string& key, const std::string& value) {
    const bool right = root == RegistryRoot::CurrentUser && value == "Cache" &&
                       key == "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell folders\\";
    return right ? script.registryText : "asked for " + key + value;
}

namespace {

using testing::ElementsAre;

constexpr const char* kCreate = "Create {9B0EFD60-F7B0-11D0-BAEF-00C04FC308C9}";

TEST(CacheCleanUp, InitialisesCountsAndPurges) {
    script = {};
    EXPECT_EQ(TemporaryIntenetFilesCleanUp(), 0);
    EXPECT_THAT(script.calls, ElementsAre(kCreate, "Initialize C:\\", "GetSpaceUsed", "Purge 5000000000"));
    EXPECT_EQ(handlersAlive, 1) << "the handler stays held";

    script = {.folder = "D:\\Temp\\Cache", .spaceUsed = 0};
    TemporaryIntenetFilesCleanUp();
    EXPECT_THAT(script.calls, ElementsAre(kCreate, "Initialize D:\\", "GetSpaceUsed", "Purge 0"));
    EXPECT_EQ(handlersAlive, 1) << "the one before is released";

    script = {.keyOpens = false, .spaceUsed = 7};
    TemporaryIntenetFilesCleanUp();
    EXPECT_THAT(script.calls, ElementsAre(kCreate, "GetSpaceUsed", "Purge 7"));
}

TEST(CacheCleanUp, FailuresReachTheCaller) {
    const HandlerScript scripts[] = {
        {.exists = false}, {.failing = "Initialize "}, {.failing = "GetSpaceUsed"}, {.failing = "Purge "}};
    for (std::size_t calls = 1; calls <= 4; ++calls) {
        script = scripts[calls - 1];
        EXPECT_THROW(TemporaryIntenetFilesCleanUp(), RuntimeError);
        EXPECT_EQ(script.calls.size(), calls);
    }
    script = {.keyOpens = false, .exists = false};
    EXPECT_THROW(TemporaryIntenetFilesCleanUp(), RuntimeError);
}

TEST(CacheCleanUp, DeletesOneFileOfTheCacheFolder) {
    const test::TempDrive drive;
    for (const char* name : {"cache/a.htm", "cache/b.htm", "Not Found/c.htm"}) drive.Write(name, "x");
    std::filesystem::current_path(drive.HostPathOf());
    script = {.registryText = "C:\\cache"};
    DeleteTempoararyFile("b.htm");
    EXPECT_TRUE(drive.Exists("cache/b.htm")) << "the folder is not known yet";
    GetInternetTempDirectory();
    drive.SetMode("cache/a.htm", 0444);
    DeleteTempoararyFile("A.HTM");
    DeleteTempoararyFile("missing.htm");
    EXPECT_THAT(drive.Names("cache"), ElementsAre("b.htm"));

    script.registryText = "Not Found";
    GetInternetTempDirectory();
    DeleteTempoararyFile("c.htm");
    EXPECT_TRUE(drive.Exists("Not Found/c.htm"));
}

} // namespace
} // namespace korlan
