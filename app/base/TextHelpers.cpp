#include "app/base/TextHelpers.h"

#include "platform/RuntimeError.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace korlan {

namespace {

constexpr std::int32_t kMaxInteger = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMinInteger = std::numeric_limits<std::int32_t>::min();

} // namespace

std::string LeftTrim(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    return std::string(first == std::string_view::npos ? std::string_view{} : text.substr(first));
}

std::string RightTrim(std::string_view text) {
    return std::string(text.substr(0, text.find_last_not_of(' ') + 1));
}

std::string Trim(std::string_view text) {
    return LeftTrim(text.substr(0, text.find_last_not_of(' ') + 1));
}

std::string Left(std::string_view text, std::int64_t length) {
    if (length < 0) throw RuntimeError(kErrInvalidCall);
    return std::string(text.substr(0, static_cast<std::size_t>(length)));
}

std::string Mid(std::string_view text, std::int64_t start) {
    if (start < 1) throw RuntimeError(kErrInvalidCall);
    const auto offset = static_cast<std::size_t>(start - 1);
    return std::string(offset >= text.size() ? std::string_view{} : text.substr(offset));
}

std::int64_t InStr(std::string_view text, std::string_view what) {
    const auto found = text.find(what);
    return found == std::string_view::npos ? 0 : static_cast<std::int64_t>(found) + 1;
}

std::int64_t InStrRev(std::string_view text, std::string_view what) {
    const auto found = text.rfind(what);
    return found == std::string_view::npos ? 0 : static_cast<std::int64_t>(found) + 1;
}

bool Contains(std::string_view text, std::string_view what) {
    return text.find(what) != std::string_view::npos;
}

std::string Replace(std::string_view text, std::string_view what, std::string_view with) {
    std::string result;
    std::size_t from = 0;
    for (std::size_t at; (at = text.find(what, from)) != std::string_view::npos; from = at + what.size())
        result.append(text.substr(from, at - from)).append(with);
    return result.append(text.substr(from));
}

std::vector<std::string> Split(std::string_view text, std::string_view separator) {
    std::vector<std::string> pieces;
    if (text.empty()) return pieces;
    std::size_t from = 0;
    for (std::size_t at; (at = text.find(separator, from)) != std::string_view::npos; from = at + separator.size())
        pieces.emplace_back(text.substr(from, at - from));
    pieces.emplace_back(text.substr(from));
    return pieces;
}

std::string_view Piece(std::string_view text, std::string_view separator, std::size_t index) {
    if (text.empty()) throw RuntimeError(kErrSubscript);
    for (; index > 0; --index) {
        const std::size_t at = text.find(separator);
        if (at == std::string_view::npos) throw RuntimeError(kErrSubscript);
        text.remove_prefix(at + separator.size());
    }
    return text.substr(0, text.find(separator));
}

std::int32_t ToInteger(std::string_view text) {
    const std::string trimmed = Trim(text);
    std::string_view digits = trimmed;
    if (!digits.empty() && digits.front() == '+') digits.remove_prefix(1);
    double value = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed);
    if (error == std::errc::result_out_of_range) throw RuntimeError(kErrOverflow);
    if (error != std::errc{} || end != digits.data() + digits.size() || !std::isfinite(value) ||
        (trimmed.front() == '+' && digits.front() == '-'))
        throw RuntimeError(kErrTypeMismatch);
    return RoundHalfEven(value);
}

std::int32_t Val(std::string_view text) {
    const std::string trimmed = LeftTrim(text);
    std::string_view digits = trimmed;
    const bool negative = !digits.empty() && digits.front() == '-';
    if (!digits.empty() && (digits.front() == '-' || digits.front() == '+')) digits.remove_prefix(1);
    std::int64_t value = 0;
    for (const char c : digits) {
        if (c < '0' || c > '9' || value > kMaxInteger) break;
        value = value * 10 + (c - '0');
    }
    if (negative) return value > kMaxInteger ? kMinInteger : static_cast<std::int32_t>(-value);
    return value > kMaxInteger ? kMaxInteger : static_cast<std::int32_t>(value);
}

std::int32_t RoundHalfEven(double value) {
    const double rounded = std::nearbyint(value);
    if (!(rounded >= kMinInteger && rounded <= kMaxInteger)) throw RuntimeError(kErrOverflow);
    return static_cast<std::int32_t>(rounded);
}

std::int32_t Kilobytes(std::int32_t bytes) {
    return RoundHalfEven(bytes / 1024.0);
}

std::string DecimalText(std::int32_t number) {
    return std::to_string(number);
}

std::string SignedText(std::int32_t number) {
    return (number < 0 ? "" : " ") + std::to_string(number);
}

} // namespace korlan
