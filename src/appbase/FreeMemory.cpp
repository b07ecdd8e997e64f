#include "appbase/FreeMemory.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace FreeMemory {

void returnToSystem()
{
#if defined(__GLIBC__)
    // Every arena, the worker threads' included.
    malloc_trim(0);
#endif
}

} // namespace FreeMemory
