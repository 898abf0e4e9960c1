#pragma once

#include "workbook/engine/CellStyle.h"

#include <functional>
#include <istream>
#include <map>
#include <stdexcept>
#include <string>

/// What the template's text files are made of; everything here throws std::runtime_error that says what is wrong with
/// the line.
namespace wagemill {

/// A cell's look while the description is read, before fonts and formats are shared.
struct CellLook {
    engine::Font font;
    engine::CellFormat format;
};

/// The next word of the line, or its next number.
template <class Value>
Value nextWord(std::istream& line)
{
    Value value{};
    if (!(line >> value))
        throw std::runtime_error("a word is missing or is not a number");
    return value;
}

/// What is left of the line.
std::string restOf(std::istream& line);

/// What the table calls the line's next word.
template <class Value>
const Value& named(const std::map<std::string, Value>& table, std::istream& line)
{
    const auto word = nextWord<std::string>(line);
    const auto found = table.find(word);
    if (found == table.end())
        throw std::runtime_error("\"" + word + "\" is not known here");
    return found->second;
}

/// The names that a description gives to colours, number formats and styles, and what they mean in one workbook.
class Looks {
public:
    explicit Looks(engine::StyleTable& styles);

    void defineColor(std::istream& line);        ///< "NAME RRGGBB"
    void defineNumberFormat(std::istream& line); ///< "NAME CODE"
    void defineStyle(std::istream& line);        ///< "NAME ATTRIBUTE..."

    /// Applies attributes in their order: size 9, bold, ink COLOR, fill COLOR, left, right, middle, wrap, shrink,
    /// indent 1, unlocked, format NAME, line SIDE STYLE COLOR, or a style's name.
    void apply(const std::string& attributes, CellLook& look) const;
    /// "STYLE COLOR"
    engine::Border border(std::istream& line) const;

    /// The index of the cell format with that look.
    std::uint16_t formatFor(const CellLook& look);

private:
    engine::StyleTable& m_styles;
    engine::ColorIndex m_nextColor = 24; ///< the palette's chart colours: those that a user picks from stay
    std::map<std::string, engine::ColorIndex> m_colors;
    std::map<std::string, std::uint16_t> m_numberFormats;
    std::map<std::string, std::function<void(std::istream&, CellLook&)>> m_attributes; ///< styles too
};

} // namespace wagemill
