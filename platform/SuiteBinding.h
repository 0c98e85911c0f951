// How a back end finds the suite's library (sdk/KlwUpdt.h).
#pragma once

#include <string>

namespace korlan {

// The address of a procedure. Raises 53 without the library, 453 without the procedure.
void* SuiteProcedure(const char* name);

std::string PathForSuite(const std::string& path); // as the library's own file calls take it

} // namespace korlan
