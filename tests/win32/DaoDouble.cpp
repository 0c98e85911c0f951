// A database engine for late binding. A database is a text file: its columns in the first line, a row a line, values
// parted by tabulators, "%N" for NULL; its one table is PartFields, its password kqz. It raises the real engine's
// numbers.
#include "platform/AsciiText.h"
#include "platform/SqlText.h"
#include "platform/TextEncoding.h"
#include "tests/win32/Doubles.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <vector>

namespace doubles {
namespace {

using Arguments = std::vector<std::wstring>; // in the order of the call
using Answer = std::function<VARIANT(const Arguments&)>;

struct EngineError {
    int number;
};

VARIANT Nothing() {
    return {};
}
VARIANT Yes(bool yes) {
    VARIANT value{};
    value.vt = VT_BOOL, value.boolVal = yes ? VARIANT_TRUE : VARIANT_FALSE;
    return value;
}
VARIANT Text(const std::wstring& text) {
    VARIANT value{};
    value.vt = text == L"%N" ? VT_NULL : VT_BSTR;
    if (value.vt == VT_BSTR) value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return value;
}
// As the engine gives it: SSQNum is a column of whole numbers, Price one of others.
VARIANT Typed(const std::wstring& column, const std::wstring& text) {
    VARIANT value = Text(text);
    const VARTYPE type = column == L"SSQNum" ? VT_I4 : column == L"Price" ? VT_R8 : VT_BSTR;
    if (value.vt == VT_BSTR) VariantChangeTypeEx(&value, &value, 0x0409, 0, type);
    return value;
}
VARIANT Object(IDispatch* object) {
    VARIANT value{};
    value.vt = VT_DISPATCH, value.pdispVal = object;
    return value;
}

// Members by name; "Value=" is the putting of Value.
class Dispatch : public Counted<IDispatch> {
public:
    Dispatch() : Counted(IID_IDispatch) {}
    STDMETHODIMP GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* identifier) override {
        const auto found = std::ranges::find(names_, std::wstring(*names));
        *identifier = static_cast<DISPID>(found - names_.begin()) + 1;
        return found == names_.end() ? DISP_E_UNKNOWNNAME : S_OK;
    }
    STDMETHODIMP Invoke(DISPID identifier, REFIID, LCID, WORD kind, DISPPARAMS* given, VARIANT* result,
                        EXCEPINFO* exception, UINT*) override {
        Arguments arguments;
        for (UINT i = given->cArgs; i-- > 0;) {
            VARIANT text{};
            VariantChangeTypeEx(&text, &given->rgvarg[i], 0x0409, VARIANT_ALPHABOOL, VT_BSTR);
            arguments.emplace_back(text.bstrVal ? text.bstrVal : L"");
            VariantClear(&text);
        }
        const std::wstring name = names_[static_cast<std::size_t>(identifier - 1)];
        try {
            const VARIANT answer = members_.at(kind == DISPATCH_PROPERTYPUT ? name + L"=" : name)(arguments);
            if (result) *result = answer;
            return S_OK;
        } catch (const EngineError& error) {
            exception->scode = static_cast<SCODE>(0x800A0000u | static_cast<unsigned>(error.number));
            exception->bstrDescription = SysAllocString(L"the engine refuses");
            return DISP_E_EXCEPTION;
        }
    }

protected:
    void On(const std::wstring& name, Answer answer) {
        members_[name] = std::move(answer);
        names_.push_back(name);
    }

private:
    std::vector<std::wstring> names_;
    std::map<std::wstring, Answer> members_;
};

std::wstring Wide(const std::string& utf8) {
    std::wstring wide(utf8.size(), 0);
    wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()),
                                                             wide.data(), static_cast<int>(wide.size()))));
    return wide;
}
std::string Narrow(const std::wstring& wide) {
    std::string utf8(wide.size() * 3, 0);
    utf8.resize(
        static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()),
                                                     utf8.data(), static_cast<int>(utf8.size()), nullptr, nullptr)));
    return utf8;
}
bool Same(const std::wstring& a, const std::wstring& b) {
    return lstrcmpiW(a.c_str(), b.c_str()) == 0;
}

