// The file list of the wizard and the user's choice in it.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// Adds one checked row for each marked record of FileArray, or ends the search with "No updates found". No trap of its
// own: a marked record without its LocalFolder raises 5.
void DisplayFilesInformationsFromWeb();

// The user has toggled a row; its new state is already set. Keeps icons, counter, Update button and message line in
// step and carries the change to the rows linked with it. Help files carry and take no links.
void lvwFilesList_ItemCheck(std::int32_t row);

// Whether a change of a row with designation `changed` carries over to a row with designation `other` and name
// `otherName`. Not symmetric, deliberately.
bool RowsLinked(const std::string& changed, const std::string& other, const std::string& otherName);

} // namespace korlan
