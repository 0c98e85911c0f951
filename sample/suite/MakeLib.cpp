// kln-makelib: writes a library file from a text, and prints one in the same form. See README.md.
#include "platform/TextEncoding.h"
#include "sample/suite/LibraryFile.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <string>

namespace {

constexpr char kSeparator = '\x80';

std::string EightBit(const std::string& utf8) {
    std::string bytes = korlan::BytesFromText(utf8);
    if (korlan::TextFromCodePage(bytes) != utf8) throw suite::LibraryFileError("not in Windows-1252: " + utf8);
    return bytes;
}

std::string CutAtTab(std::string& rest) {
    const std::size_t tab = rest.find('\t');
    std::string piece = rest.substr(0, tab);
    rest.erase(0, tab == std::string::npos ? tab : tab + 1);
    return piece;
}

suite::Element ElementFromLine(std::string line) {
    suite::Element element;
    element.name = EightBit(CutAtTab(line));
    element.descriptor = EightBit(CutAtTab(line));
    std::replace(element.descriptor.begin(), element.descriptor.end(), '|', kSeparator);
    element.body = line;
    return element;
}

void Make(const std::string& description, const std::string& libraryPath) {
    const auto kind = suite::KindOfExtension(libraryPath);
    if (!kind) throw suite::LibraryFileError("no library extension: " + libraryPath);
    std::ifstream text(description);
    if (!text) throw suite::LibraryFileError("cannot read " + description);
    suite::LibraryFile library{*kind, {}};
    for (std::string line; std::getline(text, line);) {
        if (line.ends_with('\r')) line.pop_back();
        if (!line.empty() && line.front() != '#') library.elements.push_back(ElementFromLine(line));
    }
    suite::SaveLibrary(library, libraryPath);
}

void List(const std::string& libraryPath) {
    for (suite::Element& element : suite::LoadLibrary(libraryPath).elements) {
        std::replace(element.descriptor.begin(), element.descriptor.end(), kSeparator, '|');
        std::cout << korlan::TextFromCodePage(element.name) << '\t' << korlan::TextFromCodePage(element.descriptor)
                  << '\t' << element.body << '\n';
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: kln-makelib DESCRIPTION LIBRARY | --list LIBRARY\n";
        return 2;
    }
    try {
        if (std::string(argv[1]) == "--list")
            List(argv[2]);
        else
            Make(argv[1], argv[2]);
        return 0;
    } catch (const suite::LibraryFileError& error) {
        std::cerr << "kln-makelib: " << error.what() << '\n';
        return 1;
    }
}
