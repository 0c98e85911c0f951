// Which wizard the procedures of the core take themselves to be.
#pragma once

#include <string>

namespace korlan::publisher {

std::string& WizardPath(); // Windows-form; C:\KORLAN\KlnUpdt.EXE unless set

} // namespace korlan::publisher
