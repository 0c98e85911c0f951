// Memos and OLE values. A row holds only a head of 12 bytes: kind and length, a row pointer, 4 bytes unused. The value
// itself follows the head, or is one row on a page of long values, or a chain of such rows. What is found must have
// exactly the length that the head declares.
#pragma once

#include "platform/jet/TableRows.h"

#include <string>

namespace korlan::jet {

// The bytes of the value whose head is `field` (an empty field is an empty value). Where they lie in one piece the view
// is of the file, else of `storage`.
ByteView LongValueBytes(const JetFile& file, ByteView field, std::string& storage, WorkBudget& budget);

} // namespace korlan::jet
