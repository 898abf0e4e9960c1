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

/// A line breaks after so many characters at the earliest, so that an address stays whole.
void giveRoom(const QMessageBox& box, const QString& text)
{
    auto* const label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    if (label == nullptr)
        return;
    label->ensurePolished();
    const QFontMetrics metrics = label->fontMetrics();
    const int widest = metrics.boundingRect({}, Qt::TextExpandTabs, text).width() + metrics.averageCharWidth();
    const int screenWidth = box.screen()->availableSize().width();
    label->setMinimumWidth(std::min({widest, metrics.averageCharWidth() * readableLine, screenWidth * 3 / 4}));
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
    box.setTextFormat(Qt::PlainText); // before the text: a message is never read as markup
    box.setText(withLineFeeds(message.text));
    giveRoom(box, box.text());
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
