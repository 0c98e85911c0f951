#include "platform/jet/JetWriter.h"

#include "platform/DatabaseError.h"
#include "platform/TextEncoding.h"
#include "platform/jet/JetFile.h"
#include "platform/jet/Rc4.h"
#include "platform/jet/TableDefinition.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <iterator>
#include <optional>

namespace korlan::jet {

namespace {

using namespace std::literals;

constexpr std::size_t kPage = 2048;
constexpr std::size_t kRowsAt = 10;       // the rows' offsets, on a data page
constexpr std::size_t kMostRows = 255;    // of a page: a row's number is one byte
constexpr std::size_t kMapBytes = 128;    // of a usage map that is kept in its row
constexpr std::size_t kBitmapAt = 4;      // on a page of its own
constexpr std::uint32_t kSystemPages = 6; // header, free pages, four system tables
constexpr std::size_t kLongestRow = kPage - kRowsAt - 2;
constexpr std::uint16_t kCodePage = 1252, kLocale = 0x409;

void Append(std::string& out, std::uint64_t number, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i) out += static_cast<char>(number >> 8 * i & 0xFF);
}

std::string Number(std::uint64_t number, std::size_t width) {
    std::string bytes;
    Append(bytes, number, width);
    return bytes;
}

void Put(std::string& page, std::size_t at, std::string_view bytes) {
    page.replace(at, bytes.size(), bytes);
}

// ---- rows ----

struct NewColumn {
    std::string_view name;
    ColumnType type;

    bool IsLong() const { return type == ColumnType::Memo || type == ColumnType::Ole; }
    bool IsFixed() const { return !IsLong() && type != ColumnType::Text && type != ColumnType::Binary; }
    std::size_t Size() const { // in the fixed part of a row; what a variable column declares
        switch (type) {
        case ColumnType::YesNo: return 0;
        case ColumnType::Byte: return 1;
        case ColumnType::Integer: return 2;
        case ColumnType::Long: return 4;
        case ColumnType::Date: return 8;
        default: return IsLong() ? 0 : kLongestText;
        }
    }
};

using NewColumns = std::vector<NewColumn>;
using Values = std::vector<std::optional<std::string>>; // as they are stored; none is NULL

// One byte an offset does not reach beyond 255: from there on a jump table names the first offset of each 256 bytes.
std::string OffsetTable(const std::vector<std::size_t>& offsets, std::size_t maskSize) {
    const std::size_t size = offsets.back() + offsets.size() + 1 + maskSize;
    std::size_t jumps = 0;
    while ((size + jumps - 1) / 256 > jumps) ++jumps;
    std::string table;
    for (auto offset = offsets.rbegin(); offset != offsets.rend(); ++offset) Append(table, *offset & 0xFF, 1);
    for (std::size_t k = jumps; k > 0; --k) {
        const auto first = std::ranges::find_if(offsets, [&](std::size_t offset) { return offset >= 256 * k; });
        Append(table, first == offsets.end() ? 0xFF : static_cast<std::size_t>(first - offsets.begin()), 1);
    }
    Append(table, offsets.size() - 1, 1);
    return table;
}

std::string RowBytes(const NewColumns& columns, const Values& values) {
    std::string row(1, static_cast<char>(columns.size())), mask((columns.size() + 7) / 8, '\0');
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].IsFixed()) row += values[i].value_or(std::string(columns[i].Size(), '\0'));
        if (values[i]) mask[i / 8] = static_cast<char>(mask[i / 8] | 1 << i % 8);
    }
    std::vector<std::size_t> offsets;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].IsFixed()) continue;
        offsets.push_back(row.size());
        row += values[i].value_or("");
    }
    offsets.push_back(row.size()); // the end of the data
    return row + OffsetTable(offsets, mask.size()) + mask;
}

// ---- pages ----

class FileBuilder {
public:
    FileBuilder() : pages_(kSystemPages, std::string(kPage, '\0')) {}

