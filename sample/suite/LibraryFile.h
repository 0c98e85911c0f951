// The file format of the sample suite's libraries; see README.md. Files are hostile: everything is checked before use.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace suite {

enum class Kind : std::int32_t { Part = 1, Symbol = 2, Package = 3, Padstack = 4 };

struct Element { // texts are Windows-1252
    std::string name;
    std::string descriptor;
    std::string body;
};

struct LibraryFile {
    Kind kind = Kind::Part;
    std::vector<Element> elements;
    const Element* Find(std::string_view name) const; // null when there is none
    void Put(Element element);                        // in place of the one of that name, else at the end
};

struct LibraryFileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

bool SameName(std::string_view left, std::string_view right); // without regard to the case of A to Z
std::optional<Kind> KindOfExtension(std::string_view path);   // without regard to case

// The three that read or write raise LibraryFileError.
LibraryFile ParseLibrary(std::string_view bytes);
std::string LibraryBytes(const LibraryFile& library);
LibraryFile LoadLibrary(const std::string& path);
void SaveLibrary(const LibraryFile& library, const std::string& path); // the old file or the new one, never a part

} // namespace suite
