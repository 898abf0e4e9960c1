#include "app/look/QtMessages.h"

#include "app/look/Look.h"

#include <QApplication>
#include <QFontMetrics>
#include <QLabel>
#include <QMessageBox>
#include <QScreen>

#include <algorithm>

namespace wagemill {

namespace {

constexpr int readableLine = 80; // characters
constexpr int titleButtons = 5;  // icon and buttons of a title bar, in line heights

/// In the order of MessageIcon.
constexpr QMessageBox::Icon icons[] = {QMessageBox::NoIcon, QMessageBox::Information, QMessageBox::Warning};

/// A line breaks after so many characters at the earliest, so that an address stays whole; and the title is read whole.
void giveRoom(const QMessageBox& box)
{
    auto* const label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label")); // Qt's name of it
    if (label == nullptr)
        return;
    label->ensurePolished();
    const QFontMetrics metrics = label->fontMetrics();
    const int widest = metrics.boundingRect({}, Qt::TextExpandTabs, box.text()).width() + metrics.averageCharWidth();
    const int readable = std::min(widest, metrics.averageCharWidth() * readableLine);
    QFont bold = label->font();
    bold.setBold(true);
    const int title = QFontMetrics(bold).horizontalAdvance(box.windowTitle()) + metrics.height() * titleButtons;
    label->setMinimumWidth(std::min(std::max(readable, title), box.screen()->availableSize().width() * 3 / 4));
}

} // namespace

MessageAnswer QtMessages::show(const Message& message)
{
    const QString title = QString::fromStdString(message.title);
    const bool isQuestion = message.buttons == MessageButtons::YesNo;
    QString text = QString::fromStdString(message.text); // Qt draws a bare carriage return as nothing
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(QChar(u'\r'), QChar(u'\n'));
    QMessageBox box(icons[static_cast<std::size_t>(message.icon)],
                    title.isEmpty() ? QApplication::applicationName() : title, QString(),
                    isQuestion ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok, QApplication::activeWindow());
    applyDesignFont(box);
    box.setTextFormat(Qt::PlainText); // before the text: a message is never read as markup
    box.setText(text);
    giveRoom(box);
    box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    box.setDefaultButton(isQuestion ? QMessageBox::Yes : QMessageBox::Ok); // Escape is No, or OK alone
    const int answer = box.exec();
    if (!isQuestion)
        return MessageAnswer::Ok;
    return answer == QMessageBox::Yes ? MessageAnswer::Yes : MessageAnswer::No;
}

} // namespace wagemill
