// Texts the way the program cuts, trims and converts them. Positions count from 1 and are bytes of the UTF-8 text.
// A bad argument raises a run-time error: 5 (position or length), 9 (no such piece), 13 (not a number), 6 (too large).
#pragma once

#include "platform/TextCase.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korlan {

std::string Trim(std::string_view text); // blanks (code 32) at both ends
std::string LeftTrim(std::string_view text);
std::string RightTrim(std::string_view text);

std::string Left(std::string_view text, std::int64_t length);        // shorter texts whole; length < 0 raises 5
std::string Mid(std::string_view text, std::int64_t start);          // from `start` on; start < 1 raises 5
std::int64_t InStr(std::string_view text, std::string_view what);    // first place of `what`, 0 = none
std::int64_t InStrRev(std::string_view text, std::string_view what); // last place
bool Contains(std::string_view text, std::string_view what);
std::string Replace(std::string_view text, std::string_view what, std::string_view with);

// Pieces between the separators, from 0; an empty text has none.
std::vector<std::string> Split(std::string_view text, std::string_view separator);
std::string_view Piece(std::string_view text, std::string_view separator, std::size_t index); // 9 when there is none

// A whole text as a number: blanks around it, sign, digits, a fraction rounded half to even. Raises 13 or 6.
std::int32_t ToInteger(std::string_view text);
// The number a text begins with, its fraction cut; 0 when it begins with none. Too large gives the nearest 32-bit
// value.
std::int32_t Val(std::string_view text);

std::int32_t RoundHalfEven(double value);     // 6 when it does not fit
std::int32_t Kilobytes(std::int32_t bytes);   // rounded like that
std::string DecimalText(std::int32_t number); // "-3", "0", "12"
std::string SignedText(std::int32_t number);  // a blank in the sign's place of a number that is not negative

} // namespace korlan
