#include "app/base/Dispatch.h"

#include "app/base/text/WideText.h"

#include <chrono>
#include <new>

namespace wagemill::automation {

namespace {

/// What a failing call leaves; its texts are ours to free.
struct Exception : EXCEPINFO {
    Exception() : EXCEPINFO() {}
    Exception(const Exception&) = delete;
    Exception& operator=(const Exception&) = delete;
    ~Exception()
    {
        for (const BSTR text : {bstrSource, bstrDescription, bstrHelpFile})
            ::SysFreeString(text);
    }
};

/// Makes the call again while it is rejected, for ten seconds. COM's own way of waiting would let events of our windows
/// run.
template <typename Call>
HRESULT retried(Call&& call)
{
    using Clock = std::chrono::steady_clock;
    constexpr auto patience = std::chrono::seconds(10);
    constexpr DWORD pause = 50; // milliseconds
    const auto end = Clock::now() + patience;
    for (;;) {
        const HRESULT result = call();
        if (!isRejected(result) || Clock::now() >= end)
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

bool isRejected(HRESULT result)
{
    constexpr auto busyWithItsUser = static_cast<HRESULT>(0x800AC472); // a cell is being edited, a dialog is open
    return result == RPC_E_CALL_REJECTED || result == RPC_E_SERVERCALL_RETRYLATER || result == busyWithItsUser;
}

Variant::Variant(const Variant& other)
{
    if (FAILED(::VariantCopy(&m_value, const_cast<VARIANT*>(&other.m_value)))) // which it only reads
        throw std::bad_alloc();
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

Dispatch::Dispatch(const wchar_t* programId, DWORD context)
{
    CLSID classId = {};
    require(::CLSIDFromProgID(programId, &classId));
    void* object = nullptr;
    require(::CoCreateInstance(classId, nullptr, context, IID_IDispatch, &object));
    m_reference.reset(static_cast<IDispatch*>(object));
}

std::vector<DISPID> Dispatch::identifiers(std::vector<std::wstring> names) const
{
    std::vector<LPOLESTR> pointers;
    for (std::wstring& name : names)
        pointers.push_back(name.data());
    std::vector<DISPID> ids(names.size(), DISPID_UNKNOWN);
    require(retried([&] {
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
    std::string description;
    const HRESULT outcome = retried([&] {
        Exception exception;
        const HRESULT status =
            m_reference->Invoke(ids.front(), IID_NULL, locale, static_cast<WORD>(kind), &parameters,
                                kind == CallKind::Put ? nullptr : result.receive(), &exception, nullptr);
        if (status != DISP_E_EXCEPTION)
            return status;
        if (exception.pfnDeferredFillIn != nullptr)
            exception.pfnDeferredFillIn(&exception);
        description = toUtf8({exception.bstrDescription, ::SysStringLen(exception.bstrDescription)});
        return FAILED(exception.scode) ? exception.scode : status;
    });
    if (FAILED(outcome))
        throw CallFailure(outcome, description);
    return result;
}

Apartment::~Apartment()
{
    if (SUCCEEDED(m_result))
        ::CoUninitialize();
}

} // namespace wagemill::automation
