#include "workbook/engine/formula/Criterion.h"

#include "app/base/text/LetterCase.h"
#include "app/base/text/Unicode.h"
#include "workbook/engine/formula/Operators.h"

namespace wagemill::engine {

namespace {

bool hasWildcard(std::string_view text)
{
    return text.find_first_of("*?~") != std::string_view::npos;
}

std::u16string folded(std::string_view text)
{
    return toUtf16(lowerText(text));
}

/// The comparison that a condition begins with, taken off its front.
Operator takeComparison(std::string_view& condition)
{
    for (const auto& [sign, op, precedence] : binaryOperators)
        if (isComparison(op) && condition.starts_with(sign)) {
            condition.remove_prefix(sign.size());
            return op;
        }
    return Operator::Equal;
}

} // namespace

Wildcard::Wildcard(std::string_view pattern)
{
    const std::u16string letters = folded(pattern);
    for (std::size_t i = 0; i < letters.size(); ++i) {
        if (letters[i] == u'~' && i + 1 < letters.size())
            m_elements.push_back({Element::Kind::Letter, letters[++i]});
        else if (letters[i] == u'*')
            m_elements.push_back({Element::Kind::AnyNumber, 0});
        else if (letters[i] == u'?')
            m_elements.push_back({Element::Kind::AnyOne, 0});
        else
            m_elements.push_back({Element::Kind::Letter, letters[i]});
    }
}

/// Goes back to the last "*" only, which is enough: time is at most text times pattern.
bool Wildcard::matchesAt(std::u16string_view text, bool toTheEnd) const
{
    std::size_t at = 0;
    std::size_t element = 0;
    std::optional<std::size_t> lastStar;
    std::size_t starAt = 0;
    const auto isOver = [&] { return element == m_elements.size() && (!toTheEnd || at == text.size()); };
    while (!isOver()) {
        if (element < m_elements.size() && m_elements[element].kind == Element::Kind::AnyNumber) {
            lastStar = element++;
            starAt = at;
        } else if (at < text.size() && element < m_elements.size() &&
                   (m_elements[element].kind == Element::Kind::AnyOne || m_elements[element].letter == text[at])) {
            ++at;
            ++element;
        } else if (lastStar && starAt < text.size()) {
            element = *lastStar + 1;
            at = ++starAt;
        } else {
            return false;
        }
    }
    return true;
}

bool Wildcard::matches(std::string_view text) const
{
    return matchesAt(folded(text), true);
}

std::optional<std::size_t> Wildcard::find(std::string_view text, std::size_t from) const
{
    const std::u16string letters = folded(text);
    for (std::size_t start = from; start <= letters.size(); ++start)
        if (matchesAt(std::u16string_view(letters).substr(start), false))
            return start;
    return std::nullopt;
}

LookupKey::LookupKey(const CellValue& key) : m_key(key)
{
    if (const auto* const text = std::get_if<std::string>(&key); text != nullptr && hasWildcard(*text))
        m_pattern.emplace(*text);
}

bool LookupKey::matches(const CellValue& value) const
{
    if (value.index() != m_key.index() || isEmpty(value))
        return false;
    const auto* const text = std::get_if<std::string>(&value);
    if (text == nullptr)
        return value == m_key;
    return m_pattern ? m_pattern->matches(*text) : sameIgnoringCase(*text, std::get<std::string>(m_key));
}

Criterion::Criterion(const CellValue& condition, const CoercionRules& rules) : m_operand(condition), m_rules(rules)
{
    if (isEmpty(condition))
        m_operand = 0.0;
    const auto* const text = std::get_if<std::string>(&condition);
    if (text == nullptr)
        return;
    std::string_view rest = *text;
    m_comparison = takeComparison(rest);
    m_emptyTextIsBlank = rest.size() == text->size();
    m_operand = rest.starts_with('\'') ? CellValue(std::string(rest)) : valueInText(rest, rules);
    if (std::holds_alternative<std::string>(m_operand) && hasWildcard(rest))
        m_pattern.emplace(rest);
}

bool Criterion::equals(const CellValue& value) const
{
    if (isEmpty(m_operand))
        return isEmpty(value) || (m_emptyTextIsBlank && value == CellValue(std::string()));
    const auto* const text = std::get_if<std::string>(&value);
    if (m_pattern)
        return text != nullptr && m_pattern->matches(*text);
    if (const auto* const number = std::get_if<double>(&m_operand); number != nullptr && text != nullptr)
        return numberInText(*text, m_rules) == *number;
    if (std::holds_alternative<ErrorCode>(m_operand))
        return value == m_operand;
    return value.index() == m_operand.index() && compareValues(value, m_operand) == 0;
}

bool Criterion::matches(const CellValue& value) const
{
    if (m_comparison == Operator::Equal)
        return equals(value);
    if (m_comparison == Operator::NotEqual)
        return !equals(value);
    if (value.index() != m_operand.index() || isEmpty(value) || std::holds_alternative<ErrorCode>(value))
        return false; // only values of one kind have an order
    return holds(m_comparison, compareValues(value, m_operand));
}

} // namespace wagemill::engine
