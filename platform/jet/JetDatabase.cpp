#include "platform/jet/JetDatabase.h"

#include "platform/FieldNames.h"
#include "platform/SqlText.h"
#include "platform/jet/ValueText.h"

namespace korlan::jet {

JetTable::JetTable(std::shared_ptr<const JetFile> file, TableDefinition definition)
    : file_(std::move(file)), definition_(std::move(definition)), budget_(file_->Size()),
      rows_(ReadTableRows(*file_, definition_, budget_)), cells_(definition_.columns.size()) {}

std::optional<std::string_view> JetTable::Value(std::size_t row, std::size_t column) {
    std::unique_ptr<Cells>& cells = cells_.at(column);
    if (!cells) cells = Convert(definition_.columns[column]);
    if (cells->isNull.at(row)) return std::nullopt;
    const std::uint32_t start = row == 0 ? 0 : cells->ends[row - 1];
    return std::string_view(cells->texts).substr(start, cells->ends[row] - start);
}

std::unique_ptr<JetTable::Cells> JetTable::Convert(const Column& column) {
    constexpr std::size_t kCellCost = sizeof(std::uint32_t) + 1;
    auto cells = std::make_unique<Cells>();
    cells->ends.reserve(rows_.size());
    cells->isNull.reserve(rows_.size());
    for (const ByteView row : rows_) {
        const std::size_t before = cells->texts.size();
        bool isNull = false;
        if (column.type == ColumnType::YesNo) {
            cells->texts.append(YesNoText(YesNoOfRow(file_->PageLayout(), row, column)));
        } else if (const auto field = FieldOfRow(file_->PageLayout(), definition_, row, column)) {
            AppendValue(cells->texts, *file_, column, *field, budget_);
        } else {
            isNull = true;
        }
        budget_.Spend(cells->texts.size() - before + kCellCost);
        cells->ends.push_back(static_cast<std::uint32_t>(cells->texts.size()));
        cells->isNull.push_back(isNull);
    }
    return cells;
}

namespace {

constexpr std::uint32_t kCataloguePage = 2;
constexpr std::uint16_t kLocalTable = 1; // linked tables, queries, folders of documents have other types

// A number of the catalogue; nothing when NULL.
std::optional<ByteView> CatalogueField(const JetFile& file, const TableDefinition& catalogue, ByteView row,
                                       std::string_view name, ColumnType type) {
    for (const Column& column : catalogue.columns) {
        if (!SameName(column.name, name)) continue;
        Require(column.type == type, "a catalogue of another form");
        return FieldOfRow(file.PageLayout(), catalogue, row, column);
    }
    Damaged("a catalogue of another form");
}

std::uint32_t DefinitionPage(const JetFile& file, std::string_view name) {
    const TableDefinition catalogue = ReadTableDefinition(file, kCataloguePage);
    WorkBudget budget(file.Size());
    for (const ByteView row : ReadTableRows(file, catalogue, budget)) {
        const auto type = CatalogueField(file, catalogue, row, "Type", ColumnType::Integer);
        if (!type || type->U16(0) != kLocalTable) continue;
        const auto stored = CatalogueField(file, catalogue, row, "Name", ColumnType::Text);
        std::string known;
        if (stored) file.AppendValueText(known, stored->Chars());
        if (!SameName(known, name)) continue;
        const auto id = CatalogueField(file, catalogue, row, "Id", ColumnType::Long);
        Require(id.has_value(), "a table without a definition");
        return id->U32(0) & 0xFFFFFF;
    }
    throw RuntimeError(kErrNoSuchTable, "The database engine cannot find the input table '" + std::string(name) + "'");
}

[[noreturn]] void RefuseWriting() {
    throw RuntimeError(kErrReadOnlyDatabase, "Cannot update. Database or object is read-only");
}

class JetRecordset final : public Recordset {
public:
    explicit JetRecordset(JetTable table) : table_(std::move(table)), names_(NamesOf(table_)) {}

    bool Eof() const override { return row_ >= table_.RowCount(); }
    std::string Text(const std::string& column) const override {
        const std::size_t index = names_.Index(column);
        if (Eof()) throw RuntimeError(kErrNoCurrentRecord, "No current record");
        return std::string(table_.Value(row_, index).value_or(std::string_view()));
    }
    void MoveNext() override {
        if (Eof()) throw RuntimeError(kErrNoCurrentRecord, "No current record");
        ++row_;
    }
    void AddNew() override { RefuseWriting(); }
    void Edit() override { RefuseWriting(); }
    void SetText(const std::string&, const std::string&) override { RefuseWriting(); }
    void SetNumber(const std::string&, std::int32_t) override { RefuseWriting(); }
    void Update() override { RefuseWriting(); }
    void Close() override { row_ = table_.RowCount(); }

private:
    static std::vector<std::string> NamesOf(const JetTable& table) {
        std::vector<std::string> names;
        for (const Column& column : table.Columns()) names.push_back(column.name);
        return names;
    }

    mutable JetTable table_; // converts columns as they are asked for
    FieldNames names_;
    std::size_t row_ = 0;
};

class JetDatabase final : public Database {
public:
    explicit JetDatabase(std::shared_ptr<const JetFile> file) : file_(std::move(file)) {}

    std::unique_ptr<Recordset> OpenRecordset(const std::string& tableOrSql) override {
        const std::optional<std::string> table = WholeTableOf(tableOrSql);
        if (!table) throw RuntimeError(kErrOperationNotSupported, "Operation is not supported: " + tableOrSql);
        return std::make_unique<JetRecordset>(OpenJetTable(file_, *table));
    }
    bool Updatable() const override { return false; }
    void Execute(const std::string&) override { RefuseWriting(); }
    void BeginTrans() override {}
    void CommitTrans() override {}
    void Rollback() override {}

private:
    std::shared_ptr<const JetFile> file_;
};

// What stands behind "pwd=" up to the next semicolon.
std::string_view PasswordOf(std::string_view connect) {
    while (!connect.empty()) {
        const std::string_view part = connect.substr(0, connect.find(';'));
        if (SameName(part.substr(0, 4), "pwd=")) return part.substr(4);
        connect.remove_prefix(std::min(connect.size(), part.size() + 1));
    }
    return {};
}

} // namespace

JetTable OpenJetTable(std::shared_ptr<const JetFile> file, std::string_view name) {
    TableDefinition definition = ReadTableDefinition(*file, DefinitionPage(*file, name));
    return JetTable(std::move(file), std::move(definition));
}

bool LooksLikeJet(std::string_view startOfFile) {
    using namespace std::literals;
    return startOfFile.starts_with("\0\1\0\0Standard "sv);
}

std::unique_ptr<Database> OpenJetDatabase(std::string bytes, const std::string& connect, CodePageDecoder decoder) {
    auto file = std::make_shared<const JetFile>(std::move(bytes), decoder);
    if (!file->Password().empty() && file->Password() != PasswordOf(connect))
        throw RuntimeError(kErrBadPassword, "Not a valid password");
    return std::make_unique<JetDatabase>(std::move(file));
}

} // namespace korlan::jet
