// Names of tables and columns, which match without regard to case (of ASCII letters), and the look-up of a recordset's
// columns by name. Shared by every kind of database.
#pragma once

#include "platform/AsciiText.h"
#include "platform/DatabaseError.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korlan {

inline bool SameName(std::string_view a, std::string_view b) {
    return EqualNoCase(a, b);
}

// A name is searched for once. Callers ask for the same few names row after row in the same order, so the answer is
// nearly always the one after the last answer.
class FieldNames {
public:
    explicit FieldNames(std::vector<std::string> names) : names_(std::move(names)) {}

    const std::string& operator[](std::size_t index) const { return names_[index]; }
    // Raises 3265 when there is no such column.
    std::size_t Index(const std::string& name) const {
        for (std::size_t i = 0; i < asked_.size(); ++i) {
            if (++last_ >= asked_.size()) last_ = 0;
            if (asked_[last_].first == name) return asked_[last_].second;
        }
        const auto found =
            std::find_if(names_.begin(), names_.end(), [&](const std::string& known) { return SameName(known, name); });
        if (found == names_.end()) throw RuntimeError(kErrNoSuchColumn, "Item not found in this collection: " + name);
        asked_.emplace_back(name, static_cast<std::size_t>(found - names_.begin()));
        last_ = asked_.size() - 1;
        return asked_.back().second;
    }

private:
    std::vector<std::string> names_;
    mutable std::vector<std::pair<std::string, std::size_t>> asked_;
    mutable std::size_t last_ = 0;
};

} // namespace korlan