    // `valuesOf` makes the stored values of one of the rows.
    template <class Rows, class ValuesOf>
    void AddTable(std::string_view name, const NewColumns& columns, const Rows& rows, ValuesOf valuesOf,
                  std::uint32_t page = 0) {
        const bool system = page != 0;
        if (!system) page = NewPage();
        std::vector<std::uint32_t> used;
        for (const auto& entry : rows) {
            const std::string row = RowBytes(columns, valuesOf(entry));
            if (row.size() > kLongestRow) throw RuntimeError(kErrRecordTooLarge, "A row longer than a page");
            if (used.empty() || PutRow(used.back(), page, row) == 0) {
                used.push_back(NewPage());
                PutRow(used.back(), page, row);
            }
        }
        Put(pages_[page], 0, Definition(columns, rows.size(), used, system));
        objects_.push_back({name, page, system});
    }

    std::string Finish();

private:
    struct Object {
        std::string_view name;
        std::uint32_t page;
        bool system;
    };

    std::uint32_t NewPage() {
        if ((pages_.size() + 1) * kPage > kLargestFile)
            throw RuntimeError(kErrDiskIsFull, "Too many rows: the database would outgrow the " +
                                                   std::to_string(kLargestFile >> 20) + " MB that are read");
        pages_.emplace_back(kPage, '\0');
        return static_cast<std::uint32_t>(pages_.size() - 1);
    }

    // A pointer to the row, 0 when the page has no room for it.
    std::uint32_t PutRow(std::uint32_t number, std::uint32_t owner, std::string_view row);
    std::uint32_t AddUsageMap(const std::vector<std::uint32_t>& pages);
    std::uint32_t AddBitmap(const std::vector<std::uint32_t>& pages, char bit);
    void AddFreePages();
    std::string Definition(const NewColumns& columns, std::size_t rows, const std::vector<std::uint32_t>& used,
                           bool system);
    std::vector<Values> ObjectRows() const;
    void AddHeader();

    std::vector<std::string> pages_;
    std::vector<Object> objects_;
    std::uint32_t mapPage_ = 0;
};

std::uint32_t FileBuilder::PutRow(std::uint32_t number, std::uint32_t owner, std::string_view row) {
    std::string& page = pages_[number];
    if (page[0] == '\0') Put(page, 0, "\1\1"s + Number(0, 2) + Number(owner, 4) + Number(0, 2));
    const ByteView view(page);
    const std::size_t count = view.U16(8), end = count == 0 ? kPage : view.U16(kRowsAt + 2 * (count - 1));
    const std::size_t table = kRowsAt + 2 * (count + 1);
    if (count >= kMostRows || row.size() + table > end) return 0;
    const std::size_t start = end - row.size();
    Put(page, start, row);
    Put(page, kRowsAt + 2 * count, Number(start, 2));
    Put(page, 8, Number(count + 1, 2));
    Put(page, 2, Number(start - table, 2)); // what is left
    return number << 8 | static_cast<std::uint32_t>(count);
}

void FlipBit(std::string& bits, std::size_t at, std::size_t bit) {
    char& byte = bits[at + bit / 8];
    byte = static_cast<char>(byte ^ 1 << bit % 8);
}

// A bitmap page reaches further than the largest file, so there is one a map.
std::uint32_t FileBuilder::AddBitmap(const std::vector<std::uint32_t>& pages, char fill) {
    static_assert((kPage - kBitmapAt) * 8 * kPage > kLargestFile);
    const std::uint32_t number = NewPage();
    std::string& bitmap = pages_[number];
    Put(bitmap, 0, "\5\1\0\0"s + std::string(kPage - kBitmapAt, fill));
    for (const std::uint32_t page : pages) FlipBit(bitmap, kBitmapAt, page);
    return number;
}

// The pages of a table, or of a long column: in the map's own row while they lie close together.
std::uint32_t FileBuilder::AddUsageMap(const std::vector<std::uint32_t>& pages) {
    std::string row;
    const std::uint32_t first = pages.empty() ? 0 : pages.front() & ~7U;
    if (pages.empty() || pages.back() - first < kMapBytes * 8) {
        row = "\0"s + Number(first, 4) + std::string(kMapBytes, '\0');
        for (const std::uint32_t page : pages) FlipBit(row, 5, page - first);
    } else {
        row = "\1"s + Number(AddBitmap(pages, '\0'), 4) + std::string(kMapBytes, '\0');
    }
    std::uint32_t pointer = mapPage_ == 0 ? 0 : PutRow(mapPage_, 0, row);
    if (pointer == 0) pointer = PutRow(mapPage_ = NewPage(), 0, row);
    return pointer;
}

