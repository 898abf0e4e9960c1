// Input: what a drawing's file holds between its version and its checksum.

#include "drawing/DrawingFile.h"
#include "tests/fuzz/FuzzTarget.h"

namespace wagemill::fuzz {

void tryInput(Input input)
{
    std::vector<std::byte> file = drawingFile({});
    file.resize(8); // signature and version
    file.insert(file.end(), input.begin(), input.end());
    for (std::uint64_t checksum = drawingChecksum(file), byte = 0; byte < 8; ++byte)
        file.push_back(static_cast<std::byte>(checksum >> (8 * byte)));
    try {
        require(drawingFile(readDrawingFile(file)) == file, "a drawing that was read is written as it was");
    } catch (const std::logic_error&) {
        throw;
    } catch (const std::runtime_error&) {
        // a refusal
    }
}

} // namespace wagemill::fuzz
