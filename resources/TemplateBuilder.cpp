#include "app/base/Files.h"
#include "resources/TemplateDescription.h"
#include "workbook/engine/xls/WorkbookFile.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace wagemill;

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
    const std::vector<std::byte> bytes =
        engine::xls::writeWorkbook(describedWorkbook(arguments[1]), engine::xls::FileKind::Template);
    const std::string numbers = numbersOf(bytes);
    writeWholeFile(bytes, arguments[2], FileLife::Kept);
    writeWholeFile(std::as_bytes(std::span(numbers)), arguments[3], FileLife::Kept);
    return EXIT_SUCCESS;
} catch (const std::exception& error) {
    std::cerr << "template_builder: " << error.what() << '\n';
    return EXIT_FAILURE;
}
