#include "app/base/Dispatch.h"

#include "app/base/WindowsText.h"

#include <chrono>
#include <new>

namespace wagemill::automation {

namespace {

/// What a failing call left behind; its texts are ours to free.
struct Exception {
    Exception() = default;
    Exception(const Exception&) = delete;
    Exception& operator=(const Exception&) = delete;
    ~Exception() { clear(); }

    void clear()
    {
        ::SysFreeString(info.bstrSource);
        ::SysFreeString(info.bstrDescription);
        ::SysFreeString(info.bstrHelpFile);
        info = {};
    }

    /// The number of the call's failure; asks for what the object left to be filled in later.
    HRESULT numberOf(HRESULT status)
    {
        if (status == DISP_E_EXCEPTION && info.pfnDeferredFillIn != nullptr)
            info.pfnDeferredFillIn(&info);
        return status == DISP_E_EXCEPTION && FAILED(info.scode) ? info.scode : status;
    }

    std::string description() const
    {
        return info.bstrDescription == nullptr ? ""
                                               : toUtf8({info.bstrDescription, ::SysStringLen(info.bstrDescription)});
    }

    EXCEPINFO info = {};
};

/// Makes the call until it is not turned away, for ten seconds. The pauses are no waiting of COM's, which would let
/// events of our windows run.
template <typename Call>
HRESULT offer(Call&& call)
{
    using Clock = std::chrono::steady_clock;
    constexpr auto patience = std::chrono::seconds(10);
    constexpr DWORD pause = 50; // milliseconds
    const auto end = Clock::now() + patience;
    for (;;) {
        const HRESULT result = call();
        if (!isTurnedAway(result) || Clock::now() >= end)
            return result;
        ::Sleep(pause);
    }
}

void require(HRESULT result)
{
    if (FAILED(result))
        throw CallFailure(result);
}

} // namespace

bool isTurnedAway(HRESULT result)
{
    constexpr auto busyWithItsUser = static_cast<HRESULT>(0x800AC472); // a cell is being edited, a dialog is open
    return result == RPC_E_CALL_REJECTED || result == RPC_E_SERVERCALL_RETRYLATER || result == busyWithItsUser;
}

Variant::Variant(Variant&& other) noexcept : m_value(std::exchange(other.m_value, VARIANT{}))
{
}

Variant& Variant::operator=(Variant&& other) noexcept
{
    std::swap(m_value, other.m_value);
    return *this;
}

Variant::~Variant()
{
    ::VariantClear(&m_value);
}

Variant Variant::ofInt16(std::int16_t number)
{
    Variant variant;
    variant.m_value.vt = VT_I2;
    variant.m_value.iVal = number;
    return variant;
}

Variant Variant::ofInt32(std::int32_t number)
{
    Variant variant;
    variant.m_value.vt = VT_I4;
    variant.m_value.lVal = number;
    return variant;
}

Variant Variant::ofBoolean(bool value)
{
    Variant variant;
    variant.m_value.vt = VT_BOOL;
    variant.m_value.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    return variant;
}

Variant Variant::ofText(std::string_view utf8)
{
    return ofText(toWide(utf8));
}

Variant Variant::ofText(const std::wstring& text)
{
    Variant variant;
    variant.m_value.bstrVal = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (variant.m_value.bstrVal == nullptr)
        throw std::bad_alloc();
    variant.m_value.vt = VT_BSTR;
    return variant;
}

Variant Variant::omitted()
{
    Variant variant;
    variant.m_value.vt = VT_ERROR;
    variant.m_value.scode = DISP_E_PARAMNOTFOUND;
    return variant;
}

VARIANT* Variant::receive()
{
    ::VariantClear(&m_value);
    return &m_value;
}

bool Variant::become(VARTYPE type)
{
    if (m_value.vt == VT_EMPTY || m_value.vt == VT_NULL) // the system would make them 0 or ""
        return false;
    return SUCCEEDED(::VariantChangeTypeEx(&m_value, &m_value, LOCALE_INVARIANT, 0, type));
}

Dispatch::Dispatch(const wchar_t* programId, DWORD context) : m_reference(nullptr)
{
    CLSID classId = {};
    require(::CLSIDFromProgID(programId, &classId));
    void* object = nullptr;
    require(::CoCreateInstance(classId, nullptr, context, IID_IDispatch, &object));
    m_reference = static_cast<IDispatch*>(object);
}

Dispatch::~Dispatch()
{
    if (m_reference != nullptr)
        m_reference->Release();
}

std::vector<DISPID> Dispatch::identifiers(std::vector<std::wstring> names) const
{
    std::vector<LPOLESTR> pointers;
    for (std::wstring& name : names)
        pointers.push_back(name.data());
    std::vector<DISPID> ids(names.size(), DISPID_UNKNOWN);
    require(offer([&] {
        return m_reference->GetIDsOfNames(IID_NULL, pointers.data(), static_cast<UINT>(pointers.size()),
                                          englishUnitedStates, ids.data());
    }));
    return ids;
}

Variant Dispatch::invoke(const std::vector<DISPID>& ids, CallKind kind, const Arguments& arguments, LCID locale) const
{
    // Automation takes names and values from the last to the first.
    std::vector<DISPID> names(ids.rbegin(), ids.rend() - 1);
    std::vector<VARIANT> values; // borrowed
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
        values.push_back(argument->raw());
    DISPPARAMS parameters = {values.data(), names.data(), static_cast<UINT>(values.size()),
                             static_cast<UINT>(names.size())};
    Variant result;
    Exception exception;
    const HRESULT outcome = offer([&] {
        exception.clear();
        return exception.numberOf(m_reference->Invoke(ids.front(), IID_NULL, locale, static_cast<WORD>(kind),
                                                      &parameters, kind == CallKind::Put ? nullptr : result.receive(),
                                                      &exception.info, nullptr));
    });
    if (FAILED(outcome))
        throw CallFailure(outcome, exception.description());
    return result;
}

Apartment::~Apartment()
{
    if (SUCCEEDED(m_result))
        ::CoUninitialize();
}

} // namespace wagemill::automation
