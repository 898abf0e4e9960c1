#include "workbook/engine/picture/SheetPages.h"

#include "app/base/text/TextScanner.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace wagemill::engine {

namespace {

/// Reads the codes of one header or footer from left to right.
class CodeReader {
public:
    CodeReader(std::string_view codes, const drawing::Font& standardFont, const PageFacts& facts)
        : m_scanner(codes), m_standardFont(standardFont), m_facts(facts), m_font(standardFont)
    {
    }

    std::array<PageText, 3> read()
    {
        while (!m_scanner.atEnd())
            if (!m_scanner.skip('&'))
                write(m_scanner.take(1));
            else if (!m_scanner.atEnd())
                readCode();
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
        if (isDigit(m_scanner.peek()))
            return readSize();
        const char code = m_scanner.take(1).front();
        switch (code) {
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
        case '&':
            return write("&");
        case '"':
            return readFont();
        default: // else a picture, raised or lowered letters
            for (const auto& [letter, fact] : factCodes)
                if (letter == code)
                    write(m_facts.*fact);
            for (const auto& [letter, style] : styleCodes)
                if (letter == code)
                    m_font.*style = !(m_font.*style);
        }
    }

    static constexpr std::pair<char, std::string PageFacts::*> factCodes[] = {{'D', &PageFacts::date},
                                                                              {'T', &PageFacts::time},
                                                                              {'A', &PageFacts::sheet},
                                                                              {'F', &PageFacts::file},
                                                                              {'Z', &PageFacts::folder}};
    static constexpr std::pair<char, bool drawing::Font::*> styleCodes[] = {{'B', &drawing::Font::bold},
                                                                            {'I', &drawing::Font::italic},
                                                                            {'S', &drawing::Font::strikeout},
                                                                            {'U', &drawing::Font::underline},
                                                                            {'E', &drawing::Font::underline}};

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
        TextScanner named(m_scanner.takeWhile([](char byte) { return byte != '"'; }));
        m_scanner.skip('"');
        const std::string_view name = named.takeWhile([](char byte) { return byte != ','; });
        if (name != "-" && !name.empty())
            m_font.name = name;
        m_font.bold = named.rest().find("Bold") != std::string_view::npos;
        m_font.italic = named.rest().find("Italic") != std::string_view::npos;
    }

    /// &P+2, &P-1: added to the number of the page.
    int readOffset()
    {
        if (m_scanner.rest().size() < 2)
            return 0;
        return m_scanner.skip('+') ? readNumber() : m_scanner.skip('-') ? -readNumber() : 0;
    }

    int readNumber()
    {
        constexpr int maxNumber = 65535;
        return std::min(TextScanner(m_scanner.takeDigits()).takeNumber(9).value_or(0), maxNumber);
    }

    TextScanner m_scanner;
    const drawing::Font& m_standardFont;
    const PageFacts& m_facts;
    std::size_t m_part = 1; ///< a text without a part is in the middle
    drawing::Font m_font;
    std::array<PageText, 3> m_texts;
};

} // namespace

std::array<PageText, 3> pageTexts(std::string_view codes, const drawing::Font& standardFont, const PageFacts& facts)
{
    return CodeReader(codes, standardFont, facts).read();
}

} // namespace wagemill::engine
