#include "recording/RecordingControlBar.h"

#include "recording/BarButton.h"
#include "recording/FloatingPanel.h"
#include "recording/PulsingDot.h"

#include <QBitmap>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace {
constexpr double radius = 22;
const QColor panelColour(36, 36, 38);
} // namespace

RecordingControlBar::RecordingControlBar(bool translucent, std::function<void()> onStop,
                                         std::function<void()> onCancel, QWidget *parent)
    : QWidget(parent), m_translucent(translucent)
{
    FloatingPanel::prepare(this, QStringLiteral("glimpso recording controls"), {false, translucent});
    setFixedSize(barSize);
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, Qt::white);
    setPalette(colours);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(16, 0, 9, 0);
    row->setSpacing(10);
    m_dot = new PulsingDot(this);
    m_time = new QLabel(QStringLiteral("0:00"), this);
    QFont digits = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    digits.setPixelSize(14);
    digits.setWeight(QFont::DemiBold);
    m_time->setFont(digits);
    m_stop = new BarButton(BarButton::Kind::stop, std::move(onStop), this);
    m_cancel = new BarButton(BarButton::Kind::cancel, std::move(onCancel), this);
    row->addWidget(m_dot, 0, Qt::AlignVCenter);
    row->addWidget(m_time, 0, Qt::AlignVCenter);
    row->addStretch(1);
    row->addWidget(m_stop, 0, Qt::AlignVCenter);
    row->addWidget(m_cancel, 0, Qt::AlignVCenter);

    if (!translucent) {
        // Without a compositor the panel is cut to its rounded shape.
        QBitmap shape(barSize);
        shape.fill(Qt::color0);
        QPainter painter(&shape);
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::color1);
        painter.drawRoundedRect(QRectF(QPointF(0, 0), QSizeF(barSize)), radius, radius);
        painter.end();
        setMask(shape);
    }
}

void RecordingControlBar::showAt(const QRectF &frame)
{
    setGeometry(FloatingPanel::qtGeometry(frame));
    show();
    raise();
}

QString RecordingControlBar::clockText(double seconds)
{
    const qint64 whole = qint64(std::floor(std::max(seconds, 0.0)));
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

void RecordingControlBar::setSeconds(double seconds)
{
    m_time->setText(clockText(seconds));
}

QString RecordingControlBar::timeText() const
{
    return m_time->text();
}

void RecordingControlBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_translucent) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(rect(), Qt::transparent);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        QColor glass = panelColour;
        glass.setAlphaF(0.88);
        painter.setBrush(glass);
    } else {
        painter.fillRect(rect(), panelColour);
        painter.setBrush(panelColour);
    }
    painter.setPen(Qt::NoPen);
    painter.drawRoundedRect(QRectF(rect()), radius, radius);
}
