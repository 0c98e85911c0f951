// The file list of the wizard and the user's choice in it.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// The page of a search that found nothing: WizardState 1, Finish instead of Cancel.
void ShowNoUpdates();

// Adds one checked row for each marked record of FileArray, or shows that page and records every pack as applied. No
// trap of its own: a marked record without its LocalFolder raises 5.
void DisplayFilesInformationsFromWeb();

// The user has toggled a row; its new state is already set. Keeps icons, counter, Update button and message line in
// step and carries the change to the rows linked with it. Help files carry and take no links.
void lvwFilesList_ItemCheck(std::int32_t row);

// Whether a change of a row with designation `changed` carries over to a row with designation `other` and name
// `otherName`. Not symmetric, deliberately.
bool RowsLinked(const std::string& changed, const std::string& other, const std::string& otherName);

} // namespace korlan
