// A text that many records have in common. Equal ones are kept once, as long as the process lives, so each record pays
// for a pointer.
#pragma once

#include <string>
#include <string_view>

namespace korlan {

class SharedText {
public:
    SharedText(std::string_view text = {});
    SharedText(const std::string& text) : SharedText(std::string_view(text)) {}
    SharedText(const char* text) : SharedText(std::string_view(text)) {}
    const std::string& operator*() const { return *text_; }
    const std::string* operator->() const { return text_; }
    operator const std::string&() const { return *text_; }
    bool operator==(const SharedText&) const = default;

private:
    const std::string* text_;
};

} // namespace korlan
