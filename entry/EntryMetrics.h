#pragma once

#include "entry/data/RowFields.h"

#include <QFontMetrics>
#include <QString>

namespace wagemill {

/// The sizes that the entry window is laid out with, in device-independent pixels. They follow the user's font, so that
/// larger letters get the room they need.
struct EntryMetrics {
    int line = 0;       ///< height of a line of text: the measure of margins and gaps
    int labelWidth = 0; ///< every caption but the longest is on one line
    int fieldWidth = 0;
    int columns = 2; ///< of fields side by side; 1 where two would be wider than the screen

    int smallGap() const { return line / 2; }
    int groupGap() const { return line * 3 / 4; }
    int columnWidth() const { return labelWidth + smallGap() + fieldWidth; }
    int columnGap() const { return line * 2; }
};

/// availableWidth  of the screen, in device-independent pixels
inline EntryMetrics entryMetrics(const QFontMetrics& font, int availableWidth)
{
    constexpr std::string_view longestUnbrokenCaption = rowFields[rowFieldIndex("txtOtherRegDeduction")].caption;
    constexpr int charactersInField = 21;
    EntryMetrics metrics = {font.height(), font.horizontalAdvance(QString::fromUtf8(longestUnbrokenCaption)) + 2,
                            font.averageCharWidth() * charactersInField};
    const int frames = 6 * metrics.line; // with margins and scroll bar around the columns
    if (2 * metrics.columnWidth() + metrics.columnGap() + frames > availableWidth)
        metrics.columns = 1;
    return metrics;
}

} // namespace wagemill
