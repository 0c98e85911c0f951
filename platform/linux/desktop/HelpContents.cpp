// The contents file of a compiled help is loose HTML: <ul> opens a level, <object> a topic, <param> gives it a name
// and a page. Everything else in it is passed over.
#include "platform/linux/desktop/CompiledHelp.h"

#include "platform/AsciiText.h"
#include "platform/TextEncoding.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace korlan {
namespace {

constexpr std::size_t kMostTopics = 20000;
constexpr int kDeepestTopic = 32;
constexpr std::size_t kLongestEntity = 10;

// "&amp;", "&#233;" and the like; what is no known entity stays.
std::string DecodeEntities(const std::string& text) {
    static constexpr std::pair<std::string_view, char32_t> kNames[] = {{"amp", '&'},  {"lt", '<'},    {"gt", '>'},
                                                                       {"quot", '"'}, {"apos", '\''}, {"nbsp", ' '}};
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t end = text[i] == '&' ? text.substr(i, kLongestEntity).find(';') : std::string::npos;
        char32_t code = 0;
        if (end != std::string::npos) {
            const std::string name = text.substr(i + 1, end - 1);
            const bool hexadecimal = name.starts_with("#x") || name.starts_with("#X");
            if (name.starts_with("#"))
                code = static_cast<char32_t>(
                    std::strtoul(name.c_str() + (hexadecimal ? 2 : 1), nullptr, hexadecimal ? 16 : 10));
            else
                for (const auto& [known, character] : kNames)
                    if (name == known) code = character;
        }
        if (code > 0 && code < 0x110000 && (code < 0xD800 || code > 0xDFFF)) {
            AppendUtf8(decoded, code);
            i += end;
        } else {
            decoded += text[i];
        }
    }
    return decoded;
}

// The value of an attribute in the text of a tag, quoted or not.
std::string Attribute(std::string_view tag, std::string_view name) {
    const std::string lower = LowerAsciiText(tag);
    std::size_t at = 0;
    while ((at = lower.find(name, at)) != std::string::npos) {
        const bool whole = at > 0 && std::isspace(static_cast<unsigned char>(lower[at - 1]));
        at = lower.find_first_not_of(" \t\r\n", at + name.size());
        if (at == std::string::npos) break;
        if (!whole || lower[at] != '=') continue;
        at = lower.find_first_not_of(" \t\r\n", at + 1);
        if (at == std::string::npos) break;
        const char quote = tag[at] == '"' || tag[at] == '\'' ? tag[at] : '\0';
        const std::size_t first = quote ? at + 1 : at;
        const std::size_t last = quote ? tag.find(quote, first) : tag.find_first_of(" \t\r\n>", first);
        return DecodeEntities(std::string(tag.substr(first, last == std::string_view::npos ? last : last - first)));
    }
    return {};
}

// The end of the tag that begins at `open`: a ">" outside quotes. A quote left open ends with the next ">".
std::size_t TagEnd(const std::string& html, std::size_t open) {
    char quote = '\0';
    for (std::size_t i = open; i < html.size(); ++i) {
        if (quote)
            quote = html[i] == quote ? '\0' : quote;
        else if (html[i] == '"' || html[i] == '\'')
            quote = html[i];
        else if (html[i] == '>')
            return i;
    }
    return html.find('>', open);
}

} // namespace

std::vector<HelpTopic> ParseHelpContents(const std::string& html) {
    std::vector<HelpTopic> topics;
    HelpTopic topic;
    bool inTopic = false;
    int level = 0;
    for (std::size_t open = html.find('<'); open != std::string::npos; open = html.find('<', open)) {
        const std::size_t close = TagEnd(html, open);
        if (close == std::string::npos) break;
        const std::string_view tag = std::string_view(html).substr(open + 1, close - open - 1);
        const std::string name = LowerAsciiText(tag.substr(0, tag.find_first_of(" \t\r\n/", 1)));
        open = close + 1;
        if (name == "ul") {
            ++level;
        } else if (name == "/ul") {
            level = std::max(0, level - 1);
        } else if (name == "object") {
            topic = {};
            inTopic = LowerAsciiText(Attribute(tag, "type")) == "text/sitemap";
        } else if (name == "param" && inTopic) {
            const std::string what = LowerAsciiText(Attribute(tag, "name"));
            if (what == "name" && topic.title.empty()) topic.title = Attribute(tag, "value");
            if (what == "local" && topic.page.empty()) topic.page = Attribute(tag, "value");
        } else if (name == "/object" && inTopic) {
            inTopic = false;
            if (topic.title.empty() || topics.size() >= kMostTopics) continue;
            const int deepest = topics.empty() ? 0 : std::min(topics.back().depth + 1, kDeepestTopic);
            topic.depth = std::clamp(level - 1, 0, deepest);
            topics.push_back(topic);
        }
    }
    return topics;
}

} // namespace korlan
