// libFuzzer target for the scanner of leftover recordings: whatever bytes a
// cut-off file holds, it must read only inside them, and what it calls
// readable must be readable again on its own, with the same fragments.
#include "videowriting/FragmentScanner.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using videowriting::FragmentScanner;
    const std::span<const std::uint8_t> bytes(data, size);
    const FragmentScanner::Layout layout = FragmentScanner::scan(bytes);
    if (layout.readable > size)
        std::abort();
    if (layout.finished && layout.readable != size)
        std::abort();
    if (layout.readable == 0 && layout.fragments != 0)
        std::abort();
    if (layout.readable > 0) {
        const FragmentScanner::Layout again = FragmentScanner::scan(bytes.first(std::size_t(layout.readable)));
        if (again.readable != layout.readable || again.fragments != layout.fragments)
            std::abort();
    }
    return 0;
}
