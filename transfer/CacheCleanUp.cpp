#include "transfer/CacheCleanUp.h"

#include "app/base/Paths.h"
#include "app/base/TextHelpers.h"
#include "platform/FileSystem.h"
#include "platform/RuntimeError.h"
#include "platform/SettingsStore.h"

namespace korlan {
namespace {

constexpr const char* kNotFound = "Not Found"; // what reading the registry answers

class CleanUpCallback : public CacheCallback {
public:
    std::int32_t ScanProgress(std::int64_t spaceUsed) override {
        return IEmptyVolumeCacheCallBack_ScanProgress(spaceUsed);
    }
    std::int32_t PurgeProgress(std::int64_t spaceFreed, std::int64_t spaceToFree) override {
        return IEmptyVolumeCacheCallBack_PurgeProgress(spaceFreed, spaceToFree);
    }
};

CacheHandler& Handler() {
    if (!modCache.handler) throw RuntimeError(kErrObjectNotSet);
    return *modCache.handler;
}

} // namespace

std::int32_t TemporaryIntenetFilesCleanUp() {
    CreateCacheHandler("{9B0EFD60-F7B0-11D0-BAEF-00C04FC308C9}", modCache.handler);
    InitializeCacheHandler();
    CleanUpCallback callback;
    const std::int64_t spaceUsed = Handler().GetSpaceUsed(callback);
    Handler().Purge(spaceUsed, callback);
    return 0;
}

std::int32_t CreateCacheHandler(const std::string& classId, std::unique_ptr<CacheHandler>& handler) {
    handler = CreateCacheHandlerObject(classId);
    return 0;
}

std::int32_t InitializeCacheHandler() {
    const std::string volume = Left(InternetCacheFolder(), 3);
    if (CacheHandlerKeyOpens()) Handler().Initialize(volume);
    return 0;
}

std::int32_t IEmptyVolumeCacheCallBack_ScanProgress(std::int64_t) {
    return 0;
}
std::int32_t IEmptyVolumeCacheCallBack_PurgeProgress(std::int64_t, std::int64_t) {
    return 0;
}

std::int32_t GetInternetTempDirectory() {
    modCache.folder = ReadRegistryText(
        RegistryRoot::CurrentUser, "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell folders\\", "Cache");
    return 0;
}

std::int32_t DeleteTempoararyFile(const std::string& name) {
    if (modCache.folder == kNotFound) return 0;
    const std::string path = modCache.folder + "\\" + name;
    if (FileExists(path)) RemoveFile(path);
    return 0;
}

} // namespace korlan
