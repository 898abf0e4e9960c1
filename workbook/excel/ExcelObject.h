#pragma once

#include "app/base/Dispatch.h"
#include "workbook/excel/CallFilter.h"
#include "workbook/spreadsheet/Spreadsheet.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace wagemill {

/// Every reference to objects of one running Excel. They are kept in one place so that all of them go when the session
/// ends: one that stayed would keep Excel's process running.
class ExcelReferences {
public:
    using Key = std::uint64_t;

    /// typingLocale  the regional format of the user who types into the cells
    /// Throws SpreadsheetError where this thread cannot call other processes.
    explicit ExcelReferences(LCID typingLocale);

    Key add(automation::Dispatch object);
    void release(Key key) { m_objects.erase(key); }
    void releaseAll() { m_objects.clear(); }
    /// Throws SpreadsheetError once the session has ended.
    const automation::Dispatch& at(Key key) const;

    const LCID typingLocale;

private:
    automation::Apartment m_apartment; // before, and so longer than, everything that calls
    std::shared_ptr<void> m_filter = automation::filterCalls();
    std::map<Key, automation::Dispatch> m_objects;
    Key m_lastKey = 0;
};

struct NamedArgument {
    std::wstring name;
    automation::Variant value;
};

using NamedArguments = std::vector<NamedArgument>;

/// One object of a running Excel: every member is looked up by its name when it is called. What fails throws
/// SpreadsheetError, which says in the user's words which member or cell failed, and why.
class ExcelObject {
public:
    ExcelObject(std::shared_ptr<ExcelReferences> references, automation::Dispatch object);
    /// A new object of the class, such as "Excel.Application", in a process of its own.
    ExcelObject(std::shared_ptr<ExcelReferences> references, const wchar_t* programId);
    ExcelObject(ExcelObject&& other) = default; // what was moved from has no references, and releases nothing
    ExcelObject& operator=(ExcelObject&&) = delete;
    ExcelObject(const ExcelObject&) = delete;
    ExcelObject& operator=(const ExcelObject&) = delete;
    ~ExcelObject();

    /// Reads a property; one with arguments picks an item.
    automation::Variant get(const wchar_t* property, const automation::Arguments& arguments = {}) const;
    void put(const wchar_t* property, automation::Variant value) const;
    /// Puts a text that is read as the user types it.
    /// place  what a failure names instead of the property: "cell G4"
    void putTyped(const wchar_t* property, automation::Arguments arguments, std::string_view text,
                  std::string_view place) const;
    automation::Variant call(const wchar_t* method, automation::Arguments arguments = {},
                             const NamedArguments& named = {}) const;

    std::int32_t number(const wchar_t* property) const;
    std::string text(const wchar_t* property) const;
    /// The object that a member of this one gave. Throws SpreadsheetError( `whenNothing` ) when it gave none.
    ExcelObject child(const automation::Variant& result, std::string_view whenNothing) const;

    /// Releases every reference of the session, this one too.
    void endSession() { m_references->releaseAll(); }

private:
    /// place  what a failure names
    /// names  of the member and, after it, of its last arguments
    automation::Variant invoke(std::string_view place, std::vector<std::wstring> names, automation::CallKind kind,
                               const automation::Arguments& arguments,
                               LCID locale = automation::englishUnitedStates) const;
    automation::Variant converted(const wchar_t* property, VARTYPE type, const char* what) const;

    std::shared_ptr<ExcelReferences> m_references;
    ExcelReferences::Key m_key;
};

} // namespace wagemill
