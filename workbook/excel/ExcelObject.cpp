#include "workbook/excel/ExcelObject.h"

#include "app/base/WindowsErrors.h"
#include "app/base/text/WideText.h"
#include "workbook/excel/CallWatch.h"

#include <algorithm>
#include <array>
#include <utility>

namespace wagemill {

using automation::Arguments;
using automation::CallFailure;
using automation::CallKind;
using automation::Dispatch;
using automation::Variant;

namespace {

struct Reason {
    HRESULT result;
    std::string_view text;
};

/// "An error that the object describes", without a description.
constexpr auto undescribedFailure = static_cast<HRESULT>(0x800A03EC);

constexpr std::string_view ended = "Excel has ended, or its process no longer answers";
constexpr std::string_view busy =
    "Excel is busy. Please finish what you are doing in Excel, close any message or dialog "
    "that it shows, and make the workbook again";

/// What the system says of these is meant for programmers.
constexpr auto reasons = std::to_array<Reason>({
    {DISP_E_UNKNOWNNAME, "this version of Excel does not know it"},
    {DISP_E_MEMBERNOTFOUND, "this version of Excel does not know it"},
    {DISP_E_BADPARAMCOUNT, "this version of Excel wants other arguments"},
    {DISP_E_PARAMNOTFOUND, "this version of Excel wants other arguments"},
    {DISP_E_PARAMNOTOPTIONAL, "this version of Excel wants other arguments"},
    {DISP_E_NONAMEDARGS, "this version of Excel wants other arguments"},
    {DISP_E_TYPEMISMATCH, "Excel cannot use the value"},
    {DISP_E_OVERFLOW, "the number is too large"},
    {DISP_E_BADINDEX, "there is no item of that number or name"},
    {DISP_E_EXCEPTION, "Excel gives no reason"},
    {undescribedFailure, "Excel refuses it and gives no reason"},
    {TYPE_E_INVDATAREAD, "Excel lacks the language pack of your regional format. Please install it, or choose the "
                         "regional format of Excel's own language in the settings of Windows"},
    {E_FAIL, "Excel gives no reason"},
    {E_UNEXPECTED, "Excel gives no reason"},
    {E_OUTOFMEMORY, "there is not enough memory"},
    {E_ACCESSDENIED, "access to Excel is denied"},
    {E_NOINTERFACE, "what answers as Excel cannot be automated"},
    {CO_E_CLASSSTRING, "Excel is not installed on this computer"},
    {REGDB_E_CLASSNOTREG, "Excel is not installed on this computer"},
    {CO_E_SERVER_EXEC_FAILURE, "Excel did not start"},
    {CO_E_APPNOTFOUND, "Excel did not start"},
    {HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), "the program file of Excel is missing"},
    {HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), ended},
    {HRESULT_FROM_WIN32(RPC_S_CALL_FAILED), ended},
    {HRESULT_FROM_WIN32(RPC_S_CALL_FAILED_DNE), ended},
    {RPC_E_DISCONNECTED, ended},
    {RPC_E_SERVER_DIED, ended},
    {RPC_E_SERVER_DIED_DNE, ended},
    {RPC_E_SERVERFAULT, ended},
    {CO_E_OBJNOTCONNECTED, ended},
    {RPC_E_SERVERCALL_REJECTED, busy},
    {RPC_E_CANTCALLOUT_ININPUTSYNCCALL, busy},
});

std::string reasonOf(HRESULT result)
{
    if (automation::isRejected(result))
        return std::string(busy);
    const auto known = std::ranges::find(reasons, result, &Reason::result);
    return known == reasons.end() ? systemErrorText(static_cast<unsigned long>(result)) : std::string(known->text);
}

/// What the user reads when Excel failed at `place`, a cell or a member in quotes: Excel's own description where there
/// is one, else "Excel failed at "Sheets": there is no item of that number or name."
std::string failureText(std::string_view place, const CallFailure& failure)
{
    const std::string_view description = failure.what();
    if (!description.empty() && !automation::isRejected(failure.result))
        return std::string(description);
    return "Excel failed at " + std::string(place) + ": " + reasonOf(failure.result) + ".";
}

