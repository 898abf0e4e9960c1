#pragma once

#include "app/base/RegionalFormats.h"

#include <QDateEdit>

namespace wagemill {

/// A date field that is one stop of the tab key; its parts are reached by the arrow keys and by typing what stands
/// between them. A whole date that is typed, up to its year of four digits, is taken as it stands: part by part, the
/// 31st would be refused while a shorter month is shown. The mouse wheel turns it only while it has the focus.
class DatePicker : public QDateEdit {
    Q_OBJECT

public:
    DatePicker(QDate date, RegionalFormats formats, QWidget* parent = nullptr);

protected:
    bool focusNextPrevChild(bool next) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void goToNextPart();
    void takeWholeDate();

    RegionalFormats m_formats;
    QString m_typed;                 ///< digits and separators since the focus came or another key was pressed
    bool m_partWasCompleted = false; ///< the last key filled its part, which moved on by itself
};

} // namespace wagemill
