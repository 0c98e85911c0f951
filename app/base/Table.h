// A growable table that counts from 1; a wrong index raises run-time error 9.
#pragma once

#include "platform/RuntimeError.h"

#include <cstdint>
#include <vector>

namespace korlan {

template <typename Element>
class Table {
public:
    std::int32_t UpperBound() const { return static_cast<std::int32_t>(elements_.size()); } // 0 when empty
    Element& operator[](std::int32_t index) { return elements_[Offset(index)]; }
    const Element& operator[](std::int32_t index) const { return elements_[Offset(index)]; }
    Element& Append(Element element) { return elements_.emplace_back(std::move(element)); }
    void Resize(std::int32_t upperBound) { elements_.resize(static_cast<std::size_t>(upperBound)); }
    void Clear() { elements_.clear(); }
    auto begin() { return elements_.begin(); }
    auto end() { return elements_.end(); }
    auto begin() const { return elements_.begin(); }
    auto end() const { return elements_.end(); }

private:
    std::size_t Offset(std::int32_t index) const {
        if (index < 1 || index > UpperBound()) throw RuntimeError(kErrSubscript);
        return static_cast<std::size_t>(index - 1);
    }
    std::vector<Element> elements_;
};

} // namespace korlan
