// The wizard's steps: the search, and what its buttons do. A click handler ends quietly on a run-time error; the search
// has no trap of its own.
#pragma once

#include "platform/Help.h"

#include <cstdint>
#include <string>

namespace korlan {

// Fetches the catalogue and fills the list (WizardState stays 0, Update enabled), or ends without one (WizardState 1:
// no updates, or no connection). Yields. A newer build of this program on the server starts the self-update launcher
// and raises 9999. Ends the process when the catalogue did not come and Cancel was pressed.
void InitiateUpdate();

void cmdUpdate_Click();
void CmdRetry_Click();
void cmdCancel_Click(); // Cancel, Next, Finish or Close, whatever the button reads
void cmdHelp_Click();
void Option2_Click();
void Option3_Click();
void Option4_Click();

// Shows the options of the reminder page with the first one selected.
void ShowReminderOptions(const std::string& heading);

// Opens the compiled help of the same base name as `file` (three letters of extension). A missing one opens nothing.
void ShowHelp(const std::string& file, HelpCommand command, std::int32_t data);

} // namespace korlan
