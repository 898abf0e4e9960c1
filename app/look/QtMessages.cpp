#include "app/look/QtMessages.h"

#include "app/look/Look.h"

#include <QApplication>
#include <QFontMetrics>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>

#include <algorithm>
#include <string>

namespace wagemill {

namespace {

constexpr int readableLine = 80; // characters
constexpr int titleButtons = 5;  // icon and buttons of a title bar, in line heights

/// Qt draws a bare carriage return as nothing.
QString withLineFeeds(const std::string& text)
{
    QString lines = QString::fromStdString(text);
    lines.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    lines.replace(QChar(u'\r'), QChar(u'\n'));
    return lines;
}

QMessageBox::Icon boxIcon(MessageIcon icon)
{
    switch (icon) {
    case MessageIcon::Information:
        return QMessageBox::Information;
    case MessageIcon::Warning:
        return QMessageBox::Warning;
    case MessageIcon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons boxButtons(MessageButtons buttons)
{
    return buttons == MessageButtons::YesNo ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok;
}

/// A line breaks after so many characters at the earliest, so that an address stays whole; and the title is read whole.
void giveRoom(const QMessageBox& box)
{
    auto* const label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
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

void nameButtons(const QMessageBox& box)
{
    for (const auto& [button, name] :
         {std::pair(QMessageBox::Ok, "OK"), std::pair(QMessageBox::Yes, "Yes"), std::pair(QMessageBox::No, "No")})
        if (QAbstractButton* found = box.button(button))
            found->setObjectName(QString::fromLatin1(name));
}

} // namespace

MessageAnswer QtMessages::show(const Message& message)
{
    const std::string title = message.title.empty() ? applicationTitle() : message.title;
    const bool isQuestion = message.buttons == MessageButtons::YesNo;
    QMessageBox box(boxIcon(message.icon), QString::fromStdString(title), QString(), boxButtons(message.buttons),
                    QApplication::activeWindow());
    box.setObjectName(QStringLiteral("MessageBox"));
    applyDesignFont(box);
    box.setTextFormat(Qt::PlainText); // before the text: a message is never read as markup
    box.setText(withLineFeeds(message.text));
    giveRoom(box);
    box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    box.setEscapeButton(isQuestion ? QMessageBox::No : QMessageBox::Ok);
    box.setDefaultButton(isQuestion ? QMessageBox::Yes : QMessageBox::Ok);
    box.setWindowModality(Qt::ApplicationModal);
    nameButtons(box);
    const int answer = box.exec();
    if (!isQuestion)
        return MessageAnswer::Ok;
    return answer == QMessageBox::Yes ? MessageAnswer::Yes : MessageAnswer::No;
}

} // namespace wagemill
