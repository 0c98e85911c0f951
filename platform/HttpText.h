// Addresses and headers as they go over the wire, the same on every host.
#pragma once

#include <string>
#include <string_view>

namespace korlan {

// The address as it goes out: blanks as %20 (trailing ones go), backslashes before the query as "/", bytes above 127 in
// percent form. "" when it is none of http or https with a host.
std::string WireUrl(std::string_view url);

// Value of one header of a header text, without outer blanks; "" when missing. Names match without regard to case.
std::string_view HeaderValue(std::string_view headers, std::string_view name);

} // namespace korlan
