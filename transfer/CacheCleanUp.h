// The system's internet cache is emptied before a search, so that the catalogue and the files come from the server.
// The spelling of the names is deliberate.
#pragma once

#include "platform/CacheHandler.h"

#include <cstdint>
#include <memory>
#include <string>

namespace korlan {

struct CacheModule {
    std::unique_ptr<CacheHandler> handler; // held until the program ends
    std::string folder;                    // set by GetInternetTempDirectory
};

inline CacheModule modCache;

// Empties the cache and keeps the handler. A failure of the handler, or its want, is a run-time error for the caller.
std::int32_t TemporaryIntenetFilesCleanUp();

// handler: the object of that class, null when there is none.
std::int32_t CreateCacheHandler(const std::string& classId, std::unique_ptr<CacheHandler>& handler);

// Tells the handler the volume of the cache. Does nothing when the handler's registry key does not open.
std::int32_t InitializeCacheHandler();

// Both do nothing and return 0: the handler is never asked to stop.
std::int32_t IEmptyVolumeCacheCallBack_ScanProgress(std::int64_t spaceUsed);
std::int32_t IEmptyVolumeCacheCallBack_PurgeProgress(std::int64_t spaceFreed, std::int64_t spaceToFree);

// Keeps the cache folder's path, or "Not Found", for DeleteTempoararyFile. No step calls it: the path stays empty.
std::int32_t GetInternetTempDirectory();

// Deletes the file of that name from the cache folder. No step calls it.
std::int32_t DeleteTempoararyFile(const std::string& name);

} // namespace korlan
