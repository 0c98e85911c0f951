#include "platform/win32/Automation.h"

#include "platform/DatabaseError.h"
#include "platform/win32/Wide.h"

namespace korlan {
namespace {

// The engine's own number is in the lower half of its code.
[[noreturn]] void RaiseAutomationError(HRESULT result, EXCEPINFO& exception) {
    if (exception.pfnDeferredFillIn) exception.pfnDeferredFillIn(&exception);
    const auto code = static_cast<std::uint32_t>(exception.scode != 0 ? exception.scode : result);
    constexpr std::uint32_t kControlFacility = 0x800A0000;
    const std::uint32_t own = (code & 0xFFFF0000) == kControlFacility ? code & 0xFFFF : exception.wCode;
    const std::string description = exception.bstrDescription ? Narrow(exception.bstrDescription) : std::string();
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrHelpFile);
    const bool isEngines = own >= static_cast<std::uint32_t>(kErrDatabase);
    throw RuntimeError(isEngines ? static_cast<std::int32_t>(own) : kErrOperationNotSupported, description);
}

} // namespace

Variant::Variant(const std::string& utf8) : Variant() {
    const std::wstring wide = Wide(utf8);
    vt = VT_BSTR;
    bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
}

std::string Variant::Text() const {
    SYSTEMTIME time{};
    if (vt == VT_NULL || vt == VT_EMPTY) return {};
    if (vt == VT_BOOL) return boolVal != VARIANT_FALSE ? "True" : "False";
    if (vt == VT_DATE && VariantTimeToSystemTime(date, &time)) {
        const auto number = [](WORD value) { return std::to_string(value); };
        return number(time.wDay) + '-' + number(time.wMonth) + '-' + number(time.wYear) + ',' + number(time.wHour) +
               ':' + number(time.wMinute) + ':' + number(time.wSecond);
    }
    Variant text;
    constexpr LCID kEnglish = 0x0409; // a point in numbers, whatever the user's locale
    if (FAILED(VariantChangeTypeEx(&text, const_cast<Variant*>(this), kEnglish, 0, VT_BSTR)))
        throw RuntimeError(kErrInvalidFieldType, "Invalid field data type");
    return text.bstrVal ? Narrow({text.bstrVal, SysStringLen(text.bstrVal)}) : std::string();
}

AutomationObject AutomationObject::Create(std::initializer_list<const wchar_t*> classes) {
    StartCom();
    AutomationObject created;
    for (const wchar_t* name : classes) {
        CLSID identifier{};
        IDispatch* object = nullptr;
        if (FAILED(CLSIDFromProgID(name, &identifier))) continue;
        CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void**>(&object));
        created.object_.reset(object);
        if (object) break;
    }
    return created;
}

AutomationObject::AutomationObject(Variant value) {
    if (value.vt != VT_DISPATCH || !value.pdispVal) throw RuntimeError(kErrObjectNotSet);
    object_.reset(std::exchange(value.pdispVal, nullptr));
}

void AutomationObject::Put(const wchar_t* name, Variant value) const {
    std::vector<Variant> arguments;
    arguments.push_back(std::move(value));
    Invoke(name, DISPATCH_PROPERTYPUT, std::move(arguments));
}

Variant AutomationObject::Invoke(const wchar_t* name, WORD kind, std::vector<Variant> arguments) const {
    if (!object_) throw RuntimeError(kErrObjectNotSet);
    DISPID member = 0, putValue = DISPID_PROPERTYPUT;
    EXCEPINFO exception{};
    auto* names = const_cast<LPOLESTR>(name);
    HRESULT result = object_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &member);
    if (FAILED(result)) RaiseAutomationError(result, exception);
    const bool puts = kind == DISPATCH_PROPERTYPUT;
    DISPPARAMS parameters{arguments.data(), puts ? &putValue : nullptr, static_cast<UINT>(arguments.size()),
                          puts ? 1u : 0u};
    Variant answer;
    result = object_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, puts ? nullptr : &answer,
                             &exception, nullptr);
    if (FAILED(result)) RaiseAutomationError(result, exception);
    return answer;
}

} // namespace korlan
