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
    // the system when the last copy goes. Falls back to an ordinary QImage
    // where no memory of its own can be mapped; null only when neither can.
    static QImage allocate(QSize size, QImage::Format format);
};
