#include "sample/suite/LibraryFile.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <unordered_set>
#include <utility>

namespace suite {

namespace {

constexpr std::string_view kMagic("KLNLIB1\0", 8);
constexpr std::size_t kHeadSize = 28;
constexpr std::size_t kEntryHead = 12;
constexpr std::size_t kSmallestEntry = kEntryHead + 3; // a name of one byte and two zero bytes
constexpr std::size_t kLongestName = 255, kLongestDescriptor = 65535;
constexpr std::size_t kLongestFile = std::size_t{256} << 20;

// The bytes of a file; reading outside them raises an error.
class Reader {
public:
    explicit Reader(std::string_view bytes) : bytes_(bytes) {}

    std::string_view Range(std::size_t offset, std::size_t length) const {
        if (offset > bytes_.size() || length > bytes_.size() - offset) throw LibraryFileError("reaches past the end");
        return bytes_.substr(offset, length);
    }
    std::uint32_t Number(std::size_t offset, std::size_t size) const {
        const std::string_view digits = Range(offset, size);
        std::uint32_t value = 0;
        for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit)
            value = value << 8 | static_cast<unsigned char>(*digit);
        return value;
    }
    std::string Text(std::size_t offset, std::size_t length) const { // with a zero byte behind it and none inside
        const std::string_view text = Range(offset, length + 1);
        if (text.find('\0') != length) throw LibraryFileError("a text does not end where it says");
        return std::string(text.substr(0, length));
    }

private:
    std::string_view bytes_;
};

void AppendNumber(std::string& bytes, std::size_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
}

std::string Capitals(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return result;
}

struct Head {
    Kind kind;
    std::size_t count;
    std::size_t directory;
};

Head ReadHead(const Reader& file, std::size_t length) {
    if (file.Range(0, kMagic.size()) != kMagic || file.Number(12, 4) != 1) throw LibraryFileError("no library file");
    const std::uint32_t kind = file.Number(8, 4);
    if (kind < 1 || kind > 4) throw LibraryFileError("unknown kind");
    const Head head{static_cast<Kind>(kind), file.Number(16, 4), file.Number(20, 4)};
    if (file.Number(24, 4) != length) throw LibraryFileError("torn: the length is not the one it was written with");
    if (head.directory < kHeadSize || head.directory > length) throw LibraryFileError("directory outside the file");
    if (head.count > (length - head.directory) / kSmallestEntry) throw LibraryFileError("more elements than fit");
    return head;
}

using Places = std::vector<std::pair<std::size_t, std::size_t>>; // offset and length of the bodies

void RequireApart(Places& bodies) {
    std::sort(bodies.begin(), bodies.end());
    for (std::size_t i = 1; i < bodies.size(); ++i)
        if (bodies[i - 1].first + bodies[i - 1].second > bodies[i].first) throw LibraryFileError("bodies overlap");
}

} // namespace

bool SameName(std::string_view left, std::string_view right) {
    return Capitals(left) == Capitals(right);
}

std::optional<Kind> KindOfExtension(std::string_view path) {
    const std::string extension = Capitals(path.substr(std::min(path.rfind('.'), path.size())));
    if (extension == ".PART") return Kind::Part;
    if (extension == ".SYMBOL") return Kind::Symbol;
    if (extension == ".PACKAGE") return Kind::Package;
    if (extension == ".PADSTACK") return Kind::Padstack;
    return std::nullopt;
}

const Element* LibraryFile::Find(std::string_view name) const {
    for (const Element& element : elements)
        if (SameName(element.name, name)) return &element;
    return nullptr;
}

void LibraryFile::Put(Element element) {
    if (const Element* old = Find(element.name)) {
        elements[static_cast<std::size_t>(old - elements.data())] = std::move(element);
    } else {
        elements.push_back(std::move(element));
    }
}

LibraryFile ParseLibrary(std::string_view bytes) {
    const Reader file(bytes);
    const Head head = ReadHead(file, bytes.size());
    LibraryFile library{head.kind, {}};
    Places bodies;
    std::unordered_set<std::string> names;
    std::size_t at = head.directory;
    std::size_t room = head.directory - kHeadSize; // for the bodies not yet read; bounds what overlapping ones can take
    for (std::size_t i = 0; i < head.count; ++i) {
        const std::size_t body = file.Number(at, 4);
        const std::size_t bodyLength = file.Number(at + 4, 4);
        const std::size_t nameLength = file.Number(at + 8, 2);
        const std::size_t descriptorLength = file.Number(at + 10, 2);
        at += kEntryHead;
        if (body < kHeadSize || body > head.directory || bodyLength > head.directory - body)
            throw LibraryFileError("a body lies outside its place");
        if (bodyLength > room) throw LibraryFileError("bodies overlap");
        room -= bodyLength;
        if (nameLength == 0 || nameLength > kLongestName) throw LibraryFileError("a name of impossible length");
        Element element;
        element.name = file.Text(at, nameLength);
        element.descriptor = file.Text(at + nameLength + 1, descriptorLength);
        element.body = file.Range(body, bodyLength);
        at += nameLength + descriptorLength + 2;
        if (!names.insert(Capitals(element.name)).second) throw LibraryFileError("a name twice");
        if (bodyLength > 0) bodies.emplace_back(body, bodyLength);
        library.elements.push_back(std::move(element));
    }
    RequireApart(bodies);
    if (at != bytes.size()) throw LibraryFileError("something behind the directory");
    return library;
}

std::string LibraryBytes(const LibraryFile& library) {
    std::string bodies, directory;
    for (const Element& element : library.elements) {
        if (element.name.empty() || element.name.size() > kLongestName ||
            element.descriptor.size() > kLongestDescriptor)
            throw LibraryFileError("a text of impossible length: " + element.name);
        AppendNumber(directory, kHeadSize + bodies.size(), 4);
        AppendNumber(directory, element.body.size(), 4);
        AppendNumber(directory, element.name.size(), 2);
        AppendNumber(directory, element.descriptor.size(), 2);
        directory.append(element.name).append(1, '\0').append(element.descriptor).append(1, '\0');
        bodies += element.body;
    }
    const std::size_t length = kHeadSize + bodies.size() + directory.size();
    if (length > kLongestFile) throw LibraryFileError("too large");
    std::string bytes(kMagic);
    for (const std::size_t number : {static_cast<std::size_t>(library.kind), std::size_t{1}, library.elements.size(),
                                     kHeadSize + bodies.size(), length})
        AppendNumber(bytes, number, 4);
    return bytes + bodies + directory;
}

LibraryFile LoadLibrary(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) throw LibraryFileError("cannot open " + path); // a pipe waits
    std::ifstream file(path, std::ios::binary);
    if (!file || std::filesystem::file_size(path, error) > kLongestFile) throw LibraryFileError("cannot read " + path);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    return ParseLibrary(bytes);
}

void SaveLibrary(const LibraryFile& library, const std::string& path) {
    const std::string bytes = LibraryBytes(library);
    ParseLibrary(bytes); // names twice or with a zero byte would make a file that nobody reads
    const std::string temporary = path + ".new";
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    const bool opened = file.is_open();
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    std::error_code failed = std::make_error_code(std::errc::io_error);
    if (file) std::filesystem::rename(temporary, path, failed);
    if (!failed) return;
    if (opened) std::filesystem::remove(temporary, failed);
    throw LibraryFileError("cannot write " + path);
}

} // namespace suite
