#include "app/look/ReadablePalette.h"
#include "entry/EntryArea.h"
#include "tests/entry/EntryWindow.h"

#include <QHash>
#include <QImage>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QTableView>

#include <algorithm>

using namespace wagemill;
using namespace wagemill::test;

namespace {

/// With the skin that is shipped; font and colours are the user's again afterwards.
class EntryLook : public EntryWindow {
protected:
    EntryLook() { setProgramFolder(WAGEMILL_SOURCE_DIR "/resources"); }
    ~EntryLook() override
    {
        form.reset();
        setProgramFolder({});
        QApplication::setFont(m_font);
        QApplication::setPalette(m_palette);
    }
    QScrollArea* area() const { return form->findChild<QScrollArea*>(); }

private:
    QFont m_font = QApplication::font();
    QPalette m_palette = QApplication::palette();
};

struct Desktop {
    const char* background;
    const char* field;
    const char* ink;
    const char* highlight;
};

/// The light one, the dark one, one of high contrast and a faint one.
constexpr Desktop desktops[] = {{"#efefef", "#ffffff", "#000000", "#308cc6"},
                                {"#31363b", "#232629", "#eff0f1", "#3daee9"},
                                {"#000000", "#000000", "#ffffff", "#ffff00"},
                                {"#c0c0c0", "#d0d0d0", "#909090", "#b0b0ff"}};

/// Contrast between the background of a widget, its most frequent colour, and what stands out most from it.
double shownContrast(QWidget& widget, QRect part = {0, 0, -1, -1})
{
    const QImage image = widget.grab(part).toImage();
    QHash<QRgb, int> counts;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            ++counts[image.pixel(x, y)];
    const QColor background = std::max_element(counts.cbegin(), counts.cend()).key();
    double best = 1;
    for (const QRgb color : counts.keys())
        best = std::max(best, contrastRatio(background, color));
    return best;
}

TEST_F(EntryLook, CanBeReadOnEveryDesktop)
{
    for (const auto& [background, base, ink, highlight] : desktops) {
        QPalette palette{QColor(background), QColor(background)};
        for (const auto role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text, QPalette::AlternateBase})
            palette.setColor(role, QColor(ink));
        palette.setColor(QPalette::Base, QColor(base));
        palette.setColor(QPalette::Highlight, QColor(highlight));
        QApplication::setPalette(readablePalette(palette));
        open();
        click("PushButton7");
        for (QWidget* shown : form->findChildren<QWidget*>()) {
            const auto* const entry = qobject_cast<EntryField*>(shown);
            const bool hasText = qobject_cast<PushButton*>(shown) || qobject_cast<QLabel*>(shown) ||
                                 (entry != nullptr && !entry->text().isEmpty());
            EXPECT_TRUE(!hasText || shownContrast(*shown) >= 4.5)
                << shown->objectName().toStdString() << " on " << background;
        }
        EXPECT_GE(shownContrast(*field("txtTaxStatus(0)")), 3) << "the frame of an empty field on " << background;
        field("dtPeriodEnding")->setFocus();
        press(Qt::Key_F4);
        auto* const calendar = control<QTableView>("qt_calendar_calendarview");
        for (int day = 0; day < 7; ++day)
            EXPECT_GE(shownContrast(*calendar->viewport(), calendar->visualRect(calendar->model()->index(0, day))), 4.5)
                << "the name of day " << day << " on " << background;
        EXPECT_EQ(form->palette().color(QPalette::Button), QColor(background)) << "the user's own";
    }
}

bool isWhole(const QWidget& text)
{
    const QSize needed = text.minimumSizeHint().expandedTo({0, text.heightForWidth(text.width())});
    return text.size().expandedTo(needed) == text.size();
}

TEST_F(EntryLook, CutsNothingWhateverTheSizeOfTheLetters)
{
    for (const double points : {7.0, 9.0, 12.0, 18.0, 27.0}) { // up to three times the usual
        QFont font = QApplication::font();
        font.setPointSizeF(points);
        QApplication::setFont(font);
        open();
        for (QWidget* shown : form->findChildren<QWidget*>())
            if (qobject_cast<QLabel*>(shown) != nullptr || qobject_cast<EntryField*>(shown) != nullptr ||
                qobject_cast<QPushButton*>(shown) != nullptr) {
                const bool isInside = shown->parentWidget()->rect().contains(shown->geometry());
                EXPECT_TRUE(isWhole(*shown) && isInside) << shown->objectName().toStdString() << " at " << points;
            }
        const QSize room = form->screen()->availableSize() - QSize(8, 40);
        const QSize content = area()->widget()->size();
        const bool scrollsDown = content.height() > room.height();
        EXPECT_EQ(area()->verticalScrollBar()->isVisible(), scrollsDown) << points;
        const int scrollBar = scrollsDown ? area()->verticalScrollBar()->width() : 0;
        EXPECT_EQ(area()->horizontalScrollBar()->isVisible(), content.width() + scrollBar > room.width()) << points;
        EXPECT_EQ(form->size().boundedTo(room), form->size());
    }
}

TEST_F(EntryLook, FitsTheUsualScreensAndOneGrid)
{
    open();
    EXPECT_LE(area()->sizeHint().height(), 600 - 40) << "of 800 x 600, with the frame of the window manager";
    EXPECT_EQ(area()->verticalScrollBar()->maximum(), 0);
    const auto* const content = static_cast<EntryArea*>(area());
    const QSize bar(area()->verticalScrollBar()->sizeHint().width(),
                    area()->horizontalScrollBar()->sizeHint().height());
    EXPECT_EQ(content->sizeWithin(content->sizeHint()), content->sizeHint());
    EXPECT_EQ(content->sizeWithin({9999, 300}), QSize(content->sizeHint().width() + bar.width(), 300));
    EXPECT_EQ(content->sizeWithin({300, 9999}), QSize(300, content->sizeHint().height() + bar.height()));
    form->resize(800 - 8, 480 - 40);
    EXPECT_GT(area()->verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(area()->horizontalScrollBar()->maximum(), 0) << "beside the scroll bar that is needed";
    form->resize(1900, 1000); // as when it is maximised
    QApplication::processEvents();
    EXPECT_EQ(area()->size(), form->size());
    EXPECT_LE((area()->widget()->geometry().center() - form->rect().center()).manhattanLength(), 2);
    const auto place = [&](const char* name) {
        auto* const widget = control<QWidget>(name);
        return QRect(widget->mapTo(form.get(), QPoint()), widget->size());
    };
    EXPECT_EQ(place("txtSocialSecurityTax(0)").top(), place("txtOtherDeduction(0)").top());
    EXPECT_EQ(place("txtCompanyName").right(), place("txtName(0)").right());
    EXPECT_EQ(place("dtPeriodEnding").left(), place("txtOT(0)").left());
    EXPECT_EQ(place("dtPeriodEnding").right(), place("txtOT(0)").right());
    EXPECT_EQ(place("Frame3").right(), place("PushButton22").right());
}

} // namespace
