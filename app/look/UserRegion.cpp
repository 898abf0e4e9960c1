#include "app/look/UserRegion.h"

#include <QDate>
#include <QLocale>
#include <QString>

#include <algorithm>
#include <string>

namespace wagemill {

namespace {

bool isInvisible(QChar character)
{
    return character.isSpace() || character.category() == QChar::Other_Format;
}

/// The locale's text with blanks and invisible characters alone taken as none: some currencies have no symbol.
std::string visibleText(const QString& text)
{
    return std::all_of(text.begin(), text.end(), isInvisible) ? std::string() : text.toStdString();
}

QString withoutOuterBlanks(QString text)
{
    while (!text.isEmpty() && isInvisible(text.front()))
        text.remove(0, 1);
    while (!text.isEmpty() && isInvisible(text.back()))
        text.chop(1);
    return text;
}

/// What stands around the digits of a text, whichever script's they are: money may be written in another than numbers.
Affixes affixesAround(const QString& text)
{
    const auto isDigit = [](char32_t character) { return QChar::isDigit(character); };
    const std::u32string characters = text.toStdU32String();
    const auto first = std::find_if(characters.begin(), characters.end(), isDigit);
    const auto last = std::find_if(characters.rbegin(), characters.rend(), isDigit).base();
    if (first == characters.end())
        return {};
    return {visibleText(QString::fromStdU32String({characters.begin(), first})),
            visibleText(QString::fromStdU32String({last, characters.end()}))};
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
    for (const double number : {1111.5, 11111.5}) // the form with decimals keeps the rule for short figures
        formats.digitsBeforeGrouping += locale.toString(number, 'f', 1).contains(separator) ? 0 : 1;
}

/// What stands between the two digits of 1.5; nothing when the locale writes money without decimals.
std::string separatorIn(const QString& money)
{
    const auto isDigit = [](QChar character) { return character.isDigit(); };
    const auto first = std::find_if(money.begin(), money.end(), isDigit);
    const auto end = std::find_if_not(first, money.end(), isDigit);
    const auto next = std::find_if(end, money.end(), isDigit);
    return next == money.end() ? std::string() : QString(end, next - end).toStdString();
}

void setCurrency(RegionalFormats& formats, const QLocale& locale)
{
    const std::string decimal = separatorIn(locale.toCurrencyString(1.5, QString(), 1));
    formats.currencyDecimalSeparator = decimal == formats.decimalSeparator ? "" : decimal;
    formats.currency = affixesAround(locale.toCurrencyString(1.0, QString(), 0));
    formats.negativeCurrency = affixesAround(locale.toCurrencyString(-1.0, QString(), 0));
    const QString affixes = QString::fromStdString(formats.currency.prefix + formats.currency.suffix);
    formats.currencySymbol = withoutOuterBlanks(affixes).toStdString();
}

/// The pattern with every run of "y" outside of quotes as "yyyy".
QString withFullYear(const QString& pattern)
{
    QString wide;
    bool quoted = false;
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        const QChar character = pattern[i];
        quoted = quoted != (character == u'\'');
        const bool isYear = character == u'y' && !quoted;
        if (!isYear)
            wide += character;
        else if (i == 0 || pattern[i - 1] != u'y')
            wide += QStringLiteral("yyyy");
    }
    return wide;
}

/// The sign between hours and minutes, ":" where words stand there.
std::string timeSeparator(const QString& pattern)
{
    const auto minute = pattern.indexOf(u'm');
    const QChar sign = minute > 0 ? pattern[minute - 1] : u':';
    return sign == u'.' ? "." : ":";
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
    formats.shortDatePattern = withFullYear(locale.dateFormat(QLocale::ShortFormat)).toStdString();
    formats.timeSeparator = timeSeparator(locale.timeFormat(QLocale::ShortFormat));
    setNames(formats, locale);
    return formats;
}

QLocale userLocale()
{
    const QLocale system = QLocale::system();
    return system.language() == QLocale::C ? QLocale(QLocale::English, QLocale::UnitedStates) : system;
}

RegionalFormats userRegionalFormats()
{
    return regionalFormatsOf(userLocale());
}

} // namespace wagemill
