#include "platform/jet/ValueText.h"

#include "platform/jet/LongValue.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>

namespace korlan::jet {

namespace {

template <class Number>
void AppendNumber(std::string& out, Number value) {
    std::array<char, 400> text; // a double in plain decimal needs up to some 330 characters
    const auto result = [&] {
        if constexpr (std::is_floating_point_v<Number>) {
            return std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
        } else {
            return std::to_chars(text.data(), text.data() + text.size(), value);
        }
    }();
    out.append(text.data(), result.ptr);
}

template <class Real>
void AppendReal(std::string& out, Real value) {
    if (value == 0) value = 0; // no "-0"
    AppendNumber(out, value);
}

// Puts the point into a row of digits, with no more zeros behind it or in front of it than needed.
void AppendScaled(std::string& out, bool isNegative, std::string digits, std::size_t scale) {
    if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
    std::string fraction = digits.substr(digits.size() - scale);
    digits.resize(digits.size() - scale);
    while (!fraction.empty() && fraction.back() == '0') fraction.pop_back();
    if (isNegative && (digits != "0" || !fraction.empty())) out += '-';
    out += digits;
    if (!fraction.empty()) out.append(".").append(fraction);
}

void AppendCurrency(std::string& out, std::uint64_t stored) {
    const bool isNegative = stored >> 63 != 0;
    AppendScaled(out, isNegative, std::to_string(isNegative ? 0 - stored : stored), 4);
}

// A sign byte, then 128 bits as four words, highest first.
void AppendDecimal(std::string& out, ByteView field, std::size_t scale) {
    constexpr std::size_t kLargestScale = 28;
    Require(scale <= kLargestScale, "a decimal with too many places");
    std::array<std::uint32_t, 4> words;
    for (std::size_t i = 0; i < words.size(); ++i) words[i] = field.U32(1 + 4 * i);
    Require(words[0] >> 31 == 0, "a decimal out of range");
    std::string digits;
    while (words != std::array<std::uint32_t, 4>{}) {
        std::uint64_t rest = 0;
        for (std::uint32_t& word : words) {
            const std::uint64_t part = rest << 32 | word;
            word = static_cast<std::uint32_t>(part / 10);
            rest = part % 10;
        }
        digits.insert(digits.begin(), static_cast<char>('0' + rest));
    }
    AppendScaled(out, field.U8(0) == 0x80, digits, scale);
}

// Whole days from 1899-12-30; the fraction without its sign is the time of day, so -1.25 is 06:00 on the 29th.
void AppendDate(std::string& out, double stored) {
    constexpr double kFirstDay = -657434, kLastDay = 2958465; // 0100-01-01 and 9999-12-31
    constexpr std::int32_t kDaySeconds = 86400;
    Require(stored > kFirstDay - 1 && stored < kLastDay + 1, "a date out of range"); // false for a NaN, too
    auto day = static_cast<std::int32_t>(stored);                                    // cuts towards zero
    auto second = static_cast<std::int32_t>(std::lround(std::abs(stored - day) * kDaySeconds));
    if (second == kDaySeconds) {
        second = 0;
        ++day;
    }
    Require(day <= static_cast<std::int32_t>(kLastDay), "a date out of range");
    using namespace std::chrono;
    const year_month_day date(sys_days(year{1899} / December / 30) + days(day));
    AppendNumber(out, static_cast<unsigned>(date.day()));
    AppendNumber(out.append("-"), static_cast<unsigned>(date.month()));
    AppendNumber(out.append("-"), static_cast<int>(date.year()));
    AppendNumber(out.append(","), second / 3600);
    AppendNumber(out.append(":"), second / 60 % 60);
    AppendNumber(out.append(":"), second % 60);
}

void AppendHexDigits(std::string& out, std::string_view bytes, std::string_view digits) {
    for (const char c : bytes) {
        out += digits[static_cast<std::uint8_t>(c) >> 4];
        out += digits[static_cast<std::uint8_t>(c) & 15];
    }
}

// 4 + 2 + 2 bytes little-endian, then 8 as they stand.
void AppendGuid(std::string& out, ByteView field) {
    constexpr std::array<std::size_t, 16> kOrder = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    const std::string_view bytes = field.Part(0, kOrder.size()).Chars();
    out += '{';
    for (std::size_t i = 0; i < kOrder.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) out += '-';
        AppendHexDigits(out, bytes.substr(kOrder[i], 1), "0123456789ABCDEF");
    }
    out += '}';
}

} // namespace

std::string_view YesNoText(bool value) {
    return value ? "True" : "False";
}

void AppendRealText(std::string& out, double value) {
    AppendReal(out, value);
}

void AppendHexText(std::string& out, std::string_view bytes) {
    AppendHexDigits(out, bytes, "0123456789abcdef");
}

void AppendValue(std::string& out, const JetFile& file, const Column& column, ByteView field, WorkBudget& budget) {
    std::string storage;
    switch (column.type) {
    case ColumnType::Byte: return AppendNumber(out, unsigned{field.U8(0)});
    case ColumnType::Integer: return AppendNumber(out, static_cast<std::int16_t>(field.U16(0)));
    case ColumnType::Long: return AppendNumber(out, static_cast<std::int32_t>(field.U32(0)));
    case ColumnType::Currency: return AppendCurrency(out, field.U64(0));
    case ColumnType::Single: return AppendReal(out, field.F32(0));
    case ColumnType::Double: return AppendReal(out, field.F64(0));
    case ColumnType::Date: return AppendDate(out, field.F64(0));
    case ColumnType::Binary: return AppendHexText(out, field.Chars());
    case ColumnType::Text: return file.AppendValueText(out, field.Chars());
    case ColumnType::Ole: return AppendHexText(out, LongValueBytes(file, field, storage, budget).Chars());
    case ColumnType::Memo: return file.AppendValueText(out, LongValueBytes(file, field, storage, budget).Chars());
    case ColumnType::Guid: return AppendGuid(out, field);
    case ColumnType::Decimal: return AppendDecimal(out, field, column.scale);
    case ColumnType::YesNo: break; // has no stored bytes
    }
    throw RuntimeError(kErrInvalidFieldType, "Invalid field data type: " + column.name);
}

} // namespace korlan::jet
