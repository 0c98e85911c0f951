#include "platform/linux/ProfileText.h"

#include "platform/AsciiText.h"
#include "platform/TextEncoding.h"

#include <algorithm>

namespace korlan {
namespace {

constexpr std::string_view kSpace = " \t\v\f\x1A";
constexpr std::string_view kLineBreak = "\r\n";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";

// Arguments end at a zero character; those that name something lose the blanks (not the tabs) at both ends.
std::string_view Argument(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

std::string_view NameArgument(std::string_view text) {
    return Trimmed(Argument(text), " ");
}

// --- UTF-16LE --------------------------------------------------------------------------------------------------------
// A surrogate without its partner is kept as three bytes, so that what is read can be written back.

char32_t UnitAt(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]) | static_cast<char32_t>(static_cast<unsigned char>(bytes[at + 1]))
                                                       << 8;
}

std::string TextFromUtf16(std::string_view bytes) {
    std::string text;
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        char32_t code = UnitAt(bytes, at);
        if (code >= 0xD800 && code < 0xDC00 && at + 3 < bytes.size()) {
            const char32_t second = UnitAt(bytes, at + 2);
            if (second >= 0xDC00 && second < 0xE000) {
                code = 0x10000 + ((code - 0xD800) << 10) + (second - 0xDC00);
                at += 2;
            }
        }
        AppendUtf8(text, code);
    }
    return text;
}

Utf8Character NextCharacterOrSurrogate(std::string_view text, std::size_t at) {
    const Utf8Character character = NextUtf8Character(text, at);
    if (character.length > 0) return character;
    const auto byte = [&](std::size_t i) -> char32_t { return static_cast<unsigned char>(text[at + i]); };
    if (byte(0) == 0xED && text.size() - at >= 3) return {0xD000 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F), 3};
    return {'?', 1};
}

std::string Utf16FromText(std::string_view text) {
    std::string bytes;
    const auto append = [&](char32_t unit) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    };
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Character character = NextCharacterOrSurrogate(text, at);
        at += character.length;
        if (character.code < 0x10000) {
            append(character.code);
        } else {
            append(0xD800 + ((character.code - 0x10000) >> 10));
            append(0xDC00 + (character.code & 0x3FF));
        }
    }
    return bytes;
}

bool IsAscii(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; });
}

} // namespace

// --- Coding ----------------------------------------------------------------------------------------------------------

void ProfileText::Decode(std::string_view bytes) {
    if (bytes.starts_with(kUtf16Mark)) {
        coding_ = Coding::Utf16;
        if (bytes.size() % 2 != 0) oddByte_ = bytes.back();
        text_ = TextFromUtf16(bytes.substr(kUtf16Mark.size()));
    } else if (IsValidUtf8(bytes)) {
        coding_ = IsAscii(bytes) ? Coding::Ascii : Coding::Utf8;
        text_ = bytes;
    } else {
        coding_ = Coding::CodePage;
        text_ = TextFromCodePage(bytes);
    }
}

std::string ProfileText::Encode(const std::string& text) const {
    switch (coding_) {
    case Coding::Utf16: return std::string(kUtf16Mark) + Utf16FromText(text) + oddByte_;
    case Coding::CodePage: return BytesFromText(text);
    case Coding::Utf8: return text;
    case Coding::Ascii: break;
    }
    // The first characters beyond ASCII: in the code page, which is what the suite's other programs read, unless the
    // file would then say something else.
    std::string bytes = BytesFromText(text);
    return TextFromBytes(bytes) == text ? bytes : text;
}

// --- Parsing ---------------------------------------------------------------------------------------------------------

ProfileText::ProfileText(std::string_view bytes) {
    Decode(bytes);
    Parse();
}

void ProfileText::Parse() {
    for (std::size_t at = 0; at < text_.size();) {
        const std::size_t end = std::min(text_.find_first_of(kLineBreak, at), text_.size());
        const bool both = std::string_view(text_).substr(end).starts_with(kLineBreak);
        const std::size_t next = std::min(end + (both ? 2 : 1), text_.size());
        ParseLine({at, end}, next);
        at = next;
    }
}

