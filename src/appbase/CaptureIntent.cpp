#include "appbase/CaptureIntent.h"

namespace CaptureIntents {

QString rawValue(CaptureIntent intent)
{
    switch (intent) {
    case CaptureIntent::image:
        return QStringLiteral("image");
    case CaptureIntent::text:
        return QStringLiteral("text");
    }
    return {};
}

} // namespace CaptureIntents
