#include "resources/TemplateDescription.h"
#include "workbook/engine/xls/BiffWriter.h"

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using wagemill::engine::xls::FileKind;

/// Throws std::runtime_error that names the file.
void writeText(const std::filesystem::path& file, std::string_view text)
{
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream)
        throw std::runtime_error("cannot write the file \"" + file.string() + "\"");
}

/// The bytes as numbers, to be included between the braces of an array.
std::string numbersOf(std::span<const std::byte> bytes)
{
    constexpr std::size_t numbersPerLine = 32;
    std::string numbers;
    for (std::size_t index = 0; index < bytes.size(); ++index)
        numbers += std::to_string(std::to_integer<int>(bytes[index])) +
                   (index % numbersPerLine == numbersPerLine - 1 ? ",\n" : ",");
    return numbers;
}

} // namespace

/// template_builder <folder of the description> <template.xlt> <numbers.inc>
int main(int count, char** arguments)
try {
    if (count != 4)
        throw std::runtime_error("needs the folder of the description and the two files to write");
    const wagemill::engine::Book book = wagemill::describedWorkbook(arguments[1]);
    const std::vector<std::byte> bytes = writeWorkbook(book, FileKind::Template);
    writeText(arguments[2], {reinterpret_cast<const char*>(bytes.data()), bytes.size()}); // a stream takes characters
    writeText(arguments[3], numbersOf(bytes));
    return EXIT_SUCCESS;
} catch (const std::exception& error) {
    std::cerr << "template_builder: " << error.what() << '\n';
    return EXIT_FAILURE;
}
