#include "overlay/SelectorView.h"

#include "overlay/CanvasToolbar.h"

#include "annotation/AnnotationRenderer.h"
#include "annotation/DrawingRules.h"
#include "overlay/OverlayTextField.h"
#include "overlay/SelectionCanvas.h"
#include "settings/Hotkey.h"

#include <QElapsedTimer>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QWheelEvent>

#include <cmath>

Q_LOGGING_CATEGORY(lcSelectorView, "glimpso.SelectorView")

namespace {

constexpr qreal outlineWidth = 2;
constexpr qreal handleDiameter = 10;
constexpr qreal handleOutline = 1.5;
// How far outline and handles reach beyond the selection's edge, with room
// for anti-aliasing.
constexpr int selectionReach = int(handleDiameter / 2 + handleOutline) + 2;

QFont systemFont(qreal pointSize, QFont::Weight weight, bool fixedDigits)
{
    QFont font = fixedDigits ? QFontDatabase::systemFont(QFontDatabase::FixedFont)
                             : QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(int(std::lround(pointSize)));
    font.setWeight(weight);
    return font;
}

} // namespace

SelectorView::SelectorView(SelectionCanvas *canvas, const ScreenSnapshot &snapshot, const DesktopSpace &space,
                           const QRect &qtGeometry, const OverlayLook &look)
    : QWidget(nullptr,
              Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::X11BypassWindowManagerHint),
      m_canvas(canvas),
      m_image(snapshot.image),
      m_frame(snapshot.frame),
      m_space(space),
      m_qtOrigin(qtGeometry.topLeft()),
      m_look(look),
      m_hintFont(systemFont(14, QFont::Medium, false)),
      m_badgeFont(systemFont(11, QFont::Medium, true))
{
    setWindowTitle(QStringLiteral("glimpso overlay"));
    // Every pixel is ours: no background fill before each paint.
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_NoSystemBackground);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(crosshair());
    m_image.setDevicePixelRatio(snapshot.scale);
    setGeometry(qtGeometry);
    m_layers = std::make_unique<glimpso::AnnotationLayers>(
        m_image, qtGeometry.size(), [this](QPainter &painter, const QRect &area) { paintFrozen(painter, area); },
        [this](const QRegion &area) { updateArea(area); });
}

void SelectorView::updateArea(const QRegion &area)
{
    m_lastDamage = area;
    update(area);
}

const QCursor &SelectorView::crosshair()
{
    static const QCursor cursor = [] {
        QPixmap pixmap(24, 24);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        // A black cross under a white one: visible on any background.
        painter.setPen(QPen(Qt::black, 3));
        painter.drawLine(QPointF(0, 12), QPointF(24, 12));
        painter.drawLine(QPointF(12, 0), QPointF(12, 24));
        painter.setPen(QPen(Qt::white, 1));
        painter.drawLine(QPointF(0, 12), QPointF(24, 12));
        painter.drawLine(QPointF(12, 0), QPointF(12, 24));
        painter.end();
        return QCursor(pixmap, 12, 12);
    }();
    return cursor;
}

QPointF SelectorView::toLocal(QPointF global) const
{
    return m_space.toQt(global) - QPointF(m_qtOrigin);
}

QRectF SelectorView::toLocal(const QRectF &global) const
{
    return m_space.toQt(global).translated(-QPointF(m_qtOrigin));
}

QPointF SelectorView::toGlobal(QPointF local) const
{
    return m_space.toGlobal(local + QPointF(m_qtOrigin));
}

// ---- what the canvas shows -------------------------------------------------

QRect SelectorView::selectionDamage() const
{
    if (!m_selection)
        return {};
    return toLocal(*m_selection).toAlignedRect().adjusted(-selectionReach, -selectionReach, selectionReach,
                                                          selectionReach);
}

QRect SelectorView::badgeDamage() const
{
    return m_badge ? toLocal(*m_badge).toAlignedRect().adjusted(-1, -1, 1, 1) : QRect();
}

