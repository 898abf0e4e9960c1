// Input: what a drawing's file holds between its version and its checksum.

#include "drawing/DrawingFile.h"
#include "app/base/Bytes.h"
#include "tests/fuzz/FuzzTarget.h"

namespace wagemill::fuzz {

void tryInput(Input input)
{
    ByteWriter writer;
    const std::vector<std::byte> empty = drawingFile({});
    writer.bytes(std::span(empty).first(8)); // signature and version
    writer.bytes(input);
    writer.u64(drawingChecksum(writer.view()));
    const std::vector<std::byte> file = writer.take();
    try {
        require(drawingFile(readDrawingFile(file)) == file, "a drawing that was read is written as it was");
    } catch (const std::runtime_error&) {
        // a refusal
    }
}

} // namespace wagemill::fuzz
