#include "catalogue/DateText.h"

#include "app/base/TextHelpers.h"

#include "platform/RuntimeError.h"
#include "platform/TextEncoding.h"

#include <array>

namespace korlan {

namespace {

// Year, month, day, hour, minute: the order in which they are compared.
std::array<std::int32_t, 5> Components(std::string_view text) {
    const auto date = Piece(text, ",", 0), time = Piece(text, ",", 1);
    return {ToInteger(Piece(date, "-", 2)), ToInteger(Piece(date, "-", 1)), ToInteger(Piece(date, "-", 0)),
            ToInteger(Piece(time, ":", 0)), ToInteger(Piece(time, ":", 1))};
}

std::string_view WithoutLastThree(std::string_view text) {
    std::size_t length = text.size();
    for (int i = 0; i < 3; ++i) {
        if (length == 0) throw RuntimeError(kErrInvalidCall);
        while (--length > 0 && IsUtf8Tail(text[length])) continue;
    }
    return text.substr(0, length);
}

} // namespace

std::string DateText(const CalendarTime& time) {
    return DecimalText(time.day) + "-" + DecimalText(time.month) + "-" + DecimalText(time.year) + "," +
           DecimalText(time.hour) + ":" + DecimalText(time.minute) + ":" + DecimalText(time.second);
}

void CompareDates(const std::string& date1, const std::string& date2, std::int32_t& result) {
    result = 0;
    const std::string trimmed2 = Trim(date2);
    if (Trim(date1) == trimmed2) return;
    result = WithoutLastThree(date1) != WithoutLastThree(trimmed2) ? 1 : 0; // stands only when the next line raises
    result = Components(date1) < Components(trimmed2) ? 1 : 0;
}

} // namespace korlan