void SelectorView::showSelection(const QRectF &rect, bool armed)
{
    const QRect before = selectionDamage();
    const std::optional<QRectF> old = m_selection;
    m_selection = rect;
    const QRect after = selectionDamage();
    // The inside shared by the old and the new hole looks the same before and
    // after; everything else within either outline's reach may change.
    QRegion damage = QRegion(before) + QRegion(after);
    if (old && m_armed == armed) {
        const QRect keptInside = before.intersected(after).adjusted(2 * selectionReach, 2 * selectionReach,
                                                                    -2 * selectionReach, -2 * selectionReach);
        if (keptInside.isValid())
            damage -= QRegion(keptInside);
    }
    if (armed != m_armed) {
        m_armed = armed;
        damage += QRegion(after);
    }
    // The veil changed there: the cached picture under the marks too.
    m_layers->invalidateBase(damage);
    if (armed && m_hintShown) {
        m_hintShown = false;
        damage += QRegion(hintRect().adjusted(-1, -1, 1, 1));
    }
    updateArea(damage);
}

void SelectorView::renderLiveDrag(const QRectF &rect)
{
    showSelection(rect, false);
}

void SelectorView::renderSelection(const QRectF &rect, bool armed)
{
    showSelection(rect, armed);
}

void SelectorView::renderSizeReadout(const QString &text, const QRectF &rect, const QRectF &screen)
{
    const QRect before = badgeDamage();
    const QFontMetricsF metrics(m_badgeFont);
    const QSizeF textSize(metrics.horizontalAdvance(text), metrics.height());
    m_badgeText = text;
    m_badge = SelectionCanvas::sizeBadgeFrame(rect, textSize, screen);
    m_lastDamage = QRegion(before) + QRegion(badgeDamage());
    update(m_lastDamage);
}

void SelectorView::invalidateCursors()
{
    updateCursor(toGlobal(mapFromGlobal(QCursor::pos())));
}

void SelectorView::renderPreview(const std::optional<QPainterPath> &path, const QColor &stroke, qreal width,
                                 const QColor &fill)
{
    std::optional<QPainterPath> local;
    if (path) {
        // Global points, y up, to this window.
        QTransform toWindow;
        toWindow.translate(-m_frame.left(), m_frame.bottom());
        toWindow.scale(1, -1);
        local = toWindow.map(*path);
    }
    m_layers->setPreview(local, QPen(stroke, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin),
                         fill.alpha() ? QBrush(fill) : QBrush(Qt::NoBrush));
}

void SelectorView::renderMosaicPreview(const std::optional<QRectF> &frame, qreal block)
{
    m_layers->setMosaicPreview(frame ? std::optional<QRectF>(toLocal(*frame)) : std::nullopt, block);
}

void SelectorView::renderAnnotations(const QList<glimpso::Annotation> &annotations)
{
    QList<glimpso::Annotation> local;
    local.reserve(annotations.size());
    for (const glimpso::Annotation &annotation : annotations)
        local.append(glimpso::DrawingRules::toImageSpace(annotation, m_frame));
    m_layers->setAnnotations(local);
}

void SelectorView::renderAnnotationSelection(const std::optional<QRectF> &rect)
{
    m_layers->setSelectionOutline(rect ? std::optional<QRectF>(toLocal(*rect)) : std::nullopt);
}

void SelectorView::renderPointHandles(const std::optional<QList<QPointF>> &points)
{
    QList<QPointF> local;
    if (points) {
        for (const QPointF &point : *points)
            local.append(toLocal(point));
    }
    m_layers->setPointHandles(local);
}

void SelectorView::showHUD(const QString &text, QPointF near, const QRectF &screen)
{
    // Only the display nearest the pointer shows it.
    m_layers->showHUD(text, toLocal(near), screen == m_frame ? std::optional<QRectF>(toLocal(screen)) : std::nullopt);
}

std::optional<glimpso::TextHost> SelectorView::textHost()
{
    return glimpso::TextHost{this, [this](const QRectF &global) { return toLocal(global); }};
}

SelectorView::~SelectorView()
{
    // The floating toolbar sits in this window but belongs to the canvas,
    // which may outlive the window by a moment: hand it back unharmed.
    for (QObject *child : children()) {
        auto *widget = qobject_cast<QWidget *>(child);
        if (widget && dynamic_cast<CanvasToolbar *>(widget)) {
            widget->hide();
            widget->setParent(nullptr);
        }
    }
}

std::optional<SelectorSurface::ToolbarHost> SelectorView::toolbarHost()
{
    return ToolbarHost{this, [this](const QRectF &global) { return toLocal(global); }};
}

