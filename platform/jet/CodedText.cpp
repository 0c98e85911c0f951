#include "platform/jet/CodedText.h"

#include "platform/TextEncoding.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace korlan::jet {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Takes UTF-16 units one at a time and keeps a high surrogate until its partner comes.
class UnitJoiner {
public:
    explicit UnitJoiner(std::string& out) : out_(out) {}
    void Put(char16_t unit) {
        const bool low = unit >= 0xDC00 && unit <= 0xDFFF;
        if (high_ != 0 && low) {
            AppendUtf8(out_, 0x10000 + (static_cast<char32_t>(high_ - 0xD800) << 10) + (unit - 0xDC00u));
            high_ = 0;
            return;
        }
        Finish();
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            high_ = unit;
        } else {
            AppendUtf8(out_, low ? kReplacement : unit);
        }
    }
    void Finish() {
        if (high_ != 0) AppendUtf8(out_, kReplacement);
        high_ = 0;
    }

private:
    std::string& out_;
    char16_t high_ = 0;
};

std::uint8_t Byte(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint8_t>(bytes[at]);
}

char16_t Unit(std::string_view bytes, std::size_t at) {
    return static_cast<char16_t>(Byte(bytes, at) | Byte(bytes, at + 1) << 8);
}

// Length of the ASCII text at the start; most values are nothing else.
std::size_t PlainRun(std::string_view bytes) {
    const auto end = std::find_if(bytes.begin(), bytes.end(), [](char c) { return c == 0 || (c & 0x80) != 0; });
    return static_cast<std::size_t>(end - bytes.begin());
}

void AppendSqueezed(std::string& out, std::string_view bytes) {
    UnitJoiner joiner(out);
    bool squeezed = true;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t plain = squeezed ? PlainRun(bytes.substr(at)) : 0;
        if (plain > 0) {
            joiner.Finish();
            out.append(bytes.substr(at, plain));
            at += plain;
        } else if (bytes[at] == 0) {
            squeezed = !squeezed;
            ++at;
        } else if (squeezed) {
            joiner.Put(Byte(bytes, at++));
        } else if (bytes.size() - at >= 2) {
            joiner.Put(Unit(bytes, at));
            at += 2;
        } else {
            joiner.Put(static_cast<char16_t>(kReplacement));
            ++at;
        }
    }
    joiner.Finish();
}

} // namespace

void AppendCodePageText(std::string& out, std::string_view bytes, unsigned codePage, CodePageDecoder decoder) {
    const bool plain = std::none_of(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) != 0; });
    if (plain) {
        out.append(bytes);
        return;
    }
    if (codePage != 1252 && decoder != nullptr && decoder(codePage, bytes, out)) return;
    out += TextFromCodePage(bytes);
}

void AppendUtf16Text(std::string& out, std::string_view bytes) {
    UnitJoiner joiner(out);
    for (std::size_t at = 0; bytes.size() - at >= 2; at += 2) joiner.Put(Unit(bytes, at));
    joiner.Finish();
    if (bytes.size() % 2 != 0) AppendUtf8(out, kReplacement);
}

void AppendJet4Text(std::string& out, std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) {
        AppendSqueezed(out, bytes.substr(2));
    } else {
        AppendUtf16Text(out, bytes);
    }
}

} // namespace korlan::jet
