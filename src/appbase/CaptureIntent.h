#pragma once

#include <QString>

// What the user wants from a dragged area: the picture, or the text in it.
enum class CaptureIntent { image, text };

namespace CaptureIntents {
QString rawValue(CaptureIntent intent);
}
