#include "tests/excel/server/AutomationObject.h"

#include "app/base/text/WideText.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace wagemill::test {

namespace {

/// Numbers of members count from 1; those of a named argument are this and its position.
constexpr DISPID firstArgumentId = 1000;

/// The language of names and numbers.
constexpr LCID english = 0x0409;

bool isSameName(const std::string& one, const std::string& other)
{
    return std::ranges::equal(
        one, other, [](unsigned char left, unsigned char right) { return std::tolower(left) == std::tolower(right); });
}

std::string textOf(const VARIANT& value)
{
    return toUtf8({value.bstrVal, ::SysStringLen(value.bstrVal)});
}

std::string argumentText(const VARIANT& value)
{
    switch (value.vt) {
    case VT_I2:
        return "I2 " + std::to_string(value.iVal);
    case VT_I4:
        return "I4 " + std::to_string(value.lVal);
    case VT_BOOL:
        return value.boolVal == VARIANT_TRUE ? "BOOL True" : value.boolVal == VARIANT_FALSE ? "BOOL False" : "BOOL ?";
    case VT_BSTR:
        return "TEXT " + textOf(value);
    case VT_ERROR:
        return value.scode == DISP_E_PARAMNOTFOUND ? "OMITTED" : "ERROR";
    default:
        return "TYPE " + std::to_string(value.vt);
    }
}

std::string kindText(WORD kind)
{
    switch (kind) {
    case DISPATCH_PROPERTYGET:
        return "get";
    case DISPATCH_METHOD:
        return "call";
    case DISPATCH_PROPERTYGET | DISPATCH_METHOD:
        return "item";
    case DISPATCH_PROPERTYPUT:
        return "put";
    default:
        return "kind " + std::to_string(kind);
    }
}

/// The call as the log writes it; DISPPARAMS holds all from the last to the first, the named ones first.
std::string callText(const Member& member, WORD kind, const DISPPARAMS& parameters)
{
    std::vector<std::string> values;
    for (UINT index = parameters.cArgs; index-- > parameters.cNamedArgs;)
        values.push_back(argumentText(parameters.rgvarg[index]));
    std::string put;
    for (UINT index = parameters.cNamedArgs; index-- > 0;) {
        const DISPID name = parameters.rgdispidNamedArgs[index];
        const std::string value = argumentText(parameters.rgvarg[index]);
        if (name == DISPID_PROPERTYPUT)
            put = " = " + value;
        else
            values.push_back(member.argumentNames.at(static_cast<std::size_t>(name - firstArgumentId)) + ":=" + value);
    }
    std::string text = member.name + " " + kindText(kind);
    for (std::size_t index = 0; index < values.size(); ++index)
        text += (index == 0 ? "(" : ", ") + values[index] + (index + 1 == values.size() ? ")" : "");
    return text + put;
}

HRESULT fail(EXCEPINFO* exception, const std::string& description)
{
    exception->scode = static_cast<SCODE>(0x800A03EC);
    exception->bstrSource = ::SysAllocString(L"Test automation server");
    if (!description.empty())
        exception->bstrDescription = ::SysAllocString(toWide(description).c_str());
    return DISP_E_EXCEPTION;
}

} // namespace

CallArguments::CallArguments(const DISPPARAMS& parameters, bool isPut)
{
    for (UINT index = parameters.cNamedArgs; index < parameters.cArgs; ++index)
        m_values[parameters.cArgs - 1 - index] = &parameters.rgvarg[index];
    for (UINT index = 0; index < parameters.cNamedArgs; ++index) {
        const DISPID name = parameters.rgdispidNamedArgs[index];
        if (name == DISPID_PROPERTYPUT)
            m_putValue = &parameters.rgvarg[index];
        else
            m_values[static_cast<std::size_t>(name - firstArgumentId)] = &parameters.rgvarg[index];
    }
    if (isPut != (m_putValue != nullptr))
        throw std::invalid_argument("A property is put with one value that is marked as such.");
}

const VARIANT& CallArguments::required(const VARIANT* value, VARTYPE type)
{
    if (value == nullptr || value->vt != type)
        throw std::invalid_argument("An argument is missing or of another type.");
    return *value;
}

const VARIANT& CallArguments::at(std::size_t position, VARTYPE type) const
{
    const auto found = m_values.find(position);
    return required(found == m_values.end() ? nullptr : found->second, type);
}

std::int32_t CallArguments::number(std::size_t position) const
{
    const auto found = m_values.find(position);
    if (found != m_values.end() && found->second->vt == VT_I2)
        return found->second->iVal;
    return at(position, VT_I4).lVal;
}

bool CallArguments::flag(std::size_t position) const
{
    return at(position, VT_BOOL).boolVal != VARIANT_FALSE;
}

std::string CallArguments::text(std::size_t position) const
{
    return textOf(at(position, VT_BSTR));
}

std::string CallArguments::putText() const
{
    return textOf(required(m_putValue, VT_BSTR));
}

AutomationObject::AutomationObject(Server& server, std::string className, std::vector<Member> members)
    : m_server(server), m_className(std::move(className)), m_members(std::move(members))
{
    ++m_server.objects;
}