std::string FileBuilder::Definition(const NewColumns& columns, std::size_t rows, const std::vector<std::uint32_t>& used,
                                    bool system) {
    std::string descriptors, names, tail;
    std::size_t variable = 0, offset = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const NewColumn& column = columns[i];
        const bool isFixed = column.IsFixed(), isYesNo = column.type == ColumnType::YesNo;
        descriptors += static_cast<char>(column.type);
        for (const std::size_t field : {i, variable, i, std::size_t{1}, std::size_t{kLocale}, std::size_t{kCodePage}})
            Append(descriptors, field, 2);
        Append(descriptors, (isFixed ? 3U : 2U) | (system ? 0x10U : 0U), 1);
        Append(descriptors, isFixed ? offset : 0, 2);
        Append(descriptors, isYesNo ? 1 : column.Size(), 2);
        names += static_cast<char>(column.name.size());
        names += column.name;
        (isFixed ? offset : variable) += isFixed ? column.Size() : 1;
        if (!column.IsLong()) continue;
        const std::uint32_t map = AddUsageMap({});
        tail += Number(i, 2) + Number(map, 4) + Number(map, 4);
    }
    std::vector<std::uint32_t> withRoom(used.end() - (used.empty() ? 0 : 1), used.end());
    const std::uint32_t owned = AddUsageMap(used), room = AddUsageMap(withRoom);
    const std::string body = Number(rows, 4) + Number(0, 4) + (system ? "\x53" : "\x4E") + Number(columns.size(), 2) +
                             Number(variable, 2) + Number(columns.size(), 2) + Number(0, 8) + Number(owned, 4) +
                             Number(room, 4) + descriptors + names + tail + "\xFF\xFF";
    const std::string head = "\2\1VC"s + Number(0, 4) + Number(body.size() + 12, 4);
    if (head.size() + body.size() > kPage) throw RuntimeError(kErrRecordTooLarge, "Too many columns");
    return head + body;
}

// ---- the system's own tables ----

struct SystemTable {
    std::uint32_t page;
    std::string_view name;
    NewColumns columns;
};

using enum ColumnType;
const std::vector<SystemTable> kSystemTables = {
    {3, "MSysACEs", {{"ObjectId", Long}, {"SID", Binary}, {"ACM", Long}, {"FInheritable", YesNo}}},
    {4,
     "MSysQueries",
     {{"ObjectId", Long},
      {"Attribute", Byte},
      {"Order", Binary},
      {"Name1", Text},
      {"Name2", Text},
      {"Expression", Memo},
      {"Flag", Integer}}},
    {5,
     "MSysRelationships",
     {{"szRelationship", Text},
      {"grbit", Long},
      {"ccolumn", Long},
      {"icolumn", Long},
      {"szObject", Text},
      {"szColumn", Text},
      {"szReferencedObject", Text},
      {"szReferencedColumn", Text}}},
    {2,
     "MSysObjects",
     {{"Id", Long},
      {"ParentId", Long},
      {"Name", Text},
      {"Type", Integer},
      {"DateCreate", Date},
      {"DateUpdate", Date},
      {"Owner", Binary},
      {"Flags", Long},
      {"Database", Memo},
      {"Connect", Memo},
      {"ForeignName", Text},
      {"RmtInfoShort", Binary},
      {"RmtInfoLong", Ole},
      {"Lv", Ole},
      {"LvProp", Ole},
      {"LvModule", Ole},
      {"LvExtra", Ole}}},
};