std::string quoted(const wchar_t* member)
{
    return "\"" + toUtf8(member) + "\"";
}

/// Runs the work; a failure becomes one in the user's words.
template <typename Work>
auto namingThePlace(std::string_view place, Work&& work)
{
    const automation::WatchedCall call;
    try {
        return work();
    } catch (const CallFailure& failure) {
        throw SpreadsheetError(failureText(place, failure));
    }
}

} // namespace

ExcelReferences::ExcelReferences(LCID locale) : typingLocale(locale)
{
    if (FAILED(m_apartment.result()))
        throw SpreadsheetError(failureText("its start", CallFailure(m_apartment.result())));
}

ExcelReferences::Key ExcelReferences::add(Dispatch object)
{
    m_objects.emplace(++m_lastKey, std::move(object));
    return m_lastKey;
}

const Dispatch& ExcelReferences::at(Key key) const
{
    const auto found = m_objects.find(key);
    if (found == m_objects.end())
        throw SpreadsheetError("The Excel session has ended.");
    return found->second;
}

ExcelObject::ExcelObject(std::shared_ptr<ExcelReferences> references, Dispatch object)
    : m_references(std::move(references)), m_key(m_references->add(std::move(object)))
{
}

ExcelObject::ExcelObject(std::shared_ptr<ExcelReferences> references, const wchar_t* programId)
    : ExcelObject(std::move(references),
                  namingThePlace(quoted(programId), [&] { return Dispatch(programId, CLSCTX_LOCAL_SERVER); }))
{
}

ExcelObject::~ExcelObject()
{
    if (m_references)
        m_references->release(m_key);
}

Variant ExcelObject::invoke(std::string_view place, std::vector<std::wstring> names, CallKind kind,
                            const Arguments& arguments, LCID locale) const
{
    const Dispatch& object = m_references->at(m_key);
    return namingThePlace(place, [&] {
        std::vector<DISPID> identifiers = object.identifiers(std::move(names));
        if (kind == CallKind::Put)
            identifiers.push_back(DISPID_PROPERTYPUT);
        return object.invoke(identifiers, kind, arguments, locale);
    });
}

Variant ExcelObject::get(const wchar_t* property, const Arguments& arguments) const
{
    return invoke(quoted(property), {property}, arguments.empty() ? CallKind::Get : CallKind::GetItem, arguments);
}

void ExcelObject::put(const wchar_t* property, Variant value) const
{
    invoke(quoted(property), {property}, CallKind::Put, {std::move(value)});
}

void ExcelObject::putTyped(const wchar_t* property, Arguments arguments, std::string_view text,
                           std::string_view place) const
{
    arguments.push_back(Variant::ofText(text));
    invoke(place, {property}, CallKind::Put, arguments, m_references->typingLocale);
}

Variant ExcelObject::call(const wchar_t* method, Arguments arguments, const NamedArguments& named) const
{
    std::vector<std::wstring> names = {method};
    for (const auto& [name, value] : named) {
        names.push_back(name);
        arguments.push_back(value);
    }
    return invoke(quoted(method), std::move(names), CallKind::Call, arguments);
}

Variant ExcelObject::converted(const wchar_t* property, VARTYPE type, const char* what) const
{
    Variant result = get(property);
    if (!result.become(type))
        throw SpreadsheetError("Excel gave no " + std::string(what) + " for " + quoted(property) + ".");
    return result;
}

std::int32_t ExcelObject::number(const wchar_t* property) const
{
    return converted(property, VT_I4, "number").raw().lVal;
}

std::string ExcelObject::text(const wchar_t* property) const
{
    const Variant result = converted(property, VT_BSTR, "text");
    return toUtf8({result.raw().bstrVal, ::SysStringLen(result.raw().bstrVal)});
}

ExcelObject ExcelObject::child(const Variant& result, std::string_view whenNothing) const
{
    const VARIANT& value = result.raw();
    const bool isObject = value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN;
    void* object = nullptr;
    if (!isObject || value.punkVal == nullptr || FAILED(value.punkVal->QueryInterface(IID_IDispatch, &object)))
        throw SpreadsheetError(std::string(whenNothing));
    return {m_references, Dispatch(static_cast<IDispatch*>(object))};
}

} // namespace wagemill
