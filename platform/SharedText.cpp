#include "platform/SharedText.h"

#include <set>

namespace korlan {

SharedText::SharedText(std::string_view text) {
    static std::set<std::string, std::less<>> all;
    const auto known = all.find(text);
    text_ = &*(known == all.end() ? all.emplace(text).first : known);
}

} // namespace korlan
