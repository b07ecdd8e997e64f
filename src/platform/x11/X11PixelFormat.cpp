#include "platform/x11/X11PixelFormat.h"

#include <xcb/xcb.h>

namespace X11PixelFormat {

bool hasRgb32Layout(xcb_connection_t *c, std::uint8_t depth)
{
    const xcb_setup_t *setup = xcb_get_setup(c);
    if (setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST || (depth != 24 && depth != 32))
        return false;
    for (auto it = xcb_setup_pixmap_formats_iterator(setup); it.rem; xcb_format_next(&it))
        if (it.data->depth == depth)
            return it.data->bits_per_pixel == 32;
    return false;
}

} // namespace X11PixelFormat
