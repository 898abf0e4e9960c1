#include "app/base/Files.h"
#include "app/look/ReadablePalette.h"
#include "tests/entry/EntryWindow.h"

#include <QGroupBox>
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

QPalette desktop(const char* background, const char* field, const char* ink, const char* highlight,
                 const char* highlightedInk)
{
    QPalette palette{QColor(background), QColor(background)};
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text})
        palette.setColor(role, QColor(ink));
    palette.setColor(QPalette::Base, QColor(field));
    palette.setColor(QPalette::AlternateBase, QColor(ink)); // meant for rows of tables, with any text colour
    palette.setColor(QPalette::Highlight, QColor(highlight));
    palette.setColor(QPalette::HighlightedText, QColor(highlightedInk));
    return palette;
}

const std::pair<const char*, QPalette> desktops[] = {
    {"light", desktop("#efefef", "#ffffff", "#000000", "#308cc6", "#ffffff")},
    {"dark", desktop("#31363b", "#232629", "#eff0f1", "#3daee9", "#eff0f1")},
    {"black", desktop("#000000", "#000000", "#ffffff", "#ffff00", "#000000")},
    {"faint", desktop("#c0c0c0", "#d0d0d0", "#909090", "#b0b0ff", "#ffffff")},
};

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
    for (const auto& [name, palette] : desktops) {
        QApplication::setPalette(readablePalette(palette));
        open();
        click("PushButton7");
        std::vector<QWidget*> texts = {control<PushButton>("PushButton6"), control<PushButton>("PushButton7"),
                                       control<PushButton>("PushButton22")};
        for (QLabel* label : form->findChildren<QLabel*>())
            texts.push_back(label);
        for (EntryField* entry : form->findChildren<EntryField*>())
            if (!entry->text().isEmpty())
                texts.push_back(entry);
        for (QWidget* shown : texts)
            EXPECT_GE(shownContrast(*shown), 4.5)
                << shown->objectName().toStdString() << " on a " << name << " desktop";
        EXPECT_GE(shownContrast(*field("txtTaxStatus(0)")), 3)
            << "the frame of an empty field on a " << name << " desktop";
        field("dtPeriodEnding")->setFocus();
        press(Qt::Key_F4);
        auto* const calendar = control<QTableView>("qt_calendar_calendarview");
        for (int day = 0; day < 7; ++day)
            EXPECT_GE(shownContrast(*calendar->viewport(), calendar->visualRect(calendar->model()->index(0, day))), 4.5)
                << "the name of day " << day << " on a " << name << " desktop";
        EXPECT_EQ(form->palette().color(QPalette::Button), palette.color(QPalette::Button))
            << "the user's own background";
    }
}

bool isWhole(QWidget& text)
{
    const QFontMetrics metrics = text.fontMetrics();
    if (auto* const label = qobject_cast<QLabel*>(&text)) {
        const QRect needed = metrics.boundingRect(label->contentsRect(), Qt::TextWordWrap, label->text());
        return label->contentsRect().size().expandedTo(needed.size()) == label->contentsRect().size();
    }
    if (auto* const button = qobject_cast<QPushButton*>(&text))
        return button->size().expandedTo(button->minimumSizeHint()) == button->size();
    return text.height() >= metrics.height();
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
                EXPECT_TRUE(isWhole(*shown)) << shown->objectName().toStdString() << " at " << points << " points";
                EXPECT_TRUE(shown->parentWidget()->rect().contains(shown->geometry()))
                    << shown->objectName().toStdString() << " at " << points << " points";
            }
        const QSize room = form->screen()->availableSize() - QSize(8, 40);
        const QSize content = area()->widget()->size();
        const bool scrollsDown = content.height() > room.height();
        EXPECT_EQ(area()->verticalScrollBar()->isVisible(), scrollsDown) << points << " points";
        const int scrollBar = scrollsDown ? area()->verticalScrollBar()->width() : 0;
        EXPECT_EQ(area()->horizontalScrollBar()->isVisible(), content.width() + scrollBar > room.width())
            << points << " points";
        EXPECT_LE(form->width(), room.width());
        EXPECT_LE(form->height(), room.height());
    }
}

TEST_F(EntryLook, FitsTheUsualScreensAndOneGrid)
{
    open();
    EXPECT_LE(area()->sizeHint().height(), 600 - 40) << "of 800 x 600, with the frame of the window manager";
    EXPECT_EQ(area()->verticalScrollBar()->maximum(), 0);
    form->resize(800 - 8, 480 - 40);
    EXPECT_GT(area()->verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(area()->horizontalScrollBar()->maximum(), 0) << "beside the scroll bar that is needed";
    form->resize(1900, 1000); // as when it is maximised
    QApplication::processEvents();
    EXPECT_EQ(area()->size(), form->size());
    EXPECT_LE((area()->widget()->geometry().center() - form->rect().center()).manhattanLength(), 2);
    const auto place = [&](QWidget* widget) { return QRect(widget->mapTo(form.get(), QPoint()), widget->size()); };
    for (const auto& [left, right] :
         {std::pair("txtEmployeeID(0)", "txtInsuranceDeduction(0)"),
          std::pair("txtHourlyWage(0)", "txtRegHoursWorked(0)"), std::pair("txtFedAllowance(0)", "txtSickHours(0)"),
          std::pair("txtStateTax(0)", "txtOT(0)"), std::pair("txtSocialSecurityTax(0)", "txtOtherDeduction(0)")})
        EXPECT_EQ(place(field(left)).top(), place(field(right)).top()) << left;
    EXPECT_EQ(place(field("txtCompanyName")).right(), place(field("txtName(0)")).right());
    EXPECT_EQ(place(field("dtPeriodEnding")).left(), place(field("txtOT(0)")).left());
    EXPECT_EQ(place(field("dtPeriodEnding")).right(), place(field("txtOT(0)")).right());
    EXPECT_EQ(place(control<QGroupBox>("Frame3")).right(), place(control<PushButton>("PushButton22")).right());
}

} // namespace