glimpso::TextEntryField *SelectorView::openField(const QRectF &localFrame)
{
    OverlayTextField::Callbacks callbacks;
    callbacks.changed = [this] {
        if (m_canvas)
            m_canvas->editor().textFieldChanged();
    };
    callbacks.commit = [this] {
        if (m_canvas)
            m_canvas->editor().commitPendingText();
    };
    // Escape in the field is Escape on the overlay: it drops the text.
    callbacks.cancel = [this] {
        if (m_canvas)
            m_canvas->escape();
    };
    // The frame's drags come in this window's coordinates; the editor works
    // in global points, y up.
    callbacks.moved = [this](QPointF travel) {
        if (m_canvas)
            m_canvas->editor().moveTextBy(toGlobal(travel) - toGlobal(QPointF()));
    };
    callbacks.resizeBegan = [this] {
        if (m_canvas)
            m_canvas->editor().beginTextResize();
    };
    callbacks.resized = [this](QSizeF travel, QPointF pointer) {
        if (!m_canvas)
            return;
        // The readout of the new size shows at the pointer.
        m_canvas->editor().setLastMouseLocation(toGlobal(pointer));
        m_canvas->editor().resizeTextBy(travel);
    };
    auto *field = new OverlayTextField(this, std::move(callbacks), m_look.accent);
    field->setFrame(localFrame);
    field->show();
    field->setFocus(Qt::OtherFocusReason);
    return field;
}

void SelectorView::closeField(glimpso::TextEntryField *field)
{
    // The field may be the caller (its Return or Escape): it goes once this
    // turn of the event loop is over.
    if (auto *widget = dynamic_cast<OverlayTextField *>(field))
        widget->dismiss();
    setFocus(Qt::OtherFocusReason);
}

// ---- painting --------------------------------------------------------------

QRect SelectorView::hintRect() const
{
    const QFontMetricsF metrics(m_hintFont);
    const qreal w = metrics.horizontalAdvance(m_look.hint) + 36;
    const qreal h = metrics.height() + 16;
    // Centred, its lower edge 60 points below the display's top.
    return QRectF((width() - w) / 2, 60 - h, w, h).toAlignedRect();
}

void SelectorView::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    m_layers->paintMarks(painter, event->region());
    painter.setClipRegion(event->region());
    paintSelection(painter);
    m_layers->paintEditing(painter);
    if (m_hintShown)
        paintHint(painter);
    paintBadge(painter);
    m_painted = true;
}

void SelectorView::paintDim(QPainter &painter, const QRect &area) const
{
    if (!m_selection) {
        painter.fillRect(area, m_look.dim);
        return;
    }
    // The veil is four bands around the hole, so no pixel is blended twice.
    const QRectF hole = toLocal(*m_selection);
    const QRectF all(area);
    const QRectF above(all.left(), all.top(), all.width(), std::max(0.0, hole.top() - all.top()));
    const QRectF below(all.left(), hole.bottom(), all.width(), std::max(0.0, all.bottom() - hole.bottom()));
    const qreal middleTop = std::max(all.top(), hole.top());
    const qreal middleHeight = std::max(0.0, std::min(all.bottom(), hole.bottom()) - middleTop);
    const QRectF left(all.left(), middleTop, std::max(0.0, hole.left() - all.left()), middleHeight);
    const QRectF right(hole.right(), middleTop, std::max(0.0, all.right() - hole.right()), middleHeight);
    for (const QRectF &band : {above, below, left, right}) {
        const QRectF piece = band.intersected(all);
        if (!piece.isEmpty())
            painter.fillRect(piece, m_look.dim);
    }
}

void SelectorView::paintFrozen(QPainter &painter, const QRect &area) const
{
    // The frozen screen, pixel for pixel at the display's own density.
    const qreal scale = m_image.devicePixelRatio();
    const QRectF source(area.x() * scale, area.y() * scale, area.width() * scale, area.height() * scale);
    painter.drawImage(QRectF(area), m_image, source);
    paintDim(painter, area);
}