/// The last object that anybody refers to takes the process with it, as one without windows does.
AutomationObject::~AutomationObject()
{
    if (--m_server.objects == 0)
        ::PostQuitMessage(0);
}

HRESULT AutomationObject::QueryInterface(REFIID wanted, void** object)
{
    if (wanted != IID_IUnknown && wanted != IID_IDispatch) {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    *object = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}

ULONG AutomationObject::Release()
{
    const ULONG left = --m_references;
    if (left == 0)
        delete this;
    return left;
}

HRESULT AutomationObject::GetTypeInfoCount(UINT* count)
{
    *count = 0;
    return S_OK;
}

HRESULT AutomationObject::GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** info)
{
    *info = nullptr;
    return E_NOTIMPL;
}

HRESULT AutomationObject::GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* names, UINT count, LCID locale, DISPID* ids)
{
    if (locale != english)
        return TYPE_E_INVDATAREAD; // as where its language is not installed
    std::fill_n(ids, count, DISPID_UNKNOWN);
    const std::string name = toUtf8(std::wstring_view(names[0]));
    m_server.log << "name " << m_className << "." << name << std::endl;
    const auto member =
        std::ranges::find_if(m_members, [&](const Member& each) { return isSameName(each.name, name); });
    if (member == m_members.end() || m_server.instructions.has("unknown", member->name))
        return DISP_E_UNKNOWNNAME;
    ids[0] = static_cast<DISPID>(member - m_members.begin()) + 1;
    for (UINT index = 1; index < count; ++index) {
        const std::string argument = toUtf8(std::wstring_view(names[index]));
        m_server.log << "name " << m_className << "." << name << " " << argument << std::endl;
        const auto& known = member->argumentNames;
        const auto found = std::ranges::find_if(known, [&](const auto& each) { return isSameName(each, argument); });
        if (found == known.end())
            return DISP_E_UNKNOWNNAME;
        ids[index] = firstArgumentId + static_cast<DISPID>(found - known.begin());
    }
    return S_OK;
}

/// What the test wants to happen instead of the call; S_OK when nothing.
HRESULT AutomationObject::refusal(const Member& member, EXCEPINFO* exception)
{
    const Instructions& wanted = m_server.instructions;
    ::Sleep(static_cast<DWORD>(wanted.number("slow", 0)));
    if (wanted.has("ask", member.name))
        ::MessageBoxW(nullptr, L"Save in the older format?", L"Test question", MB_YESNO);
    const int call = ++m_server.calls;
    if (call == wanted.number("die", 0))
        ::TerminateProcess(::GetCurrentProcess(), 1);
    if (call != wanted.number("fail", 0) && !wanted.has("refuse", member.name))
        return S_OK;
    return fail(exception, wanted.has("silent") ? "" : "The test wants this call to fail.");
}

HRESULT AutomationObject::run(const Member& member, const CallArguments& arguments, VARIANT* result,
                              EXCEPINFO* exception)
{
    VARIANT value = {};
    try {
        member.run(arguments, value);
    } catch (const std::exception& error) {
        ::VariantClear(&value);
        return fail(exception, m_server.instructions.has("silent") ? "" : error.what());
    }
    if (result == nullptr || m_server.instructions.has("nothing", member.name))
        ::VariantClear(&value);
    else
        *result = value;
    return S_OK;
}

HRESULT AutomationObject::Invoke(DISPID id, REFIID /*reserved*/, LCID locale, WORD kind, DISPPARAMS* parameters,
                                 VARIANT* result, EXCEPINFO* exception, UINT* /*badArgument*/)
{
    const auto index = static_cast<std::size_t>(id) - 1;
    if (index >= m_members.size())
        return DISP_E_MEMBERNOTFOUND;
    const Member& member = m_members[index];
    m_server.log << "call " << m_className << "." << callText(member, kind, *parameters)
                 << std::endl; // at once: it may die
    if ((member.kinds & kind) == 0)
        return DISP_E_MEMBERNOTFOUND;
    const bool isTyped = kind == DISPATCH_PROPERTYPUT && parameters->rgvarg[0].vt == VT_BSTR;
    if (locale != (isTyped ? std::stoul(m_server.instructions.text("region", "0409"), nullptr, 16) : english))
        return TYPE_E_INVDATAREAD;
    if (const HRESULT refused = refusal(member, exception); refused != S_OK)
        return refused;
    try {
        return run(member, CallArguments(*parameters, kind == DISPATCH_PROPERTYPUT), result, exception);
    } catch (const std::invalid_argument&) {
        return DISP_E_TYPEMISMATCH;
    }
}

void setResult(VARIANT& result, std::int32_t number)
{
    result.vt = VT_I4;
    result.lVal = number;
}

void setResult(VARIANT& result, std::string_view text)
{
    const std::wstring wide = toWide(text);
    result.vt = VT_BSTR;
    result.bstrVal = ::SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
}

void setResult(VARIANT& result, AutomationObject* object)
{
    result.vt = VT_DISPATCH;
    result.pdispVal = object;
}

} // namespace wagemill::test
