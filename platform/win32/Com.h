// Objects of other makers' components: started once for the process, held by a pointer that lets go.
#pragma once

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <memory>
#include <string_view>

namespace korlan {

struct ComRelease {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <class Interface>
using ComPtr = std::unique_ptr<Interface, ComRelease>;

// On the user-interface thread, which has its message loop.
inline void StartCom() {
    [[maybe_unused]] static const HRESULT started = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
}

// A text as automation carries it.
class BStr {
public:
    explicit BStr(std::wstring_view text) : text_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
    BStr(const BStr&) = delete;
    BStr& operator=(const BStr&) = delete;
    ~BStr() { SysFreeString(text_); }
    BSTR Get() const { return text_; }

private:
    BSTR text_;
};

} // namespace korlan
