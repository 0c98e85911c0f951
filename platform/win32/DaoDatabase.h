// Databases through the suite's own engine, DAO, found at run time.
#pragma once

#include "platform/Database.h"

namespace korlan {

// Raises 3051 on a system without an engine, else what the engine says.
std::unique_ptr<Database> OpenDaoDatabase(const std::string& path, bool exclusive, bool readOnly,
                                          const std::string& connect);

} // namespace korlan
