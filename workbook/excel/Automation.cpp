#include "workbook/excel/Automation.h"

#include "app/base/WindowsText.h"
#include "workbook/excel/FailureText.h"

#include <new>
#include <utility>

#include <windows.h>

#include <objbase.h>

namespace wagemill::automation {

namespace {

/// What a failing call left behind; its texts are ours to free.
struct Exception {
    Exception() = default;
    Exception(const Exception&) = delete;
    Exception& operator=(const Exception&) = delete;
    ~Exception()
    {
        ::SysFreeString(info.bstrSource);
        ::SysFreeString(info.bstrDescription);
        ::SysFreeString(info.bstrHelpFile);
    }

    EXCEPINFO info = {};
};

enum class Kind : WORD {
    Get = DISPATCH_PROPERTYGET,
    GetItem =
        DISPATCH_PROPERTYGET | DISPATCH_METHOD, // an item of a collection is a property to some, a method to others
    Call = DISPATCH_METHOD,
    Put = DISPATCH_PROPERTYPUT,
};

/// The arguments of a call as IDispatch::Invoke wants them: the named ones, then the others from the last to the first.
struct CallArguments {
    std::vector<VARIANT> values; ///< not ours: what the call was given owns them
    std::vector<DISPID> names;

    DISPPARAMS parameters()
    {
        return {values.data(), names.data(), static_cast<UINT>(values.size()), static_cast<UINT>(names.size())};
    }

    void append(const Arguments& positional)
    {
        for (auto argument = positional.rbegin(); argument != positional.rend(); ++argument)
            values.push_back(argument->raw());
    }
};

void require(HRESULT result, const wchar_t* member)
{
    if (FAILED(result))
        throw SpreadsheetError(failureText(toUtf8(member), result));
}

/// The numbers of a member and, behind it, of its named arguments.
std::vector<DISPID> dispatchIds(IDispatch& object, const wchar_t* member, const NamedArguments& named)
{
    std::wstring memberName(member);
    std::vector<std::wstring> argumentNames;
    for (const NamedArgument& argument : named)
        argumentNames.push_back(argument.name);
    std::vector<LPOLESTR> names = {memberName.data()};
    for (std::wstring& name : argumentNames)
        names.push_back(name.data());
    std::vector<DISPID> ids(names.size(), DISPID_UNKNOWN);
    require(
        object.GetIDsOfNames(IID_NULL, names.data(), static_cast<UINT>(names.size()), LOCALE_USER_DEFAULT, ids.data()),
        member);
    return ids;
}

Variant invoke(IDispatch& object, const wchar_t* member, DISPID id, Kind kind, CallArguments arguments)
{
    DISPPARAMS parameters = arguments.parameters();
    Variant result;
    Exception exception;
    const HRESULT outcome = object.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, static_cast<WORD>(kind), &parameters,
                                          kind == Kind::Put ? nullptr : result.receive(), &exception.info, nullptr);
    if (FAILED(outcome))
        throw SpreadsheetError(failureText(toUtf8(member), outcome, exception.info));
    return result;
}

[[noreturn]] void throwNoValue(const char* what, const wchar_t* member)
{
    throw SpreadsheetError("Excel gave no " + std::string(what) + " for \"" + toUtf8(member) + "\".");
}

} // namespace

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
    const std::wstring wide = toWide(utf8);
    Variant variant;
    variant.m_value.bstrVal = ::SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
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

Object::Object(Object&& other) noexcept : m_reference(std::exchange(other.m_reference, nullptr))
{
}

Object::~Object()
{
    if (m_reference != nullptr)
        m_reference->Release();
}

Variant Object::get(const wchar_t* property, const Arguments& arguments) const
{
    const DISPID id = dispatchIds(*m_reference, property, {}).front();
    CallArguments all;
    all.append(arguments);
    return invoke(*m_reference, property, id, arguments.empty() ? Kind::Get : Kind::GetItem, std::move(all));
}

void Object::put(const wchar_t* property, const Arguments& arguments, const Variant& value) const
{
    const DISPID id = dispatchIds(*m_reference, property, {}).front();
    CallArguments all{{value.raw()}, {DISPID_PROPERTYPUT}};
    all.append(arguments);
    invoke(*m_reference, property, id, Kind::Put, std::move(all));
}

Variant Object::call(const wchar_t* method, const Arguments& arguments, const NamedArguments& named) const
{
    const std::vector<DISPID> ids = dispatchIds(*m_reference, method, named);
    CallArguments all{{}, {ids.begin() + 1, ids.end()}};
    for (const NamedArgument& argument : named)
        all.values.push_back(argument.value.raw());
    all.append(arguments);
    return invoke(*m_reference, method, ids.front(), Kind::Call, std::move(all));
}

Object createObject(const wchar_t* programId)
{
    CLSID classId = {};
    require(::CLSIDFromProgID(programId, &classId), programId);
    void* object = nullptr;
    require(::CoCreateInstance(classId, nullptr, CLSCTX_LOCAL_SERVER, IID_IDispatch, &object), programId);
    return Object(static_cast<IDispatch*>(object));
}

std::optional<Object> objectIn(const Variant& result)
{
    const VARIANT& value = result.raw();
    const bool isObject = value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN;
    if (!isObject || value.punkVal == nullptr)
        return std::nullopt;
    void* object = nullptr;
    if (FAILED(value.punkVal->QueryInterface(IID_IDispatch, &object)))
        return std::nullopt;
    return Object(static_cast<IDispatch*>(object));
}

std::int32_t int32In(Variant result, const wchar_t* member)
{
    if (!result.become(VT_I4))
        throwNoValue("number", member);
    return result.raw().lVal;
}

std::string textIn(Variant result, const wchar_t* member)
{
    if (!result.become(VT_BSTR))
        throwNoValue("text", member);
    return toUtf8({result.raw().bstrVal, ::SysStringLen(result.raw().bstrVal)});
}

Apartment::Apartment() : m_result(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))
{
    if (FAILED(m_result) && m_result != RPC_E_CHANGED_MODE) // a thread of the other kind can call as well
        throw SpreadsheetError(failureText("CoInitializeEx", m_result));
}

Apartment::~Apartment()
{
    if (SUCCEEDED(m_result))
        ::CoUninitialize();
}

} // namespace wagemill::automation
