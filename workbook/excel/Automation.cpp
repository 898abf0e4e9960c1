#include "workbook/excel/Automation.h"

#include "app/base/text/WideText.h"
#include "workbook/excel/CallWatch.h"
#include "workbook/excel/FailureText.h"

#include <utility>

namespace wagemill::automation {

namespace {

std::string quoted(const wchar_t* member)
{
    return "\"" + toUtf8(member) + "\"";
}

/// Runs the work; a failure becomes one in the user's words.
template <typename Work>
auto namingThePlace(const std::string& place, Work&& work)
{
    const CallWatch::Call call;
    try {
        return work();
    } catch (const CallFailure& failure) {
        throw SpreadsheetError(failureText(place, failure));
    }
}

[[noreturn]] void throwNoValue(const char* what, const wchar_t* member)
{
    throw SpreadsheetError("Excel gave no " + std::string(what) + " for " + quoted(member) + ".");
}

void putIn(const Dispatch& object, const wchar_t* property, Arguments arguments, Variant value, LCID locale)
{
    arguments.push_back(std::move(value));
    object.invoke({object.identifiers({property}).front(), DISPID_PROPERTYPUT}, CallKind::Put, arguments, locale);
}

} // namespace

Variant Object::get(const wchar_t* property, const Arguments& arguments) const
{
    return namingThePlace(quoted(property), [&] {
        return m_reference.invoke(m_reference.identifiers({property}),
                                  arguments.empty() ? CallKind::Get : CallKind::GetItem, arguments);
    });
}

void Object::put(const wchar_t* property, Arguments arguments, Variant value) const
{
    namingThePlace(quoted(property),
                   [&] { putIn(m_reference, property, std::move(arguments), std::move(value), englishUnitedStates); });
}

void Object::putTyped(const wchar_t* property, Arguments arguments, Variant text, LCID locale,
                      std::string_view place) const
{
    namingThePlace(std::string(place),
                   [&] { putIn(m_reference, property, std::move(arguments), std::move(text), locale); });
}

Variant Object::call(const wchar_t* method, Arguments arguments, NamedArguments named) const
{
    std::vector<std::wstring> names = {method};
    for (NamedArgument& argument : named) {
        names.push_back(std::move(argument.name));
        arguments.push_back(std::move(argument.value));
    }
    return namingThePlace(quoted(method), [&] {
        return m_reference.invoke(m_reference.identifiers(std::move(names)), CallKind::Call, arguments);
    });
}

Object createObject(const wchar_t* programId)
{
    return namingThePlace(quoted(programId), [&] { return Object(Dispatch(programId, CLSCTX_LOCAL_SERVER)); });
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
    return Object(Dispatch(static_cast<IDispatch*>(object)));
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

} // namespace wagemill::automation
