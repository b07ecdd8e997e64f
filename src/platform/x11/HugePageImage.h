#pragma once

#include <QImage>
#include <QSize>

// A picture whose pixels live in memory of its own, mapped in huge pages where
// the system allows them. A 4K screen is 33 MB: in small pages that is 8,100
// page faults the first time it is written, which on a virtual machine cost
// more than the copy itself; in huge pages it is 16.
class HugePageImage
{
public:
    // An image of `size` in `format` with rows packed, its memory given back to
    // the system when the last copy goes. An ordinary QImage for a picture
    // smaller than one huge page (2 MiB), for formats of other than four bytes
    // a pixel, and where no memory of its own can be mapped; null only when
    // neither can be had.
    static QImage allocate(QSize size, QImage::Format format);
};
