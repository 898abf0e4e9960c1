#include "app/base/FreedMemory.h"

#include <malloc.h>

namespace wagemill {

void returnFreedMemory()
{
    _heapmin();
}

} // namespace wagemill
