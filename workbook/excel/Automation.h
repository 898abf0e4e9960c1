#pragma once

#include "workbook/spreadsheet/Spreadsheet.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <windows.h>

#include <oleauto.h>

/// Late-bound calls on automation objects: every member is looked up by its name when it is called. Names and texts of
/// failures are meant for the user, so a failure says which member failed and why; all are SpreadsheetError.
/// https://learn.microsoft.com/windows/win32/api/oaidl/nn-oaidl-idispatch
namespace wagemill::automation {

/// A VARIANT that clears itself; empty at first.
class Variant {
public:
    Variant() = default;
    Variant(Variant&& other) noexcept;
    Variant& operator=(Variant&& other) noexcept;
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant();

    static Variant ofInt16(std::int16_t number);  ///< VT_I2
    static Variant ofInt32(std::int32_t number);  ///< VT_I4
    static Variant ofBoolean(bool value);         ///< VT_BOOL
    static Variant ofText(std::string_view utf8); ///< VT_BSTR
    static Variant omitted();                     ///< VT_ERROR DISP_E_PARAMNOTFOUND: an argument that is not given

    const VARIANT& raw() const { return m_value; }
    /// Where a call puts its result; what was there is cleared.
    VARIANT* receive();
    /// Converts the value in place; false when that cannot be. Nothing at all is no value of any type.
    bool become(VARTYPE type);

private:
    VARIANT m_value = {};
};

struct NamedArgument {
    std::wstring name;
    Variant value;
};

using Arguments = std::vector<Variant>;
using NamedArguments = std::vector<NamedArgument>;

/// One argument or more as a list; a list in braces would copy them.
template <typename... Values>
Arguments arguments(Values... values)
{
    Arguments list;
    list.reserve(sizeof...(values));
    (list.push_back(std::move(values)), ...);
    return list;
}

/// A counted reference to an automation object.
class Object {
public:
    /// Takes over the reference, which is not null.
    explicit Object(IDispatch* reference) : m_reference(reference) {}
    Object(Object&& other) noexcept;
    Object& operator=(Object&&) = delete;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    ~Object();

    /// Reads a property; one with arguments picks an item.
    Variant get(const wchar_t* property, const Arguments& arguments = {}) const;
    void put(const wchar_t* property, const Arguments& arguments, const Variant& value) const;
    Variant call(const wchar_t* method, const Arguments& arguments = {}, const NamedArguments& named = {}) const;

private:
    IDispatch* m_reference;
};

/// A new object of the class, such as "Excel.Application", in a process of its own.
Object createObject(const wchar_t* programId);

/// The object in a result, nothing when it is Nothing, Empty or Null.
std::optional<Object> objectIn(const Variant& result);
/// member  named by the failure when the result is no number or text
std::int32_t int32In(Variant result, const wchar_t* member);
std::string textIn(Variant result, const wchar_t* member);

/// COM for as long as this lives, on this thread; harmless where the window system has initialised it already.
class Apartment {
public:
    Apartment();
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment();

private:
    HRESULT m_result;
};

} // namespace wagemill::automation
