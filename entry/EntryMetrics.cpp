#include "entry/EntryMetrics.h"

#include "entry/data/RowFields.h"

#include <QFontMetrics>
#include <QString>

namespace wagemill {

namespace {

constexpr std::string_view longestUnbrokenCaption = rowFields[rowFieldIndex("txtOtherRegDeduction")].caption;
constexpr int charactersInField = 21;
constexpr int linesOfFrames = 6; ///< frames, margins and scroll bar around the columns, in line heights

} // namespace

EntryMetrics entryMetrics(const QFontMetrics& font, int availableWidth)
{
    EntryMetrics metrics;
    metrics.line = font.height();
    metrics.labelWidth = font.horizontalAdvance(QString::fromUtf8(longestUnbrokenCaption)) + 2;
    metrics.fieldWidth = font.averageCharWidth() * charactersInField;
    if (2 * metrics.columnWidth() + metrics.columnGap() + linesOfFrames * metrics.line > availableWidth)
        metrics.columns = 1;
    return metrics;
}

} // namespace wagemill
