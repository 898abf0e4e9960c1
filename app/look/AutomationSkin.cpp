#include "app/look/AutomationSkin.h"

#include "app/base/WindowsText.h"

#include <windows.h>

#include <oleauto.h>

#include <initializer_list>
#include <stdexcept>
#include <vector>

namespace wagemill {

namespace {

constexpr const wchar_t* controlClass = L"XtremeSkinFramework.SkinFramework";
constexpr DISPID optionsIdentifier = 1;
constexpr DISPID loadSkinIdentifier = 2;
constexpr DISPID applyWindowIdentifier = 3;
const std::string controlFailed = "The skinning control failed";

/// A value of automation that frees what it holds.
class Variant : public VARIANT {
public:
    Variant() { ::VariantInit(this); }
    explicit Variant(std::int32_t number) : Variant()
    {
        vt = VT_I4;
        lVal = number;
    }
    explicit Variant(bool value) : Variant()
    {
        vt = VT_BOOL;
        boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    }
    explicit Variant(const std::wstring& text) : Variant()
    {
        bstrVal = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
        if (bstrVal == nullptr)
            throw std::bad_alloc();
        vt = VT_BSTR;
    }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { ::VariantClear(this); }
};

/// What a failed call tells of itself; frees its texts.
class CallFailure : public EXCEPINFO {
public:
    CallFailure() : EXCEPINFO{} {}
    CallFailure(const CallFailure&) = delete;
    CallFailure& operator=(const CallFailure&) = delete;
    ~CallFailure()
    {
        ::SysFreeString(bstrSource);
        ::SysFreeString(bstrDescription);
        ::SysFreeString(bstrHelpFile);
    }

    /// The control's own words where there are any, without a full stop.
    std::string text(HRESULT result)
    {
        if (result == DISP_E_EXCEPTION && pfnDeferredFillIn != nullptr)
            pfnDeferredFillIn(this);
        std::string description;
        if (bstrDescription != nullptr)
            description = toUtf8({bstrDescription, ::SysStringLen(bstrDescription)});
        description.erase(description.find_last_not_of(". \r\n") + 1);
        if (!description.empty())
            return description;
        const bool hasCode = result == DISP_E_EXCEPTION && scode != S_OK;
        return systemErrorText(static_cast<unsigned long>(hasCode ? scode : result));
    }
};

/// kind  DISPATCH_METHOD, DISPATCH_PROPERTYGET or DISPATCH_PROPERTYPUT
/// failure  begins the text that is thrown: "<failure>: <reason>."
void invoke(IDispatch& control, DISPID member, WORD kind, std::initializer_list<const VARIANT*> arguments,
            const std::string& failure, VARIANT* result = nullptr)
{
    std::vector<VARIANT> reversed; // the order in which automation takes them; borrowed, not copied
    for (auto argument = arguments.end(); argument != arguments.begin();)
        reversed.push_back(**--argument);
    DISPPARAMS parameters = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    DISPID valueName = DISPID_PROPERTYPUT;
    if (kind == DISPATCH_PROPERTYPUT) {
        parameters.rgdispidNamedArgs = &valueName;
        parameters.cNamedArgs = 1;
    }
    CallFailure details;
    const HRESULT status =
        control.Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, result, &details, nullptr);
    if (FAILED(status))
        throw std::runtime_error(failure + ": " + details.text(status) + ".");
}

} // namespace

std::unique_ptr<SkinningControl> createSkinningControl()
{
    CLSID id;
    void* control = nullptr;
    if (FAILED(::CLSIDFromProgID(controlClass, &id)) ||
        FAILED(::CoCreateInstance(id, nullptr, CLSCTX_ALL, IID_IDispatch, &control)))
        return nullptr; // not installed, as on most machines
    return std::make_unique<AutomationSkin>(static_cast<IDispatch*>(control));
}

void AutomationSkin::Release::operator()(IDispatch* object) const
{
    object->Release();
}

void AutomationSkin::loadSkin(const std::filesystem::path& skinFile, std::string_view variant)
{
    const Variant file(skinFile.native());
    const Variant variantName(toWide(variant));
    invoke(*m_control, loadSkinIdentifier, DISPATCH_METHOD, {&file, &variantName},
           "Cannot use the skin file \"" + toUtf8(skinFile.native()) + "\"");
}

std::int32_t AutomationSkin::options() const
{
    Variant value;
    invoke(*m_control, optionsIdentifier, DISPATCH_PROPERTYGET, {}, controlFailed, &value);
    const HRESULT status = ::VariantChangeType(&value, &value, 0, VT_I4);
    if (FAILED(status))
        throw std::runtime_error(controlFailed + ": its options are no whole number.");
    return value.lVal;
}

void AutomationSkin::setOptions(std::int32_t options)
{
    const Variant value(options);
    invoke(*m_control, optionsIdentifier, DISPATCH_PROPERTYPUT, {&value}, controlFailed);
}

void AutomationSkin::setFlag(int dispatchIdentifier, bool value)
{
    const Variant flag(value);
    invoke(*m_control, dispatchIdentifier, DISPATCH_PROPERTYPUT, {&flag}, controlFailed);
}

void AutomationSkin::applyWindow(std::uintptr_t windowHandle)
{
    // Of a window handle 32 bits count, in a 64-bit program too.
    const Variant handle(static_cast<std::int32_t>(windowHandle));
    invoke(*m_control, applyWindowIdentifier, DISPATCH_METHOD, {&handle}, controlFailed);
}

} // namespace wagemill
