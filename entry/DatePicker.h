#pragma once

#include <QDateEdit>

namespace wagemill {

/// A date field that is one stop of the tab key; its parts are reached by the arrow keys.
class DatePicker : public QDateEdit {
    Q_OBJECT

public:
    using QDateEdit::QDateEdit;

protected:
    bool focusNextPrevChild(bool next) override
    {
        return QWidget::focusNextPrevChild(
            next); // NOLINT(bugprone-parent-virtual-call): the parent's stops at each part
    }
};

} // namespace wagemill
