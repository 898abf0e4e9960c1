#include "app/look/UserRegion.h"

#include <QLocale>
#include <QRegularExpression>

#include <string>

namespace wagemill {

namespace {

/// The text without blanks and invisible characters around it.
QString trimmed(QString text)
{
    static const QRegularExpression around(QStringLiteral(R"(^[\s\p{Z}\p{Cf}]+|[\s\p{Z}\p{Cf}]+$)"));
    return text.remove(around);
}

/// What is around the digits of a text, whichever script's they are: money may be written in another than numbers.
/// Blanks alone are nothing: some currencies have no symbol.
Affixes affixesAround(const QString& money)
{
    static const QRegularExpression parts(QStringLiteral(R"(^(\P{Nd}*).*?(\P{Nd}*)$)"));
    const QRegularExpressionMatch found = parts.match(money);
    const auto visible = [&](int part) {
        const QString text = found.captured(part);
        return trimmed(text).isEmpty() ? std::string() : text.toStdString();
    };
    return {visible(1), visible(2)};
}

void setGrouping(RegionalFormats& formats, const QLocale& locale)
{
    const QString separator = locale.groupSeparator();
    if (separator.isEmpty())
        return;
    const QString long15 = locale.toString(qlonglong{111'111'111'111'111});
    const auto digitSize = locale.zeroDigit().size();
    const auto last = long15.lastIndexOf(separator);
    const auto previous = last < 0 ? -1 : long15.lastIndexOf(separator, last - 1);
    formats.firstGroup = static_cast<int>((long15.size() - last - separator.size()) / digitSize);
    formats.furtherGroups = static_cast<int>((last - previous - separator.size()) / digitSize);
    formats.digitsBeforeGrouping = 1;
    for (const double number : {1111.5, 11111.5}) // the form with decimals keeps the rule for short numbers
        formats.digitsBeforeGrouping += locale.toString(number, 'f', 1).contains(separator) ? 0 : 1;
}

void setCurrency(RegionalFormats& formats, const QLocale& locale)
{
    static const QRegularExpression betweenDigits(QStringLiteral(R"(\p{Nd}(\P{Nd}+)\p{Nd})"));
    const QString money = locale.toCurrencyString(1.5, QString(), 1); // in some locales without decimals
    const std::string decimal = betweenDigits.match(money).captured(1).toStdString();
    formats.currencyDecimalSeparator = decimal == formats.decimalSeparator ? "" : decimal;
    formats.currency = affixesAround(locale.toCurrencyString(1.0, QString(), 0));
    formats.negativeCurrency = affixesAround(locale.toCurrencyString(-1.0, QString(), 0));
    const QString affixes = QString::fromStdString(formats.currency.prefix + formats.currency.suffix);
    formats.currencySymbol = trimmed(affixes).toStdString();
}

void setNames(RegionalFormats& formats, const QLocale& locale)
{
    for (int month = 1; month <= 12; ++month) {
        const auto index = static_cast<std::size_t>(month - 1);
        formats.monthNames.at(index) = locale.monthName(month).toStdString();
        formats.shortMonthNames.at(index) = locale.monthName(month, QLocale::ShortFormat).toStdString();
    }
    for (int day = 0; day < 7; ++day) { // from Sunday, which is Qt's seventh day
        const auto index = static_cast<std::size_t>(day);
        formats.dayNames.at(index) = locale.dayName(day == 0 ? 7 : day).toStdString();
        formats.shortDayNames.at(index) = locale.dayName(day == 0 ? 7 : day, QLocale::ShortFormat).toStdString();
    }
    formats.amText = locale.amText().toStdString();
    formats.pmText = locale.pmText().toStdString();
}

} // namespace

RegionalFormats regionalFormatsOf(const QLocale& locale)
{
    if (locale.language() == QLocale::C)
        return {};
    RegionalFormats formats;
    formats.decimalSeparator = locale.decimalPoint().toStdString();
    formats.groupSeparator = locale.groupSeparator().toStdString();
    formats.zeroDigit = locale.zeroDigit().toUcs4().value(0, U'0');
    formats.negativeSign = locale.negativeSign().toStdString();
    formats.positiveSign = locale.positiveSign().toStdString();
    formats.percentSign = locale.percent().toStdString();
    setGrouping(formats, locale);
    setCurrency(formats, locale);
    static const QRegularExpression yearOutsideQuotes(QStringLiteral("'[^']*'(*SKIP)(*FAIL)|y+"));
    formats.shortDatePattern =
        locale.dateFormat(QLocale::ShortFormat).replace(yearOutsideQuotes, QStringLiteral("yyyy")).toStdString();
    const bool hasDot = locale.timeFormat(QLocale::ShortFormat).section(u'm', 0, 0).endsWith(u'.');
    formats.timeSeparator = hasDot ? "." : ":"; // a colon where words are between hours and minutes too
    setNames(formats, locale);
    return formats;
}

QLocale userLocale()
{
    const QLocale system = QLocale::system();
    return system.language() == QLocale::C ? QLocale(QLocale::English, QLocale::UnitedStates) : system;
}

} // namespace wagemill
