#include "platform/SqlText.h"

#include "platform/FieldNames.h"

namespace korlan {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

bool IsBlank(char c) {
    return kBlanks.find(c) != std::string_view::npos;
}

bool IsWordCharacter(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == '$' ||
           (c & 0x80) != 0;
}

// Length of the quoted piece at the start; a doubled closing quote stands for itself. One without its end takes the
// rest.
std::size_t QuotedLength(std::string_view sql, char close) {
    for (std::size_t at = 1; at < sql.size(); ++at) {
        if (sql[at] != close) continue;
        if (at + 1 >= sql.size() || sql[at + 1] != close) return at + 1;
        ++at;
    }
    return sql.size();
}

template <class Predicate>
std::size_t RunLength(std::string_view sql, Predicate belongs) {
    return static_cast<std::size_t>(std::find_if_not(sql.begin(), sql.end(), belongs) - sql.begin());
}

SqlToken FirstToken(std::string_view sql) {
    const char c = sql[0];
    if (IsBlank(c)) return {SqlKind::Space, sql.substr(0, RunLength(sql, IsBlank))};
    if (IsWordCharacter(c)) return {SqlKind::Word, sql.substr(0, RunLength(sql, IsWordCharacter))};
    if (c == '\'') return {SqlKind::Text, sql.substr(0, QuotedLength(sql, c))};
    if (c == '"' || c == '`') return {SqlKind::Quoted, sql.substr(0, QuotedLength(sql, c))};
    if (c == '[') return {SqlKind::Quoted, sql.substr(0, QuotedLength(sql, ']'))};
    return {SqlKind::Sign, sql.substr(0, 1)};
}

} // namespace

std::vector<SqlToken> SplitSql(std::string_view sql) {
    std::vector<SqlToken> tokens;
    while (!sql.empty()) {
        tokens.push_back(FirstToken(sql));
        sql.remove_prefix(tokens.back().text.size());
    }
    return tokens;
}

bool IsSelect(std::string_view tableOrSql) {
    const std::string_view sql = Trimmed(tableOrSql);
    constexpr std::size_t kWordLength = 6;
    return sql.size() > kWordLength && SameName(sql.substr(0, kWordLength), "SELECT") &&
           !IsWordCharacter(sql[kWordLength]);
}

std::optional<SelectAll> ParseSelectAll(std::string_view sql) {
    std::string_view left = Trimmed(sql);
    if (left.ends_with(';')) left = Trimmed(left.substr(0, left.size() - 1));
    std::vector<SqlToken> start;
    while (!left.empty() && start.size() < 4) {
        const SqlToken token = FirstToken(left);
        left.remove_prefix(token.text.size());
        if (token.kind != SqlKind::Space) start.push_back(token);
    }
    if (start.size() < 4 || !SameName(start[0].text, "SELECT") || start[1].text != "*" ||
        !SameName(start[2].text, "FROM"))
        return std::nullopt;
    std::string_view name = start[3].text;
    if (start[3].kind == SqlKind::Quoted && name.size() >= 2) {
        name = name.substr(1, name.size() - 2);
    } else if (start[3].kind != SqlKind::Word) {
        return std::nullopt;
    }
    return SelectAll{std::string(name), left};
}

std::optional<std::string> WholeTableOf(std::string_view tableOrSql) {
    if (!IsSelect(tableOrSql)) return std::string(Trimmed(tableOrSql));
    const std::optional<SelectAll> parsed = ParseSelectAll(tableOrSql);
    if (!parsed || !Trimmed(parsed->rest).empty()) return std::nullopt;
    return parsed->table;
}

} // namespace korlan