void SelectorView::paintSelection(QPainter &painter) const
{
    if (!m_selection)
        return;
    const QRectF rect = toLocal(*m_selection);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(m_look.accent, outlineWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(rect);
    if (!m_armed)
        return;
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(QPen(Qt::white, handleOutline));
    painter.setBrush(m_look.accent);
    for (glimpso::Handle handle : glimpso::allHandles) {
        const QPointF centre = toLocal(glimpso::anchor(handle, *m_selection));
        painter.drawEllipse(centre, handleDiameter / 2, handleDiameter / 2);
    }
}

void SelectorView::paintHint(QPainter &painter) const
{
    const QRect box = hintRect();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 153));
    painter.drawRoundedRect(box, 8, 8);
    painter.setFont(m_hintFont);
    painter.setPen(Qt::white);
    painter.drawText(box, Qt::AlignCenter, m_look.hint);
}

void SelectorView::paintBadge(QPainter &painter) const
{
    if (!m_badge)
        return;
    const QRectF box = toLocal(*m_badge);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 178));
    painter.drawRoundedRect(box, 4, 4);
    painter.setFont(m_badgeFont);
    painter.setPen(Qt::white);
    painter.drawText(box, Qt::AlignCenter, m_badgeText);
}

bool SelectorView::event(QEvent *event)
{
    if (event->type() != QEvent::UpdateRequest)
        return QWidget::event(event);
    QElapsedTimer timer;
    timer.start();
    const bool handled = QWidget::event(event);
    // Paint and flush together: what one pointer move costs this display.
    qCDebug(lcSelectorView, "update: %lld us", qlonglong(timer.nsecsElapsed() / 1000));
    // An update request paints and flushes the window: after the first one
    // the frozen screen is on the display.
    if (m_painted && !m_reportedFirstPaint) {
        m_reportedFirstPaint = true;
        if (m_onFirstPaint)
            m_onFirstPaint();
    }
    return handled;
}

// ---- events ----------------------------------------------------------------

void SelectorView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_canvas)
        return QWidget::mousePressEvent(event);
    m_canvas->mouseDown(toGlobal(event->position()));
}

void SelectorView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_canvas)
        return QWidget::mouseMoveEvent(event);
    const QPointF global = toGlobal(event->position());
    if (event->buttons() & Qt::LeftButton) {
        m_canvas->mouseDragged(global, event->modifiers());
    } else {
        m_canvas->mouseMoved(global);
        updateCursor(global);
    }
}

void SelectorView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_canvas)
        return QWidget::mouseReleaseEvent(event);
    m_canvas->mouseUp(toGlobal(event->position()));
}

void SelectorView::keyPressEvent(QKeyEvent *event)
{
    if (!m_canvas)
        return QWidget::keyPressEvent(event);
    if (event->key() == Qt::Key_Shift || event->key() == Qt::Key_Alt) {
        m_canvas->modifiersChanged(event->modifiers());
        return;
    }
    const std::optional<Hotkey> key = Hotkey::fromKeyEvent(event->key(), event->modifiers());
    if (key && m_canvas->keyDown(*key, event->text()))
        return;
    QWidget::keyPressEvent(event);
}

void SelectorView::keyReleaseEvent(QKeyEvent *event)
{
    if (m_canvas && (event->key() == Qt::Key_Shift || event->key() == Qt::Key_Alt)) {
        m_canvas->modifiersChanged(event->modifiers());
        return;
    }
    QWidget::keyReleaseEvent(event);
}

void SelectorView::wheelEvent(QWheelEvent *event)
{
    const glimpso::ScrollInput input =
        glimpso::ScrollInput::fromWheel(event->angleDelta(), event->pixelDelta(), event->phase());
    if (m_canvas && m_canvas->scrollWheel(input))
        return;
    QWidget::wheelEvent(event);
}

void SelectorView::updateCursor(QPointF global)
{
    const std::optional<QList<glimpso::CursorRect>> rects = m_canvas ? m_canvas->cursorRects() : std::nullopt;
    if (!rects) {
        setCursor(crosshair());
        return;
    }
    // Later rectangles win: the selection's handles lie over the editor's own.
    Qt::CursorShape shape = Qt::ArrowCursor;
    for (const glimpso::CursorRect &rect : *rects) {
        if (rect.rect.contains(global) && rect.rect.intersects(m_frame))
            shape = rect.cursor;
    }
    setCursor(shape);
}
