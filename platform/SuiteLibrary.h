// The suite's own library, which this program only calls. Procedures are bound by name at their first use; a missing
// library raises 53, a missing procedure 453, at the call that needs it.
#pragma once

#include <string>

namespace korlan {

void E_SetString(const std::string& name, const std::string& value);
std::string E_GetString(const std::string& name); // "" when the library has none
void DB_CreateDataBase();                         // the suite's design database

} // namespace korlan
