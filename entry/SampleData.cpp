#include "entry/SampleData.h"

#include "app/base/text/NumberText.h"

namespace wagemill {

std::string sampleText(std::size_t field, const RegionalFormats& formats)
{
    const std::string_view sample = sampleRow.at(field);
    if (rowFields.at(field).kind != FieldKind::Currency)
        return std::string(sample);
    const RegionalFormats tableFormats; // the table is written in the United States' form
    return currencyText(readNumber(sample, tableFormats).value().number, formats);
}

CalendarDate samplePeriodEnding(CalendarDate today)
{
    return dateFromDaysSinceEpoch(daysSinceEpoch({today.year, today.month, 1}) - 1);
}

} // namespace wagemill
