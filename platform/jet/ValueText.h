// The text of a value, by its column's type: numbers in plain decimal, currency and decimals without trailing zeros,
// singles and doubles in the shortest form that reads back, dates as D-M-YYYY,H:M:S without leading zeros, GUIDs as
// {8-4-4-4-12}, binary and OLE values in hex. A type this program does not know raises 3259, damage 3343.
#pragma once

#include "platform/jet/TableRows.h"

#include <string>
#include <string_view>

namespace korlan::jet {

// "True" or "False".
std::string_view YesNoText(bool value);
// `field` holds the stored bytes of a value of any type but yes/no.
void AppendValue(std::string& out, const JetFile& file, const Column& column, ByteView field, WorkBudget& budget);

// Used for numbers and blobs of other database files, too, so that both kinds look the same.
void AppendRealText(std::string& out, double value);
void AppendHexText(std::string& out, std::string_view bytes);

} // namespace korlan::jet
