#pragma once

#include "acquire/ScreenList.h"

#include <QRect>

class QScreen;

// The desktop's displays as Qt knows them on X11, in global points. Qt lists
// the primary display first, as the coordinator expects.
class X11ScreenList : public ScreenList
{
public:
    QList<Screen> screens() const override;
    std::optional<int> mainIndex() const override;
    QPointF mouseLocation() const override;

    // Where a display's pixels lie on the root window; absent when no screen
    // has that id any more. For CaptureService.
    static std::optional<QRect> rootPixels(std::uint32_t displayID);
    // Qt's screens, the primary first: the order display ids are made in.
    static QList<QScreen *> ordered();
};
