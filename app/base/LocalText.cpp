#include "app/base/LocalText.h"

#include "app/base/TextHelpers.h"
#include "platform/TextLibrary.h"

namespace korlan {

std::string GetLocalText(const std::string& defaultText, const std::string& identifier) {
    const auto local = L32_Object_GetMessage(Val(identifier));
    if (!local) return defaultText;
    const std::size_t leading = defaultText.size() - LeftTrim(defaultText).size();
    const std::size_t trailing = defaultText.size() - RightTrim(defaultText).size();
    return std::string(leading, ' ') + Trim(*local) + std::string(trailing, ' ');
}

} // namespace korlan
