#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace wagemill {

/// A description that cannot be read; what() begins with file and line.
class DescriptionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One statement of a description: its first word says what it does.
struct DescriptionLine {
    std::string place; ///< "workbook.txt, line 12"
    std::string keyword;
    /// The words behind the keyword. A word in quotes may hold blanks; in it \n is a line break, \" and \\ stand for
    /// the character behind the backslash.
    std::vector<std::string> words;
    std::vector<std::string> rest; ///< for every word: the line from there on, as it stands
    std::vector<bool> quoted;

    [[noreturn]] void fail(std::string_view problem) const;
    /// Throws DescriptionError when there are fewer or more words than that.
    void needWords(std::size_t least, std::size_t most) const;
    /// A whole number or a decimal fraction. Throws DescriptionError.
    int wholeNumber(std::size_t word) const;
    double decimal(std::size_t word) const;
};

/// The statements of a description: one a line; empty lines and lines that begin with "#" are remarks.
/// Throws DescriptionError when a quote is not closed, std::runtime_error when the file cannot be read.
std::vector<DescriptionLine> readDescription(const std::filesystem::path& file);
std::vector<DescriptionLine> readDescription(std::string_view text, std::string_view file);

} // namespace wagemill
