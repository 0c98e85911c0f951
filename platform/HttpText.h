// Addresses and headers as they go over the wire, and the rules that transfers keep, the same on every host.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace korlan {

// The address as it goes out: blanks as %20 (trailing ones go), backslashes before the query as "/", bytes above 127 in
// percent form. "" when it is none of http or https with a host.
std::string WireUrl(std::string_view url);

// Value of one header of a header text, without outer blanks; "" when missing. Names match without regard to case.
std::string_view HeaderValue(std::string_view headers, std::string_view name);

// Where an answer leads on; "" when it is no redirect.
std::string_view RedirectLocation(long status, std::string_view headers);

inline constexpr std::chrono::milliseconds kHttpSlice{25}; // of any wait
inline constexpr int kRedirectLimit = 20;
inline constexpr std::size_t kKeptBytes = 256UL * 1024;   // an unread body waits from here on
inline constexpr std::size_t kHeaderBytes = 256UL * 1024; // more header text than this is no honest answer
inline std::chrono::milliseconds httpTimeLimit{60'000};

void LogRequest(const std::string& url, long status, std::uint64_t bytes, bool timedOut,
                const std::string& failure = {});

} // namespace korlan
