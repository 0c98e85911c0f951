// The rules that a catalogue's row must keep by itself, most of them by asking the wizard's own procedures.
#pragma once

#include "publisher/CatalogueFile.h"
#include "publisher/Findings.h"

#include <optional>

namespace korlan::publisher {

// Why no file of Windows can have that name; "" when one can.
std::string WhyNoFileName(std::string_view name);

// The same text for rows that stand for the same installed file; nothing when the designation does not resolve.
std::optional<std::string> TargetOf(const CatalogueRow& row);

void CheckRow(const Place& place, const CatalogueRow& row, Findings& findings); // of a service pack
void CheckPackName(const Place& place, const std::string& name, Findings& findings);

bool IsDate(const std::string& text); // as the wizard reads it
// Whether both texts are dates and equal to the minute.
bool SameMinute(const std::string& date1, const std::string& date2);
// Whether the first is the earlier; false as well when one is no date.
bool IsOlder(const std::string& date1, const std::string& date2);

bool IsModelFile(const std::string& fileName);

} // namespace korlan::publisher