using Row = std::vector<std::wstring>;

struct Table {
    std::filesystem::path path;
    Row columns;
    std::vector<Row> rows;

    static Row Split(const std::wstring& line) {
        Row row(1);
        for (const wchar_t c : line) c == L'\t' ? void(row.emplace_back()) : void(row.back() += c);
        return row;
    }
    void Load() {
        std::ifstream file(path, std::ios::binary);
        rows.clear();
        std::string line;
        if (!file || !std::getline(file, line)) throw EngineError{3343};
        columns = Split(Wide(line));
        while (std::getline(file, line)) rows.push_back(Split(Wide(line)));
        if (columns.front() != L"Name") throw EngineError{3343};
    }
    void Save() const {
        std::ofstream file(path, std::ios::binary | std::ios::trunc);
        const auto write = [&](const Row& row) {
            for (std::size_t i = 0; i < row.size(); ++i) file << (i > 0 ? "\t" : "") << Narrow(row[i]);
            file << '\n';
        };
        write(columns);
        for (const Row& row : rows) write(row);
    }
    std::size_t Column(const std::wstring& name, int error) const {
        const auto found = std::ranges::find_if(columns, [&](const auto& column) { return Same(column, name); });
        if (found == columns.end()) throw EngineError{error};
        return static_cast<std::size_t>(found - columns.begin());
    }
};

struct Store { // of all databases that are open
    std::map<std::wstring, Table> tables;
    std::optional<std::map<std::wstring, Table>> before; // while a transaction lasts

    void Written(const Table& table) const {
        if (!before) table.Save();
    }
};
Store store;

// The rows that the WHERE clause chooses: comparisons with texts, joined by AND.
std::vector<std::size_t> Choose(const Table& table, const std::string& sql) {
    std::vector<korlan::SqlToken> tokens = korlan::SplitSql(sql);
    std::erase_if(tokens, [](const korlan::SqlToken& token) {
        return token.kind == korlan::SqlKind::Space || token.text == "(" || token.text == ")" || token.text == ";";
    });
    const auto word = [&](std::size_t i) {
        return Wide(i < tokens.size() ? std::string(korlan::Trimmed(tokens[i].text, "[]")) : "");
    };
    if (tokens.size() < 3 || !Same(word(tokens[2].text == "FROM" || tokens[2].text == "from" ? 3 : 2), L"PartFields"))
        throw EngineError{3078};
    std::vector<std::pair<std::size_t, std::wstring>> conditions;
    for (std::size_t i = 5; i < tokens.size(); i += 4) { // behind WHERE: name = 'text' AND ...
        const std::size_t column = table.Column(word(i), 3061);
        if (word(i + 1) != L"=" || i + 2 >= tokens.size() || tokens[i + 2].kind != korlan::SqlKind::Text ||
            (i + 3 < tokens.size() && !Same(word(i + 3), L"AND")))
            throw EngineError{3075};
        const std::wstring text = word(i + 2);
        conditions.emplace_back(column, text.substr(1, text.size() - 2));
    }
    std::vector<std::size_t> chosen;
    for (std::size_t i = 0; i < table.rows.size(); ++i)
        if (std::ranges::all_of(conditions, [&](const auto& c) { return Same(table.rows[i][c.first], c.second); }))
            chosen.push_back(i);
    return chosen;
}

