#include "platform/TextLibrary.h"

#include "platform/AsciiText.h"
#include "platform/FileSystem.h"
#include "platform/RuntimeError.h"
#include "platform/TextEncoding.h"

#include <charconv>
#include <unordered_map>

namespace korlan {
namespace {

using TextTable = std::unordered_map<std::int32_t, std::string>;

constexpr std::size_t kLargestFile = std::size_t{4} * 1024 * 1024;
constexpr std::string_view kBlanks = " \t\r";

TextTable& Texts() {
    static TextTable texts;
    return texts;
}

// "\n" is a line break, "\\" a backslash; any other backslash stands for itself.
std::string WithoutEscapes(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char next = text[at] == '\\' && at + 1 < text.size() ? text[at + 1] : '\0';
        if (next == 'n' || next == '\\') ++at;
        result += next == 'n' ? '\n' : text[at];
    }
    return result;
}

// "identifier = text" or "identifier text". Any other line is passed over, and so is a text that is empty or holds a
// zero character. The first text of an identifier stays.
void AddLine(std::string_view line, TextTable& texts) {
    line = Trimmed(line, kBlanks);
    if (line.empty() || line[0] == ';' || line.find('\0') != std::string_view::npos) return;
    std::int32_t identifier = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), identifier);
    if (error != std::errc() || identifier <= 0) return;
    std::string_view rest = line.substr(static_cast<std::size_t>(end - line.data()));
    const std::string_view text = Trimmed(rest, kBlanks);
    if (text.size() == rest.size() && !rest.starts_with('=')) return; // nothing parts the text from its identifier
    rest = text.starts_with('=') ? Trimmed(text.substr(1), kBlanks) : text;
    if (!rest.empty()) texts.try_emplace(identifier, WithoutEscapes(rest));
}

} // namespace

void L32_Object_Create(const std::string& path) {
    Texts().clear();
    std::string bytes;
    try {
        bytes = ReadFilePart(path, 0, kLargestFile + 1);
    } catch (const RuntimeError&) {
        return; // every text is then the program's own
    }
    if (bytes.size() > kLargestFile) return;
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    const std::string text = TextFromBytes(std::string_view(bytes).substr(bytes.starts_with(kMark) ? kMark.size() : 0));
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        AddLine(std::string_view(text).substr(at, end - at), Texts());
        at = end + 1;
    }
}

std::optional<std::string> L32_Object_GetMessage(std::int32_t identifier) {
    const auto found = Texts().find(identifier);
    if (found == Texts().end()) return std::nullopt;
    return found->second;
}

} // namespace korlan
