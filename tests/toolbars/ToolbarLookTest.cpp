// The floating toolbar as a person sees it, in the solid and the glass style
// over a light and a dark capture, compared with pictures that were looked at
// once and kept. Small differences of anti-aliasing pass.
#include "ToolbarFixture.h"
#include "toolbars/EditorToolbar.h"

#include <QDir>
#include <QPainter>

#include <gtest/gtest.h>

namespace {

// A stand-in for the frozen screen the toolbar floats over.
class Backdrop : public QWidget
{
public:
    explicit Backdrop(QColor colour) : m_colour(colour) {}

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), m_colour);
        // Stripes, so that a translucent toolbar shows what lies beneath.
        painter.fillRect(QRect(0, 0, width(), 12), m_colour.lightness() > 128 ? QColor(0x3070C0) : QColor(0xE0A030));
    }

private:
    QColor m_colour;
};

QImage render(const QString &background, const QColor &screen)
{
    ToolbarFixture fixture;
    fixture.settings.toolbarBgColorHex.set(background);
    Backdrop backdrop(screen);
    EditorToolbar toolbar(true, fixture.handler(), fixture.settings, &backdrop);
    toolbar.setCurrentSize(QSize(1280, 720));
    const int width = int(toolbar.fittingWidth());
    backdrop.resize(width + 20, 60);
    toolbar.setGeometry(10, 6, width, 40);
    backdrop.show();
    return backdrop.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// Share of pixels that differ by more than `channelTolerance` in any channel.
double differingShare(const QImage &a, const QImage &b, int channelTolerance)
{
    qint64 differing = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            if (std::abs(qRed(p) - qRed(q)) > channelTolerance || std::abs(qGreen(p) - qGreen(q)) > channelTolerance
                || std::abs(qBlue(p) - qBlue(q)) > channelTolerance)
                ++differing;
        }
    return double(differing) / double(a.width() * a.height());
}

void compareWithReference(const QImage &image, const QString &name)
{
    const QString path = QStringLiteral(GLIMPSO_TOOLBAR_REFERENCES "/%1.png").arg(name);
    if (qEnvironmentVariableIsSet("GLIMPSO_WRITE_REFERENCES")) {
        QDir().mkpath(QStringLiteral(GLIMPSO_TOOLBAR_REFERENCES));
        image.save(path);
    }
    const QImage reference(path);
    ASSERT_FALSE(reference.isNull()) << "missing reference " << path.toStdString();
    ASSERT_EQ(image.size(), reference.size()) << name.toStdString();
    EXPECT_LT(differingShare(image, reference.convertToFormat(QImage::Format_RGB32), 24), 0.02) << name.toStdString();
}

} // namespace

TEST(ToolbarLook, SolidOverALightCapture)
{
    compareWithReference(render("#1F1F1F", QColor(0xF2F2F2)), "solid-light");
}

TEST(ToolbarLook, SolidOverADarkCapture)
{
    compareWithReference(render("#1F1F1F", QColor(0x202428)), "solid-dark");
}

TEST(ToolbarLook, GlassOverALightCapture)
{
    compareWithReference(render("glass", QColor(0xF2F2F2)), "glass-light");
}

TEST(ToolbarLook, GlassOverADarkCapture)
{
    compareWithReference(render("glass", QColor(0x202428)), "glass-dark");
}

TEST(ToolbarLook, TheStylesReallyDiffer)
{
    // Guards the references themselves: glass lets the capture through.
    const QImage solid = render("#1F1F1F", QColor(0xF2F2F2));
    const QImage glass = render("glass", QColor(0xF2F2F2));
    EXPECT_GT(differingShare(solid, glass, 24), 0.3);
    // Under the solid toolbar the stripe is hidden; under glass it shows through, softened.
    const QRgb underSolid = solid.pixel(solid.width() / 2, 8);
    const QRgb underGlass = glass.pixel(glass.width() / 2, 8);
    EXPECT_LT(qBlue(underSolid), 80);
    EXPECT_GT(qBlue(underGlass), qRed(underGlass));
}