void ProfileText::ParseLine(Span line, std::size_t next) {
    const Span trimmed = Trimmed(line);
    const std::string_view content = Of(trimmed);
    if (content.empty() || content[0] == ';') return;
    Entry entry{line, trimmed, std::string::npos, next};
    if (content[0] == '[') {
        entry.name = Trimmed({trimmed.start + 1, trimmed.start + std::min(content.find(']'), content.size())});
        sectionOf_.try_emplace(UpperAsciiText(Of(entry.name)), sections_.size()); // the first of a name stays
        sections_.push_back({entry, {}, {}});
    } else if (!sections_.empty()) {
        if (const std::size_t equals = content.find('='); equals != std::string_view::npos) {
            entry.equals = trimmed.start + equals;
            entry.name = Trimmed({trimmed.start, entry.equals});
        }
        Section& section = sections_.back();
        section.entryOf.try_emplace(UpperAsciiText(Of(entry.name)), section.entries.size());
        section.entries.push_back(entry);
    }
}

ProfileText::Span ProfileText::Trimmed(Span span) const {
    const auto isSpace = [&](std::size_t at) { return kSpace.find(text_[at]) != std::string_view::npos; };
    while (span.start < span.end && isSpace(span.start)) ++span.start;
    while (span.end > span.start && isSpace(span.end - 1)) --span.end;
    return span;
}

const ProfileText::Section* ProfileText::FindSection(std::string_view name) const {
    const auto found = sectionOf_.find(UpperAsciiText(name));
    return found == sectionOf_.end() ? nullptr : &sections_[found->second];
}

const ProfileText::Entry* ProfileText::FindEntry(const Section& section, std::string_view key) {
    const auto found = section.entryOf.find(UpperAsciiText(key));
    return found == section.entryOf.end() ? nullptr : &section.entries[found->second];
}

std::string_view ProfileText::ValueOf(const Entry& entry) const {
    const std::string_view value = Of(Trimmed({entry.equals + 1, entry.line.end}));
    const bool quoted = value.size() >= 2 && value.front() == value.back() && (value[0] == '"' || value[0] == '\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

// --- Reading ---------------------------------------------------------------------------------------------------------

std::optional<std::string> ProfileText::Read(std::string_view section, std::string_view key,
                                             std::size_t bufferSize) const {
    const Section* found = FindSection(NameArgument(section));
    const Entry* entry = found ? FindEntry(*found, NameArgument(key)) : nullptr;
    if (!entry || entry->equals == std::string::npos) return std::nullopt;
    return Cut(ValueOf(*entry), bufferSize == 0 ? 0 : bufferSize - 1);
}

// At most `most` bytes of the file's own form (of the code page, for UTF-16), and no part of a character.
std::string ProfileText::Cut(std::string_view text, std::size_t most) const {
    std::size_t at = 0, used = 0;
    while (at < text.size()) {
        const std::size_t length = std::max<std::size_t>(NextUtf8Character(text, at).length, 1);
        used += coding_ == Coding::Utf8 ? length : 1;
        if (used > most) break;
        at += length;
    }
    return std::string(text.substr(0, at));
}

// --- Writing ---------------------------------------------------------------------------------------------------------

std::optional<std::string> ProfileText::Write(std::string_view section, std::string_view key,
                                              std::string_view value) const {
    section = NameArgument(section);
    const std::string_view name = NameArgument(key), text = Argument(value);
    const Section* found = FindSection(section);
    const Entry* entry = found ? FindEntry(*found, name) : nullptr;
    if (entry) {
        if (entry->equals != std::string::npos) {
            const Span stored{entry->equals + 1, entry->line.end};
            if (text == Of(stored) || text == Of(Trimmed(stored))) return std::nullopt;
        }
        return Encode(WithValue(*entry, text));
    }
    const std::string line = std::string(name).append("=").append(text).append(kLineBreak);
    if (found) return Encode(WithNewLine(found->entries.empty() ? found->header : found->entries.back(), line));
    const bool ended = text_.empty() || kLineBreak.find(text_.back()) != std::string_view::npos;
    return Encode(text_ + std::string(ended ? "" : kLineBreak) + "[" + std::string(section) + "]\r\n" + line);
}

std::string ProfileText::WithValue(const Entry& entry, std::string_view value) const {
    const bool hasEquals = entry.equals != std::string::npos;
    const std::size_t start = hasEquals ? entry.equals + 1 : entry.name.end;
    std::string text = text_;
    return text.replace(start, entry.line.end - start, std::string(hasEquals ? "" : "=").append(value));
}

std::string ProfileText::WithNewLine(const Entry& behind, const std::string& line) const {
    const bool ended = behind.next > behind.line.end;
    std::string text = text_;
    return text.insert(behind.next, ended ? line : std::string(kLineBreak) + line);
}

} // namespace korlan
