#include "workbook/excel/ExcelReferences.h"

#include "workbook/excel/FailureText.h"

#include <utility>

namespace wagemill {

ExcelReferences::ExcelReferences(LCID locale) : typingLocale(locale)
{
    if (FAILED(m_apartment.result()))
        throw SpreadsheetError(failureText("its start", automation::CallFailure(m_apartment.result())));
}

ExcelReferences::Key ExcelReferences::add(automation::Object object)
{
    m_objects.emplace(++m_lastKey, std::move(object));
    return m_lastKey;
}

const automation::Object& ExcelReferences::at(Key key) const
{
    const auto found = m_objects.find(key);
    if (found == m_objects.end())
        throw SpreadsheetError("The Excel session has ended.");
    return found->second;
}

ExcelObject::ExcelObject(std::shared_ptr<ExcelReferences> references, automation::Object object)
    : m_references(std::move(references)), m_key(m_references->add(std::move(object)))
{
}

ExcelObject::~ExcelObject()
{
    if (m_references)
        m_references->release(m_key);
}

ExcelObject ExcelObject::child(const automation::Variant& result, std::string_view whenNothing) const
{
    auto object = automation::objectIn(result);
    if (!object)
        throw SpreadsheetError(std::string(whenNothing));
    return {m_references, std::move(*object)};
}

} // namespace wagemill
