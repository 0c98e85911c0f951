#include "platform/HttpText.h"

#include "platform/AsciiText.h"
#include "platform/Http.h"
#include "platform/Log.h"

namespace korlan {
namespace {

void AppendPercent(std::string& wire, unsigned char byte) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    wire += '%';
    wire += kDigits[byte / 16];
    wire += kDigits[byte % 16];
}

} // namespace

std::string WireUrl(std::string_view url) {
    while (url.ends_with(' ')) url.remove_suffix(1);
    const std::size_t query = std::min(url.find('?'), url.size());
    std::string wire;
    for (std::size_t i = 0; i < url.size(); ++i) {
        const auto byte = static_cast<unsigned char>(url[i]);
        if (byte < 32 || byte == 127) return {}; // could end the line and add another
        if (byte == ' ' || byte > 127)
            AppendPercent(wire, byte);
        else
            wire += byte == '\\' && i < query ? '/' : url[i];
    }
    for (const std::string_view scheme : {"http://", "https://"}) {
        const bool hostFollows =
            wire.size() > scheme.size() && std::string_view("/?#").find(wire[scheme.size()]) == std::string_view::npos;
        if (EqualNoCase(std::string_view(wire).substr(0, scheme.size()), scheme) && hostFollows) return wire;
    }
    return {};
}

std::string_view HeaderValue(std::string_view headers, std::string_view name) {
    while (!headers.empty()) {
        const std::string_view line = headers.substr(0, headers.find('\n'));
        const std::size_t colon = line.find(':');
        if (colon != std::string_view::npos && EqualNoCase(line.substr(0, colon), name))
            return Trimmed(line.substr(colon + 1));
        headers.remove_prefix(std::min(line.size() + 1, headers.size()));
    }
    return {};
}

std::string_view RedirectLocation(long status, std::string_view headers) {
    return status >= 300 && status < 400 ? HeaderValue(headers, "Location") : std::string_view();
}

void SetHttpTimeLimit(std::chrono::milliseconds limit) {
    httpTimeLimit = limit;
}

void LogRequest(const std::string& url, long status, std::uint64_t bytes, bool timedOut, const std::string& failure) {
    LogLine("GET " + url + ": status " + std::to_string(status) + ", " + std::to_string(bytes) + " bytes" +
            (timedOut ? ", no byte for too long" : "") + (failure.empty() ? "" : ", " + failure));
}

} // namespace korlan
