#include "workbook/engine/picture/PageTexts.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace wagemill::engine {

namespace {

/// Reads the codes of one header or footer from left to right.
class CodeReader {
public:
    CodeReader(std::string_view codes, const drawing::Font& standardFont, const PageFacts& facts)
        : m_codes(codes), m_standardFont(standardFont), m_facts(facts), m_font(standardFont)
    {
    }

    std::array<PageText, 3> read()
    {
        while (m_at < m_codes.size()) {
            const char letter = m_codes[m_at++];
            if (letter != '&')
                write(std::string_view(&letter, 1));
            else if (m_at < m_codes.size())
                readCode();
        }
        return m_texts;
    }

private:
    void write(std::string_view text)
    {
        PageText& part = m_texts[m_part];
        if (part.text.empty())
            part.font = m_font;
        part.text += text;
    }

    void beginPart(std::size_t part)
    {
        m_part = part;
        m_font = m_standardFont;
    }

    void readCode()
    {
        if (m_codes[m_at] >= '0' && m_codes[m_at] <= '9')
            return readSize();
        switch (m_codes[m_at++]) {
        case 'L':
            return beginPart(0);
        case 'C':
            return beginPart(1);
        case 'R':
            return beginPart(2);
        case 'P':
            return write(std::to_string(m_facts.page + readOffset()));
        case 'N':
            return write(std::to_string(m_facts.pages));
        case 'D':
            return write(m_facts.date);
        case 'T':
            return write(m_facts.time);
        case 'A':
            return write(m_facts.sheet);
        case 'F':
            return write(m_facts.file);
        case 'Z':
            return write(m_facts.folder);
        case '&':
            return write("&");
        case 'B':
            m_font.bold = !m_font.bold;
            return;
        case 'I':
            m_font.italic = !m_font.italic;
            return;
        case 'S':
            m_font.strikeout = !m_font.strikeout;
            return;
        case 'U':
        case 'E':
            m_font.underline = !m_font.underline;
            return;
        case '"':
            return readFont();
        default: // a picture, raised or lowered letters
            return;
        }
    }

    /// &8: points.
    void readSize()
    {
        constexpr int twipsPerPoint = 20;
        constexpr int maxPoints = 409;
        if (const int points = readNumber(); points > 0)
            m_font.heightTwips = static_cast<std::uint16_t>(std::min(points, maxPoints) * twipsPerPoint);
    }

    /// &"Arial,Bold Italic"; "-" is the font that it is anyway.
    void readFont()
    {
        const std::string_view named = m_codes.substr(m_at, m_codes.find('"', m_at) - m_at);
        m_at = std::min(m_codes.size(), m_at + named.size() + 1);
        const std::size_t comma = std::min(named.find(','), named.size());
        if (const std::string_view name = named.substr(0, comma); name != "-" && !name.empty())
            m_font.name = name;
        const std::string_view style = named.substr(comma);
        m_font.bold = style.find("Bold") != std::string_view::npos;
        m_font.italic = style.find("Italic") != std::string_view::npos;
    }

    /// &P+2, &P-1: added to the number of the page.
    int readOffset()
    {
        if (m_at + 1 >= m_codes.size() || (m_codes[m_at] != '+' && m_codes[m_at] != '-'))
            return 0;
        const int sign = m_codes[m_at++] == '-' ? -1 : 1;
        return sign * readNumber();
    }

    int readNumber()
    {
        int number = 0;
        const char* const begin = m_codes.data() + m_at;
        const auto result = std::from_chars(begin, m_codes.data() + m_codes.size(), number);
        m_at += static_cast<std::size_t>(result.ptr - begin);
        constexpr int maxNumber = 65535;
        return std::clamp(number, 0, maxNumber);
    }

    std::string_view m_codes;
    const drawing::Font& m_standardFont;
    const PageFacts& m_facts;
    std::size_t m_at = 0;
    std::size_t m_part = 1; ///< a text without a part stands in the middle
    drawing::Font m_font;
    std::array<PageText, 3> m_texts;
};

} // namespace

std::array<PageText, 3> pageTexts(std::string_view codes, const drawing::Font& standardFont, const PageFacts& facts)
{
    return CodeReader(codes, standardFont, facts).read();
}

} // namespace wagemill::engine