std::vector<Values> FileBuilder::ObjectRows() const {
    constexpr std::uint32_t kSystemFlag = 0x80000000, kTables = 0x0F000001, kDatabases = 0x0F000002;
    constexpr double kCreated = 38013; // 2004-01-27: a date of its own would make every file another
    const std::string created = Number(std::bit_cast<std::uint64_t>(kCreated), 8);
    std::vector<Values> rows;
    const auto add = [&](std::uint32_t id, std::uint32_t parent, std::string_view name, std::uint16_t type, bool system,
                         const char* owner) {
        Values& row = rows.emplace_back(kSystemTables.back().columns.size());
        row[0] = Number(id, 4), row[1] = Number(parent, 4), row[2] = name, row[3] = Number(type, 2);
        row[4] = row[5] = created;
        row[6] = owner, row[7] = Number(system ? kSystemFlag : 0, 4);
    };
    constexpr auto kEngine = "\2\3", kUser = "\3\1";
    for (const auto& [id, name] :
         {std::pair{kTables, "Tables"}, {kDatabases, "Databases"}, {0x0F000003U, "Relationships"}})
        add(id, 0x0F000000, name, 3, true, kEngine);
    add(0x10000000, kDatabases, "MSysDb", 2, true, kUser);
    add(2, kTables, "MSysObjects", 1, true, kEngine);
    for (const Object& object : objects_)
        add(object.page, kTables, object.name, 1, object.system, object.system ? kEngine : kUser);
    return rows;
}

// Page 1: a set bit is a page free to use, so all behind the end of the file are.
void FileBuilder::AddFreePages() {
    std::string row = "\0"s + Number(0, 4) + std::string(kMapBytes, '\xFF');
    const std::uint32_t bitmap = pages_.size() > kMapBytes * 8 ? AddBitmap({}, '\xFF') : 0;
    for (std::uint32_t page = 0; page < pages_.size(); ++page)
        bitmap == 0 ? FlipBit(row, 5, page) : FlipBit(pages_[bitmap], kBitmapAt, page);
    if (bitmap != 0) row = "\1"s + Number(bitmap, 4) + std::string(kMapBytes, '\0');
    PutRow(1, 1, row);
    PutRow(1, 1, "\0"s + Number(0, 4) + std::string(kMapBytes, '\0'));
}

// A middle part of the header lies under a fixed key.
void FileBuilder::AddHeader() {
    constexpr std::size_t kMaskedAt = 0x18, kLocaleAt = 0x38, kFillAt = 0x600;
    std::string masked = "\0\1\0\0\1\1\0\0"s;
    for (const std::uint32_t page : {2U, 3U, 4U, 5U}) Append(masked, page, 4);
    masked.resize(kLocaleAt - kMaskedAt);
    masked += Number(1, 2) + Number(kLocale, 2) + Number(kCodePage, 2);
    masked.resize(126);
    ApplyRc4("\xC7\xDA\x39\x6B", masked.data(), masked.size());
    Put(pages_[0], 0, "\0\1\0\0Standard Jet DB\0"s + Number(0, 4) + masked);
    for (std::size_t at = kFillAt; at < kPage; at += 2) Put(pages_[0], at, "\0\1"s);
}

std::string FileBuilder::Finish() {
    for (const SystemTable& table : kSystemTables) {
        const bool isCatalogue = table.page == 2; // the last: it lists the others
        AddTable(table.name, table.columns, isCatalogue ? ObjectRows() : std::vector<Values>(), std::identity(),
                 table.page);
    }
    AddFreePages();
    AddHeader();
    std::string file;
    file.reserve(pages_.size() * kPage);
    for (const std::string& page : pages_) file += page;
    return file;
}

std::optional<std::string> StoredText(const std::string& text) {
    if (text.empty()) return std::nullopt;
    if (!FitsCodePage(text)) throw RuntimeError(kErrNotInCodePage, "Code page 1252 cannot hold: " + text);
    std::string bytes = BytesFromText(text);
    if (bytes.size() > kLongestText)
        throw RuntimeError(kErrTextTooLong, "Longer than its column of 255 characters: " + text);
    return bytes;
}

} // namespace

bool FitsCodePage(const std::string& text) {
    return TextFromCodePage(BytesFromText(text)) == text;
}

std::string Jet3FileOf(const TextTable& table) {
    NewColumns columns;
    for (const std::string& name : table.columns) columns.push_back({name, ColumnType::Text});
    const auto valuesOf = [&](const std::vector<std::string>& texts) {
        if (texts.size() != columns.size()) throw RuntimeError(kErrRecordTooLarge, "A row of other columns");
        Values values;
        std::ranges::transform(texts, std::back_inserter(values), StoredText);
        return values;
    };
    FileBuilder builder;
    builder.AddTable(table.name, columns, table.rows, valuesOf);
    return builder.Finish();
}

} // namespace korlan::jet
