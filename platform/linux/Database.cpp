#include "platform/Database.h"

#include "platform/DatabaseError.h"
#include "platform/FileSystem.h"
#include "platform/jet/JetDatabase.h"
#include "platform/linux/CodePages.h"
#include "platform/linux/FileHandle.h"
#include "platform/linux/HostPath.h"
#include "platform/linux/SqliteDatabase.h"

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
    if (jet::LooksLikeJet(signature)) // one byte more than allowed tells that a file is larger
        return jet::OpenJetDatabase(StartOfDatabase(path, jet::kLargestFile + 1), connect, DecodeCodePage);
    if (LooksLikeSqlite(signature)) {
        const std::string hostPath = HostPath(path);
        struct stat status {};
        const bool isMarkedReadOnly = stat(hostPath.c_str(), &status) == 0 && IsReadOnly(status);
        return OpenSqliteDatabase(hostPath, exclusive, readOnly || isMarkedReadOnly);
    }
    throw RuntimeError(kErrUnrecognizedFormat, "Unrecognized database format: " + path);
}

} // namespace korlan