class Rows : public Dispatch {
public:
    Rows(Table& table, std::vector<std::size_t> chosen) : table_(table), chosen_(std::move(chosen)) {
        On(L"EOF", [this](const Arguments&) { return Yes(at_ >= chosen_.size()); });
        On(L"MoveNext", [this](const Arguments&) { return Current(), ++at_, changing_.reset(), Nothing(); });
        On(L"AddNew", [this](const Arguments&) {
            return changing_.emplace(table_.columns.size(), L"%N"), isNew_ = true, Nothing();
        });
        On(L"Edit", [this](const Arguments&) { return changing_ = Current(), isNew_ = false, Nothing(); });
        On(L"Update", [this](const Arguments&) { return Update(), Nothing(); });
        On(L"Close", [](const Arguments&) { return Nothing(); });
        On(L"Fields", [this](const Arguments&) { return Object(new Fields(*this)); });
    }

private:
    class Field : public Dispatch {
    public:
        Field(Rows& rows, std::size_t column) : rows_(rows) {
            rows.AddRef();
            On(L"Value", [this, column](const Arguments&) {
                return Typed(rows_.table_.columns[column], rows_.Current()[column]);
            });
            On(L"Value=", [this, column](const Arguments& given) {
                if (!rows_.changing_) throw EngineError{3020};
                return (*rows_.changing_)[column] = given.at(0), Nothing();
            });
        }
        ~Field() override { rows_.Release(); }

    private:
        Rows& rows_;
    };
    class Fields : public Dispatch {
    public:
        explicit Fields(Rows& rows) : rows_(rows) {
            rows.AddRef();
            On(L"Item", [this](const Arguments& given) {
                return Object(new Field(rows_, rows_.table_.Column(given.at(0), 3265)));
            });
        }
        ~Fields() override { rows_.Release(); }

    private:
        Rows& rows_;
    };

    Row& Current() {
        if (at_ >= chosen_.size()) throw EngineError{3021};
        return table_.rows[chosen_[at_]];
    }
    void Update() {
        if (!changing_) throw EngineError{3020};
        if (isNew_)
            table_.rows.push_back(*changing_);
        else
            Current() = *changing_;
        changing_.reset();
        store.Written(table_);
    }

    Table& table_;
    std::vector<std::size_t> chosen_;
    std::size_t at_ = 0;
    std::optional<Row> changing_;
    bool isNew_ = false;
};

class DatabaseObject : public Dispatch {
public:
    explicit DatabaseObject(Table& table) {
        On(L"Updatable", [](const Arguments&) { return Yes(true); });
        On(L"OpenRecordset", [&table](const Arguments& given) {
            const std::string sql = Narrow(given.at(0));
            const bool isName = !korlan::IsSelect(sql);
            return Object(new Rows(table, Choose(table, isName ? "SELECT * FROM " + sql : sql)));
        });
        On(L"Execute", [&table](const Arguments& given) {
            const std::vector<std::size_t> chosen = Choose(table, Narrow(given.at(0)));
            for (auto row = chosen.rbegin(); row != chosen.rend(); ++row)
                table.rows.erase(table.rows.begin() + static_cast<std::ptrdiff_t>(*row));
            return store.Written(table), Nothing();
        });
        On(L"Close", [](const Arguments&) { return Nothing(); });
    }
};

class Engine : public Dispatch {
public:
    Engine() {
        On(L"OpenDatabase", [](const Arguments& given) {
            if (!std::filesystem::exists(given.at(0))) throw EngineError{3024};
            if (given.at(3) != L";pwd=kqz") throw EngineError{3031};
            Table& table = store.tables[given[0]];
            table.path = given[0];
            if (!store.before) table.Load();
            return Object(new DatabaseObject(table));
        });
        On(L"BeginTrans", [](const Arguments&) { return store.before = store.tables, Nothing(); });
        On(L"CommitTrans", [](const Arguments&) {
            store.before.reset();
            for (const auto& [path, table] : store.tables) table.Save();
            return Nothing();
        });
        On(L"Rollback", [](const Arguments&) {
            for (const auto& [path, table] : *store.before) store.tables[path] = table;
            return store.before.reset(), Nothing();
        });
    }
};

} // namespace

IUnknown* MakeDaoEngine() {
    return new Engine;
}

} // namespace doubles
