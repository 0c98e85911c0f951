// klnpub pack: a staging tree becomes a service pack on the server.
#pragma once

#include <filesystem>
#include <string>

namespace korlan::publisher {

struct PackOptions {
    std::string name; // "SP4" or "SP4.mdb"
    std::filesystem::path from, to;
    bool replace = false;
};

// Makes everything in a folder of its own inside the server's tree and moves it into place by renames: archives, pack,
// master. A wizard that searches meanwhile sees the old catalogue or the new one. The exit code: 0 published, 1 refused
// with the reasons on the standard error and nothing changed. Raises when something cannot be read or written; what was
// new by then is taken away again.
int Pack(const PackOptions& options);

} // namespace korlan::publisher
