#include "resources/PayrollTemplate.h"

#include <array>

namespace wagemill {

std::span<const std::byte> payrollTemplateFile()
{
    static constexpr auto bytes = std::to_array<unsigned char>({
#include "PayrollTemplate.inc"
    });
    return std::as_bytes(std::span(bytes));
}

} // namespace wagemill
