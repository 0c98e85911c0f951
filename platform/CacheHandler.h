// The disk clean-up handler for the internet cache, shaped like the system's own (Initialize, GetSpaceUsed, Purge).
// Links in the cache are not followed. A failure of one of the three raises a RuntimeError; one that its callback stops
// ends early without an error.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace korlan {

class CacheCallback { // 0 goes on, anything else stops
public:
    virtual ~CacheCallback() = default;
    virtual std::int32_t ScanProgress(std::int64_t spaceUsed) = 0;
    virtual std::int32_t PurgeProgress(std::int64_t spaceFreed, std::int64_t spaceToFree) = 0;
};

class CacheHandler {
public:
    virtual ~CacheHandler() = default;
    // volume: the root of the volume that holds the cache, three characters ("C:\").
    virtual void Initialize(const std::string& volume) = 0;
    virtual std::int64_t GetSpaceUsed(CacheCallback& callback) = 0; // bytes
    virtual void Purge(std::int64_t spaceToFree, CacheCallback& callback) = 0;
};

// Null when the host has no handler of that class.
std::unique_ptr<CacheHandler> CreateCacheHandlerObject(const std::string& classId);

std::string InternetCacheFolder(); // Windows-form path, "" when it cannot be told
bool CacheHandlerKeyOpens();       // the handler's own registry key

} // namespace korlan
