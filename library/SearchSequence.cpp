#include "library/SearchSequence.h"

#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "platform/IniFile.h"

#include <array>

namespace korlan {

namespace {

struct SequenceSections {
    const char* names;
    const char* flags;
};
constexpr SequenceSections kSections[] = {
    {"DEVLIBS", "KLN_DEVLIBS"}, {"SCHLIBS", "KLN_SCHLIBS"}, {"LAYLIBS", "KLN_LAYLIBS"}, {"PADLIBS", "KLN_PADLIBS"}};

std::array<SearchSequence, std::size(kSections)> sequences; // by kind - 1

LibraryFlag FlagFromValue(const std::string& value) {
    const std::int64_t comma = InStrRev(value, ",");
    if (comma == 0) return {value, 0};
    return {Left(value, comma - 1), Val(Mid(value, comma + 1))};
}

// `fromValue` makes an entry of a key's value.
template <typename Entry, typename FromValue>
void LoadList(Table<Entry>& list, const char* section, FromValue fromValue) {
    list.Clear();
    for (std::int32_t key = 1;; ++key) {
        const std::string value = ReadIniString(section, DecimalText(key), "");
        if (value.empty()) return;
        list.Append(fromValue(value));
    }
}

const std::string& NameOf(const std::string& name) {
    return name;
}
const std::string& NameOf(const LibraryFlag& flag) {
    return flag.name;
}

// Place of the name in the list, 0 = none.
template <typename Entry>
std::int32_t PlaceOf(const Table<Entry>& list, const std::string& libraryName) {
    const std::string sought = UpperCase(libraryName);
    for (std::int32_t i = 1; i <= list.UpperBound(); ++i)
        if (UpperCase(NameOf(list[i])) == sought) return i;
    return 0;
}

// The one way a name joins a list and its section; `value` is what the section gets.
template <typename Entry>
void AddToList(Table<Entry>& list, const char* section, const std::string& libraryName, Entry entry,
               const std::string& value) {
    if (PlaceOf(list, libraryName) != 0) return;
    list.Append(std::move(entry));
    WriteProfileValue(section, DecimalText(list.UpperBound()), value, Settings.IniFilePath);
}

void AddToSequence(const std::string& libraryName, std::int32_t kind) {
    SearchSequence& sequence = SequenceOf(kind);
    const SequenceSections& sections = kSections[kind - 1];
    const std::string name = UpperCase(libraryName);
    AddToList(sequence.names, sections.names, name, name, name);
    AddToList(sequence.flags, sections.flags, name, LibraryFlag{name, 1}, name + ",1");
}

} // namespace

SearchSequence& SequenceOf(std::int32_t kind) {
    if (kind < kPartKind || kind > kPadstackKind) throw RuntimeError(kErrSubscript);
    return sequences[static_cast<std::size_t>(kind - 1)];
}

void LoadSearchSequences() {
    for (std::int32_t kind = kPartKind; kind <= kPadstackKind; ++kind) {
        const SequenceSections& sections = kSections[kind - 1];
        LoadList(SequenceOf(kind).names, sections.names, [](const std::string& value) { return value; });
        LoadList(SequenceOf(kind).flags, sections.flags, FlagFromValue);
    }
}

void GetSSQNum(const std::string& libraryName, std::int32_t& position) {
    const Table<std::string>& names = SequenceOf(kPartKind).names;
    position = PlaceOf(names, libraryName);
    if (position != 0) return;
    position = names.UpperBound() + 1;
    AddToSequence(libraryName, kPartKind);
}

void UpdateLibSSQ(const std::string& libraryName, std::int32_t kind) {
    if (kind < kSymbolKind || kind > kPadstackKind) return;
    if (PlaceOf(SequenceOf(kind).names, libraryName) == 0) AddToSequence(libraryName, kind);
}

} // namespace korlan
