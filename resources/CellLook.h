#pragma once

#include "resources/DescriptionLines.h"
#include "workbook/engine/CellStyle.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace wagemill {

/// A cell's look while the description is read, before fonts and formats are shared.
struct CellLook {
    engine::Font font;
    engine::CellFormat format;
};

using LookChange = std::function<void(CellLook&)>;

/// The names that a description gives to colours, number formats and styles, and what they mean in one workbook.
class Looks {
public:
    explicit Looks(engine::StyleTable& styles) : m_styles(styles) {}

    /// "color NAME RRGGBB", "number-format NAME CODE", "style NAME ATTRIBUTE...". Throw DescriptionError.
    void defineColor(const DescriptionLine& line);
    void defineNumberFormat(const DescriptionLine& line);
    void defineStyle(const DescriptionLine& line);

    /// The attributes from that word of the line on: size 9, bold, ink COLOR, fill COLOR, left, center, right, top,
    /// middle, bottom, wrap, shrink, indent 1, unlocked, format NAME, line SIDE STYLE COLOR, or a style's name. They
    /// are applied in their order. Throws DescriptionError.
    std::vector<LookChange> changes(const DescriptionLine& line, std::size_t firstWord) const;
    /// The border "STYLE COLOR" at that word. Throws DescriptionError.
    engine::Border border(const DescriptionLine& line, std::size_t firstWord) const;

    /// The index of the cell format with that look.
    std::uint16_t formatFor(const CellLook& look);

private:
    engine::ColorIndex color(const DescriptionLine& line, std::size_t word) const;

    engine::StyleTable& m_styles;
    engine::ColorIndex m_nextColor = 24; ///< the palette's chart colours: those that a user picks from stay
    std::map<std::string, engine::ColorIndex> m_colors;
    std::map<std::string, std::uint16_t> m_numberFormats;
    std::map<std::string, std::vector<LookChange>> m_styleChanges;
};

} // namespace wagemill
