#include "platform/Database.h"

#include "platform/DatabaseError.h"
#include "platform/FileSystem.h"
#include "platform/jet/JetDatabase.h"
#include "platform/win32/DaoDatabase.h"
#include "platform/win32/Wide.h"

namespace korlan {
namespace {

bool DecodeCodePage(unsigned codePage, std::string_view bytes, std::string& out) {
    const int size = static_cast<int>(bytes.size());
    std::wstring wide(bytes.size(), 0);
    const int length = MultiByteToWideChar(codePage, 0, bytes.data(), size, wide.data(), size);
    if (length == 0 && size > 0) return false;
    out += Narrow(std::wstring_view(wide).substr(0, static_cast<std::size_t>(length)));
    return true;
}

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

// A catalogue comes from the network and has no connect string: it is never given to the engine. What has one is the
// suite's own and is opened by the engine, the only one that may write to it.
std::unique_ptr<Database> OpenDatabase(const std::string& path, bool exclusive, bool readOnly,
                                       const std::string& connect) {
    constexpr std::size_t kSignatureSize = 32;
    const std::string signature = StartOfDatabase(path, kSignatureSize);
    if (!connect.empty()) return OpenDaoDatabase(path, exclusive, readOnly, connect);
    if (!jet::LooksLikeJet(signature))
        throw RuntimeError(kErrUnrecognizedFormat, "Unrecognized database format: " + path);
    return jet::OpenJetDatabase(StartOfDatabase(path, jet::kLargestFile + 1), connect, DecodeCodePage);
}

} // namespace korlan
