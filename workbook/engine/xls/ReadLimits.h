#pragma once

#include "app/base/Bytes.h"

#include <cstddef>

namespace wagemill::engine::xls {

/// What a file may make of itself in memory. A few bytes can name the last row, a long shared text or a long shared
/// formula again and again; these limits lie far above any workbook that people make.
class ReadLimits {
public:
    /// Rows that a sheet grows by. Throws DamagedFile when all sheets have more than 32 full ones.
    void addRows(std::size_t rows) { add(m_rows, rows, std::size_t{32} * 65536, "its sheets have too many rows"); }
    /// Bytes of text put into cells. Throws DamagedFile beyond 512 MB.
    void addText(std::size_t bytes) { add(m_text, bytes, std::size_t{512} << 20U, "its cells hold too much text"); }
    /// Tokens of a shared formula made a cell's own; false beyond four million.
    bool addTokens(std::size_t tokens)
    {
        m_tokens += tokens;
        return m_tokens <= 4'000'000;
    }

private:
    static void add(std::size_t& sum, std::size_t more, std::size_t most, const char* complaint)
    {
        sum += more;
        if (sum > most)
            throw DamagedFile(complaint);
    }

    std::size_t m_rows = 0;
    std::size_t m_text = 0;
    std::size_t m_tokens = 0;
};

} // namespace wagemill::engine::xls
