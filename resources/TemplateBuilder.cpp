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
#include <vector>

namespace {

using wagemill::engine::xls::FileKind;

std::ofstream opened(const std::filesystem::path& file)
{
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.exceptions(std::ios::badbit | std::ios::failbit);
    return stream;
}

void writeFile(std::span<const std::byte> bytes, const std::filesystem::path& file)
{
    std::ofstream stream = opened(file);
    stream.write(reinterpret_cast<const char*>(bytes.data()), // a stream takes bytes as characters
                 static_cast<std::streamsize>(bytes.size()));
}

/// The bytes as numbers, to be included between the braces of an array.
void writeNumbers(std::span<const std::byte> bytes, const std::filesystem::path& file)
{
    constexpr std::size_t numbersPerLine = 32;
    std::ofstream stream = opened(file);
    for (std::size_t index = 0; index < bytes.size(); ++index)
        stream << std::to_integer<int>(bytes[index]) << (index % numbersPerLine == numbersPerLine - 1 ? ",\n" : ",");
}

} // namespace

/// template_builder <folder of the description> <template.xlt> <numbers.inc>
int main(int count, char** arguments)
try {
    if (count != 4)
        throw std::runtime_error("needs the folder of the description and the two files to write");
    const wagemill::engine::Book book = wagemill::describedWorkbook(arguments[1]);
    const std::vector<std::byte> bytes = writeWorkbook(book, FileKind::Template);
    writeFile(bytes, arguments[2]);
    writeNumbers(bytes, arguments[3]);
    return EXIT_SUCCESS;
} catch (const std::exception& error) {
    std::cerr << "template_builder: " << error.what() << '\n';
    return EXIT_FAILURE;
}
