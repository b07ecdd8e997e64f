#include "app/DesktopBackend.h"

#include "appbase/AppError.h"
#include "settings/NullKeyGrabber.h"

namespace {

// A build without a display backend: every shot fails with a clear reason.
class NoCapture : public CaptureServicing
{
public:
    QFuture<QImage> captureDisplay(std::uint32_t) override { return failure(); }
    QFuture<QImage> captureDisplayHidingDesktopIcons(std::uint32_t, double) override { return failure(); }

private:
    static QFuture<QImage> failure()
    {
        return QtFuture::makeExceptionalFuture<QImage>(
            AppError::captureFailed(QStringLiteral("this build of glimpso has no screen capture backend")));
    }
};

class NoScreens : public ScreenList
{
public:
    QList<Screen> screens() const override { return {}; }
    std::optional<int> mainIndex() const override { return std::nullopt; }
    QPointF mouseLocation() const override { return {}; }
};

class NoFocus : public FocusKeeper
{
public:
    std::optional<Window> activeForeignWindow() override { return std::nullopt; }
    bool activate(const Window &) override { return false; }
};

} // namespace

DesktopBackend DesktopBackend::load()
{
    DesktopBackend backend;
    backend.name = QStringLiteral("none");
    backend.capture = std::make_unique<NoCapture>();
    backend.screens = std::make_unique<NoScreens>();
    backend.focus = std::make_unique<NoFocus>();
    backend.keys = std::make_unique<NullKeyGrabber>(QStringLiteral("this build of glimpso has no desktop backend"));
    return backend;
}
