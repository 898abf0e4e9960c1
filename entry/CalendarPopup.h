#pragma once

#include <QCalendarWidget>

namespace wagemill {

/// A calendar that opens beside a field. Enter or a click takes a day; Escape or a click elsewhere closes it without.
class CalendarPopup : public QCalendarWidget {
    Q_OBJECT

public:
    explicit CalendarPopup(QWidget* field);

    void openAt(QDate date);

signals:
    void picked(QDate date);

private:
    void selectInPage(int year, int month);
    void take(QDate date);
    void place();
};

} // namespace wagemill
