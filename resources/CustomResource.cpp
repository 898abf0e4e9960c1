#include "resources/CustomResource.h"

#include <array>
#include <stdexcept>
#include <string>

namespace wagemill {

namespace {

constexpr auto payrollTemplate = std::to_array<unsigned char>({
#include "PayrollTemplate.inc"
});

} // namespace

std::span<const std::byte> customResource(int number)
{
    if (number != payrollTemplateResource)
        throw std::runtime_error("The program has no resource CUSTOM " + std::to_string(number) + ".");
    return std::as_bytes(std::span(payrollTemplate));
}

} // namespace wagemill
