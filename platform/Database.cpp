#include "platform/Database.h"

#include "platform/DatabaseError.h"
#include "platform/DatabaseHost.h"
#include "platform/FileSystem.h"
#include "platform/jet/JetDatabase.h"

namespace korlan {
namespace {

// Up to `count` bytes of a database file. What the file system reports becomes an error of the database engine.
std::string StartOfDatabase(const std::string& path, std::size_t count) {
    try {
        return ReadFilePart(path, 0, count);
    } catch (const RuntimeError& error) {
        const bool isMissing = error.Number() == kErrFileNotFound || error.Number() == kErrPathNotFound;
        throw RuntimeError(isMissing ? kErrDatabaseMissing : kErrCannotOpenDatabase, error.Description());
    }
}

} // namespace

std::unique_ptr<Database> OpenDatabase(const std::string& path, bool exclusive, bool readOnly,
                                       const std::string& connect) {
    constexpr std::size_t kSignatureSize = 32;
    const std::string signature = StartOfDatabase(path, kSignatureSize);
    if (auto database = OpenEngineDatabase(signature, path, exclusive, readOnly, connect)) return database;
    if (!jet::LooksLikeJet(signature))
        throw RuntimeError(kErrUnrecognizedFormat, "Unrecognized database format: " + path);
    // One byte more than allowed tells that a file is larger.
    return jet::OpenJetDatabase(StartOfDatabase(path, jet::kLargestFile + 1), connect, DecodeCodePage);
}

} // namespace korlan
