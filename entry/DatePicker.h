#pragma once

#include <QDateEdit>

namespace wagemill {

/// A date field that is one stop of the tab key; its parts are reached by the arrow keys and by typing what stands
/// between them. The mouse wheel turns it only while it has the focus.
class DatePicker : public QDateEdit {
    Q_OBJECT

public:
    explicit DatePicker(QDate date, QWidget* parent = nullptr);

protected:
    bool focusNextPrevChild(bool next) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void goToNextPart();

    bool m_partWasCompleted = false; ///< the last key filled its part, which moved on by itself
};

} // namespace wagemill
