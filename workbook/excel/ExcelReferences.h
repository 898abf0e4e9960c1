#pragma once

#include "workbook/excel/Automation.h"
#include "workbook/excel/CallFilter.h"

#include <cstdint>
#include <map>
#include <memory>

namespace wagemill {

/// Every reference to objects of one running Excel. They are kept in one place so that all of them go when the session
/// ends: one that stayed behind would keep Excel's process running.
class ExcelReferences {
public:
    using Key = std::uint64_t;

    /// Throws SpreadsheetError where this thread cannot call other processes.
    explicit ExcelReferences(LCID typingLocale);

    Key add(automation::Object object);
    void release(Key key) { m_objects.erase(key); }
    void releaseAll() { m_objects.clear(); }
    /// Throws SpreadsheetError once the session has ended.
    const automation::Object& at(Key key) const;

    const LCID typingLocale; ///< of the user who types into the cells

private:
    automation::Apartment m_apartment; // before, and so longer than, everything that calls
    std::shared_ptr<automation::CallFilter> m_filter = automation::CallFilter::ofThisThread();
    std::map<Key, automation::Object> m_objects;
    Key m_lastKey = 0;
};

/// One object of a running Excel; its members fail once the session has ended.
class ExcelObject {
public:
    ExcelObject(std::shared_ptr<ExcelReferences> references, automation::Object object);
    ExcelObject(ExcelObject&& other) = default; // what was moved from has no references, and releases nothing
    ExcelObject& operator=(ExcelObject&&) = delete;
    ExcelObject(const ExcelObject&) = delete;
    ExcelObject& operator=(const ExcelObject&) = delete;
    ~ExcelObject();

    const automation::Object& operator*() const { return m_references->at(m_key); }
    const automation::Object* operator->() const { return &m_references->at(m_key); }

    /// The object that a member of this one gave. Throws SpreadsheetError( `whenNothing` ) when it gave none.
    ExcelObject child(const automation::Variant& result, std::string_view whenNothing) const;
    LCID typingLocale() const { return m_references->typingLocale; }
    /// Releases every reference of the session, this one too.
    void endSession() { m_references->releaseAll(); }

private:
    std::shared_ptr<ExcelReferences> m_references;
    ExcelReferences::Key m_key;
};

} // namespace wagemill
