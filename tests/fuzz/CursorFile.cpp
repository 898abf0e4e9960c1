// Input: a cursor file.

#include "app/look/CursorFile.h"
#include "tests/fuzz/FuzzTarget.h"

namespace wagemill::fuzz {

void tryInput(Input input)
{
    try {
        const CursorPicture cursor = readCursor(input);
        require(cursor.image.rect().contains(cursor.hotSpot), "the hot spot lies inside the picture");
        require(cursor.image.width() <= 256 && cursor.image.height() <= 256, "a pointer is no larger than 256 pixels");
    } catch (const std::logic_error&) {
        throw;
    } catch (const std::runtime_error&) {
        // a refusal
    }
}

} // namespace wagemill::fuzz
