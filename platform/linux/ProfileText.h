// The text of one profile (INI) file: parsed once, read by section and key, changed line by line. No file is touched
// here. The rules are those of the Windows profile functions:
// - Lines end at CR, LF or both. Blanks, tabs, VT, FF and Ctrl-Z around section names, keys and values go.
// - The first section of a name and the first key in it win, whatever the case of ASCII letters. A name ends at the
//   first "]" or with its line. Keys before the first section do not exist. Only ";" at the start of a line is a
//   comment.
// - The value is what follows the first "="; one pair of equal quotes around it goes. A line without "=" is a key
//   without a value: it hides later keys of its name and reads as missing.
#pragma once

#include "platform/IniFile.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace korlan {

class ProfileText {
public:
    // `bytes` are the whole file: UTF-16LE with its mark, else UTF-8 where valid, else Windows-1252. (A UTF-8 mark is
    // not understood: it spoils the first line, as on Windows.)
    explicit ProfileText(std::string_view bytes);

    // As ReadProfileValue.
    std::optional<std::string> Read(std::string_view section, std::string_view key, std::size_t bufferSize) const;

    // The whole file with that one change, in the form it has; nothing when it says so already.
    std::optional<std::string> Write(std::string_view section, std::string_view key, std::string_view value) const;

private:
    enum class Coding { Ascii, Utf8, CodePage, Utf16 };
    struct Span {
        std::size_t start = 0, end = 0;
    };
    struct Entry {
        Span line; // without its line break
        Span name;
        std::size_t equals = std::string::npos;
        std::size_t next = 0; // start of the next line
    };
    struct Section {
        Entry header;
        std::vector<Entry> entries;
        std::unordered_map<std::string, std::size_t> entryOf; // by the key in upper case
    };

    void Decode(std::string_view bytes);
    std::string Encode(const std::string& text) const;
    void Parse();
    void ParseLine(Span line, std::size_t next);
    std::string_view Of(Span span) const { return std::string_view(text_).substr(span.start, span.end - span.start); }
    Span Trimmed(Span span) const;
    const Section* FindSection(std::string_view name) const;
    static const Entry* FindEntry(const Section& section, std::string_view key);
    std::string_view ValueOf(const Entry& entry) const;

    std::string Cut(std::string_view text, std::size_t most) const;

    std::string WithValue(const Entry& entry, std::string_view value) const;
    std::string WithNewLine(const Entry& behind, const std::string& line) const;

    Coding coding_ = Coding::Ascii;
    std::string text_;    // UTF-8, without a UTF-16 mark
    std::string oddByte_; // the last byte of a UTF-16 file that has one too many
    std::vector<Section> sections_;
    std::unordered_map<std::string, std::size_t> sectionOf_; // by the name in upper case
};

} // namespace korlan
