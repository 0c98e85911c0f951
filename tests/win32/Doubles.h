// What the test components share: objects that count their references, and a class factory for each.
#pragma once

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <atomic>
#include <functional>
#include <string>

namespace doubles {

template <class Interface>
class Counted : public Interface {
public:
    explicit Counted(const IID& identifier) : identifier_(identifier) {}
    virtual ~Counted() = default;
    STDMETHODIMP QueryInterface(REFIID wanted, void** object) override {
        const bool known = wanted == IID_IUnknown || wanted == identifier_;
        *object = known ? this : nullptr;
        if (known) ++count_;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++count_; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --count_;
        if (left == 0) delete this;
        return left;
    }

private:
    IID identifier_;
    std::atomic<ULONG> count_{1};
};

inline GUID Guid(const wchar_t* text) {
    GUID guid{};
    CLSIDFromString(text, &guid);
    return guid;
}

IUnknown* MakeCacheHandler();
IUnknown* MakeDaoEngine();

} // namespace doubles
