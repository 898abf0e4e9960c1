#pragma once

#include "workbook/engine/Formula.h"
#include "workbook/engine/formula/Coercion.h"

#include <optional>
#include <string>
#include <string_view>

namespace wagemill::engine {

/// A pattern of text: "*" stands for any characters, "?" for one UTF-16 unit, "~" takes the next character as it is.
/// Letters match without regard to case.
class Wildcard {
public:
    explicit Wildcard(std::string_view pattern);

    /// Whether the whole text matches.
    bool matches(std::string_view text) const;
    /// The first UTF-16 unit at `from` or after where something that matches begins, counting from 0.
    std::optional<std::size_t> find(std::string_view text, std::size_t from) const;

private:
    struct Element {
        enum class Kind : std::uint8_t { Letter, AnyOne, AnyNumber };
        Kind kind = Kind::Letter;
        char16_t letter = 0;
    };
    bool matchesAt(std::u16string_view text, bool toTheEnd) const;

    std::vector<Element> m_elements;
};

/// The key of an exact lookup. Kinds never mix: the number 5 is not the text "5". Text may hold wildcards.
class LookupKey {
public:
    /// key  no error; an empty key matches nothing
    explicit LookupKey(const CellValue& key);
    bool matches(const CellValue& value) const;

private:
    const CellValue& m_key;
    std::optional<Wildcard> m_pattern;
};

/// The condition that COUNTIF and SUMIF are given: a value, be it an error, or a text such as ">=10", "<>", "Sm*".
class Criterion {
public:
    Criterion(const CellValue& condition, const CoercionRules& rules);
    bool matches(const CellValue& value) const;

private:
    bool equals(const CellValue& value) const;

    Operator m_comparison = Operator::Equal;
    CellValue m_operand;             ///< Empty: the condition is about empty cells
    bool m_emptyTextIsBlank = false; ///< as the condition "" has it; "=" and "<>" are about empty cells alone
    std::optional<Wildcard> m_pattern;
    const CoercionRules& m_rules;
};

} // namespace wagemill::engine
