#include "app/base/text/LetterCase.h"
#include "app/base/text/NumberText.h"
#include "app/base/text/Unicode.h"
#include "workbook/engine/formula/Criterion.h"
#include "workbook/engine/formula/FormulaFunctions.h"
#include "workbook/engine/formula/Operators.h"
#include "workbook/engine/text/FormatCode.h"
#include "workbook/engine/text/NumberFormat.h"

#include <array>

namespace wagemill::engine {

namespace {

constexpr int maxDecimals = 127;

/// A count of characters or a position; below the minimum it is #VALUE!.
std::size_t countArgument(const FunctionCall& call, std::size_t index, int fallback, int minimum)
{
    const int count = call.integer(index, fallback);
    if (count < minimum)
        throw FormulaFailure{ErrorCode::Value};
    return static_cast<std::size_t>(count);
}

// Positions and lengths count UTF-16 units, of which an emoji takes two.

Answer left(const FunctionCall& call)
{
    return toUtf8(toUtf16(call.text(0)).substr(0, countArgument(call, 1, 1, 0)));
}

Answer right(const FunctionCall& call)
{
    const std::u16string text = toUtf16(call.text(0));
    const std::size_t kept = std::min(countArgument(call, 1, 1, 0), text.size());
    return toUtf8(text.substr(text.size() - kept));
}

Answer middle(const FunctionCall& call)
{
    const std::u16string text = toUtf16(call.text(0));
    const std::size_t start = countArgument(call, 1, 1, 1) - 1;
    const std::size_t length = countArgument(call, 2, 0, 0);
    return start < text.size() ? toUtf8(text.substr(start, length)) : "";
}

/// Blanks at the ends go, several in a row become one.
Answer trimmed(const FunctionCall& call)
{
    std::string result;
    for (const char byte : call.text(0))
        if (byte != ' ' || (!result.empty() && result.back() != ' '))
            result += byte;
    if (result.ends_with(' '))
        result.pop_back();
    return result;
}

/// Every letter that begins a word is a capital, all others are small.
Answer proper(const FunctionCall& call)
{
    std::u32string text = toUtf32(call.text(0));
    bool insideWord = false;
    for (char32_t& letter : text) {
        letter = insideWord ? lowerCase(letter) : upperCase(letter);
        insideWord = upperCase(letter) != lowerCase(letter);
    }
    return toUtf8(text);
}

Answer concatenated(const FunctionCall& call)
{
    std::string result;
    for (std::size_t i = 0; i < call.count(); ++i)
        result += call.text(i);
    return result;
}

Answer find(const FunctionCall& call)
{
    const std::u16string text = toUtf16(call.text(1));
    const std::size_t start = countArgument(call, 2, 1, 1) - 1;
    const std::size_t found = start > text.size() ? text.npos : text.find(toUtf16(call.text(0)), start);
    return found == text.npos ? Answer(ErrorCode::Value) : found + 1;
}

Answer search(const FunctionCall& call)
{
    const auto found = Wildcard(call.text(0)).find(call.text(1), countArgument(call, 2, 1, 1) - 1);
    return found ? Answer(*found + 1) : ErrorCode::Value;
}

/// Replaces every occurrence, or only the one whose number is given.
Answer substitute(const FunctionCall& call)
{
    const std::string text = call.text(0);
    const std::string searched = call.text(1);
    const std::string replacement = call.text(2);
    const std::size_t only = call.has(3) ? countArgument(call, 3, 1, 1) : 0;
    if (searched.empty())
        return text;
    std::string result;
    std::size_t at = 0;
    std::size_t occurrence = 0;
    for (std::size_t found = text.find(searched); found != text.npos; found = text.find(searched, at)) {
        result += text.substr(at, found - at);
        result += only == 0 || ++occurrence == only ? replacement : searched;
        at = found + searched.size();
    }
    return result + text.substr(at);
}

Answer replace(const FunctionCall& call)
{
    const std::u16string text = toUtf16(call.text(0));
    const std::size_t start = std::min(countArgument(call, 1, 1, 1) - 1, text.size());
    const std::size_t end = start + std::min(countArgument(call, 2, 0, 0), text.size() - start);
    return toUtf8(text.substr(0, start)) + call.text(3) + toUtf8(text.substr(end));
}

Answer repeated(const FunctionCall& call)
{
    const std::string text = call.text(0);
    const std::size_t times = countArgument(call, 1, 0, 0);
    if (text.empty())
        return std::string();
    if (times > maxTextLength)
        return ErrorCode::Value;
    std::string result;
    for (std::size_t i = 0; i < times && result.size() <= 4 * maxTextLength; ++i) // 4 bytes to a character at most
        result += text;
    return result;
}

Answer character(const FunctionCall& call)
{
    const int code = call.integer(0);
    if (code < 1 || code > 255)
        return ErrorCode::Value;
    return toUtf8(std::u32string(1, fromCodePage1252(static_cast<std::uint8_t>(code))));
}

Answer code(const FunctionCall& call)
{
    const std::u32string text = toUtf32(call.text(0));
    if (text.empty())
        return ErrorCode::Value;
    return toCodePage1252(text[0]).value_or('?');
}

/// Printable characters only.
Answer clean(const FunctionCall& call)
{
    std::string text = call.text(0);
    std::erase_if(text, [](char byte) { return static_cast<unsigned char>(byte) < 0x20; });
    return text;
}

Answer textOf(const FunctionCall& call)
{
    const CellValue value = call.firstValue(0);
    const bool isKept = std::holds_alternative<std::string>(value) || std::holds_alternative<ErrorCode>(value);
    return isKept ? Answer(value) : std::string();
}

/// The number in the user's own digits and separators, for a text that reads as a number too.
Answer formatted(const FunctionCall& call)
{
    CellValue value = call.value(0);
    if (isEmpty(value))
        value = 0.0;
    if (const auto* const text = std::get_if<std::string>(&value))
        if (const auto number = numberInText(*text, call.rules()))
            value = *number;
    const std::string code = call.text(1);
    if (!readFormatCode(code))
        return ErrorCode::Value;
    return code.empty() ? "" : showValue(value, code, call.rules().formats, call.dates1904()).text;
}

/// A number rounded to its decimals; negative decimals round before the point.
DecimalNumber roundedArgument(const FunctionCall& call, int decimals)
{
    if (decimals > maxDecimals)
        throw FormulaFailure{ErrorCode::Value};
    return toDecimal(roundedNumber(call.number(0), decimals, Rounding::HalfAwayFromZero));
}

Answer fixed(const FunctionCall& call)
{
    const int decimals = call.integer(1, 2);
    RegionalFormats formats = call.rules().formats;
    if (call.logical(2, false))
        formats.digitsBeforeGrouping = static_cast<int>(maxTextLength); // no number has as many: no group separators
    return numberText(roundedArgument(call, decimals), formats, std::max(decimals, 0));
}

Answer dollar(const FunctionCall& call)
{
    const int decimals = call.integer(1, 2);
    return currencyText(roundedArgument(call, decimals), call.rules().formats, std::max(decimals, 0));
}

constexpr auto table = std::to_array<FunctionBinding>({
    {"LEFT", left},
    {"RIGHT", right},
    {"MID", middle},
    {"LEN", [](const FunctionCall& call) -> Answer { return toUtf16(call.text(0)).size(); }},
    {"TRIM", trimmed},
    {"CLEAN", clean},
    {"UPPER", [](const FunctionCall& call) -> Answer { return upperText(call.text(0)); }},
    {"LOWER", [](const FunctionCall& call) -> Answer { return lowerText(call.text(0)); }},
    {"PROPER", proper},
    {"CONCATENATE", concatenated},
    {"FIND", find},
    {"SEARCH", search},
    {"SUBSTITUTE", substitute},
    {"REPLACE", replace},
    {"REPT", repeated},
    {"EXACT", [](const FunctionCall& call) -> Answer { return call.text(0) == call.text(1); }},
    {"CHAR", character},
    {"CODE", code},
    {"T", textOf, OnError::Pass},
    {"TEXT", formatted},
    {"VALUE", [](const FunctionCall& call) -> Answer { return call.number(0); }},
    {"FIXED", fixed},
    {"DOLLAR", dollar},
});

} // namespace

constinit const std::span<const FunctionBinding> textFunctions = table;

} // namespace wagemill::engine
