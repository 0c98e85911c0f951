// Objects of automation called by name, as scripts do: nothing of the other side need be there when this is built.
#pragma once

#include "platform/win32/Com.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace korlan {

class Variant : public VARIANT {
public:
    Variant() { VariantInit(this); }
    explicit Variant(const std::string& utf8);
    explicit Variant(std::int32_t number) : Variant() { vt = VT_I4, lVal = number; }
    explicit Variant(bool flag) : Variant() { vt = VT_BOOL, boolVal = flag ? VARIANT_TRUE : VARIANT_FALSE; }
    Variant(Variant&& other) noexcept : Variant() { std::swap(Base(), other.Base()); }
    Variant& operator=(Variant&& other) noexcept {
        std::swap(Base(), other.Base());
        return *this;
    }
    ~Variant() { VariantClear(this); }

    std::string Text() const; // NULL is empty; numbers plain, yes/no True and False, dates D-M-YYYY,H:M:S

private:
    VARIANT& Base() { return *this; }
};

class AutomationObject {
public:
    AutomationObject() = default;
    // The first of these classes that can be created; empty when there is none.
    static AutomationObject Create(std::initializer_list<const wchar_t*> classes);
    explicit AutomationObject(Variant value); // raises 91 when it holds none

    explicit operator bool() const { return object_ != nullptr; }
    template <class... Arguments>
    Variant Call(const wchar_t* name, Arguments&&... arguments) const {
        return Invoke(name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, Reversed(std::forward<Arguments>(arguments)...));
    }
    void Put(const wchar_t* name, Variant value) const;

private:
    template <class... Arguments>
    static std::vector<Variant> Reversed(Arguments&&... arguments) { // automation counts from the last one
        std::vector<Variant> list;
        (list.emplace_back(std::forward<Arguments>(arguments)), ...);
        std::ranges::reverse(list);
        return list;
    }
    Variant Invoke(const wchar_t* name, WORD kind, std::vector<Variant> arguments) const;

    ComPtr<IDispatch> object_;
};

} // namespace korlan
