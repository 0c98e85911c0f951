// How a back end finds the suite's library and what crosses to it as the host's own text.
#pragma once

#include <string>

namespace korlan {

// The address of a procedure. Raises 53 without the library, 453 without the procedure.
void* SuiteProcedure(const char* name);

std::string PathForSuite(const std::string& path);
std::string TextForSuite(const std::string& text); // of a setting
std::string TextOfSuite(const char* text);

} // namespace korlan
