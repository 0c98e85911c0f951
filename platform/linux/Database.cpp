#include "platform/DatabaseHost.h"
#include "platform/linux/FileHandle.h"
#include "platform/linux/HostPath.h"
#include "platform/linux/SqliteDatabase.h"

namespace korlan {

std::unique_ptr<Database> OpenEngineDatabase(std::string_view startOfFile, const std::string& path, bool exclusive,
                                             bool readOnly, const std::string&) {
    if (!LooksLikeSqlite(startOfFile)) return nullptr;
    const std::string hostPath = HostPath(path);
    struct stat status {};
    const bool isMarkedReadOnly = stat(hostPath.c_str(), &status) == 0 && IsReadOnly(status);
    return OpenSqliteDatabase(hostPath, exclusive, readOnly || isMarkedReadOnly);
}

} // namespace korlan
