// The contents of a compiled help file, read whole into memory. No toolkit here.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korlan {

struct HelpTopic {
    std::string title; // UTF-8
    std::string page;  // as Find takes it, with "#anchor" behind it where it has one; empty for a mere heading
    int depth = 0;     // 0 = outermost; at most one more than that of the topic before it
};

struct CompiledHelp {
    std::string title;                          // UTF-8, may be empty
    std::string defaultPage;                    // the page shown first; a page of the file
    std::vector<HelpTopic> topics;              // the contents in reading order, may be empty
    std::map<std::string, std::string> objects; // bytes by path: lower case, no slash in front

    // The bytes of a page, a picture or a style sheet; null when the file has none of that path. Case and a slash in
    // front do not count.
    const std::string* Find(const std::string& path) const;
};

// Reads the file of that host path. Nothing when it is missing, damaged, has no page, or holds more than 20,000
// objects. Objects beyond 32 times the size of the file (at least 1 MB, at most 64 MB) are left out.
std::optional<CompiledHelp> ReadCompiledHelp(const std::string& hostPath);

// The topics of a contents file: nested lists of objects, each with a name and a page. Tolerates any text; `html` is
// UTF-8.
std::vector<HelpTopic> ParseHelpContents(const std::string& html);

} // namespace korlan
