#include "entry/RefillReport.h"

#include "entry/data/RowFields.h"

namespace wagemill {

namespace {

constexpr int maxLines = 12;

std::string place(const RefillFailure& failure)
{
    const std::string_view caption = rowFields.at(failure.field).caption;
    return "mployee " + std::to_string(failure.row + 1) + ", " + std::string(caption.substr(0, caption.rfind(':')));
}

/// How many of the first failures are of fields one after the other, for the same reason.
std::size_t countAlike(std::span<const RefillFailure> failures)
{
    const auto position = [](const RefillFailure& failure) {
        return static_cast<std::size_t>(failure.row) * rowFields.size() + failure.field;
    };
    std::size_t count = 1;
    while (count < failures.size() && failures[count].reason == failures[0].reason &&
           position(failures[count]) == position(failures[0]) + count)
        ++count;
    return count;
}

} // namespace

std::string refillReport(std::span<const RefillFailure> failures)
{
    std::string text = "What is stored for these employees cannot be shown:";
    for (int line = 0; !failures.empty(); ++line) {
        if (line == maxLines)
            return text + "\nand " + std::to_string(failures.size()) + " more, up to e" + place(failures.back()) + ".";
        const std::size_t alike = countAlike(failures);
        text += "\nE" + place(failures.front());
        if (alike > 1)
            text += " to e" + place(failures[alike - 1]);
        text += ": " + failures.front().reason;
        failures = failures.subspan(alike);
    }
    return text;
}

} // namespace wagemill
