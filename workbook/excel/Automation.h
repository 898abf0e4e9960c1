#pragma once

#include "app/base/Dispatch.h"
#include "workbook/spreadsheet/Spreadsheet.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Excel's objects: every member is looked up by its name when it is called. What fails throws SpreadsheetError, which
/// says in the user's words which member or cell failed, and why.
namespace wagemill::automation {

struct NamedArgument {
    std::wstring name;
    Variant value;
};

using NamedArguments = std::vector<NamedArgument>;

class Object {
public:
    explicit Object(Dispatch reference) : m_reference(std::move(reference)) {}

    /// Reads a property; one with arguments picks an item.
    Variant get(const wchar_t* property, const Arguments& arguments = {}) const;
    void put(const wchar_t* property, Arguments arguments, Variant value) const;
    /// Puts a text that is read as a user with the regional format `locale` types it.
    /// place  what a failure names instead of the property: "cell G4"
    void putTyped(const wchar_t* property, Arguments arguments, Variant text, LCID locale,
                  std::string_view place) const;
    Variant call(const wchar_t* method, Arguments arguments = {}, NamedArguments named = {}) const;

private:
    Dispatch m_reference;
};

/// A new object of the class, such as "Excel.Application", in a process of its own.
Object createObject(const wchar_t* programId);

/// The object in a result, nothing when it is Nothing, Empty or Null.
std::optional<Object> objectIn(const Variant& result);
/// member  named by the failure when the result is not a number or text
std::int32_t int32In(Variant result, const wchar_t* member);
std::string textIn(Variant result, const wchar_t* member);

} // namespace wagemill::automation
