#include "overlay/RegionSelector.h"

#include "acquire/DesktopSpace.h"
#include "appbase/InProcessNotices.h"
#include "overlay/SelectorView.h"

#include <QCursor>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QScreen>

Q_LOGGING_CATEGORY(lcRegionSelector, "glimpso.RegionSelector")

namespace {

QString describe(const QRect &rect)
{
    return QStringLiteral("%1x%2+%3+%4").arg(rect.width()).arg(rect.height()).arg(rect.x()).arg(rect.y());
}

} // namespace

RegionSelector::RegionSelector(QList<ScreenSnapshot> snapshots, AppSettings &settings, Options options,
                               std::function<void(const RegionResult &)> completion)
    : m_snapshots(std::move(snapshots)),
      m_settings(settings),
      m_options(std::move(options)),
      m_completion(std::move(completion))
{
}

RegionSelector::~RegionSelector()
{
    qCInfo(lcRegionSelector, "RegionSelector dealloc");
    QObject::disconnect(m_escapeConnection);
    // Windows go with the selector, also when no result ever came.
    m_views.clear();
}

QScreen *RegionSelector::screenFor(const ScreenSnapshot &snapshot)
{
    const QList<QScreen *> screens = QGuiApplication::screens();
    for (int index = 0; index < screens.size(); ++index) {
        if (DesktopSpace::displayID(screens.at(index)->name(), index) == snapshot.displayID)
            return screens.at(index);
    }
    return nullptr;
}

void RegionSelector::present()
{
    m_sincePresent.start();
    QPointer<RegionSelector> self(this);
    m_canvas = std::make_unique<SelectionCanvas>(m_snapshots, m_options.intent, m_settings,
                                                 [self](const RegionResult &result) {
                                                     if (self)
                                                         self->finish(result);
                                                 });
    m_canvas->setToolbarFactory(m_options.makeToolbar);

    const OverlayLook look = OverlayLook::from(m_settings, m_options.intent);
    const QScreen *primary = QGuiApplication::primaryScreen();
    const DesktopSpace space(primary ? primary->geometry() : QRect());
    for (const ScreenSnapshot &snapshot : std::as_const(m_snapshots)) {
        const QScreen *screen = screenFor(snapshot);
        const QRect geometry = screen ? screen->geometry() : space.toQt(snapshot.frame).toAlignedRect();
        auto view = std::make_unique<SelectorView>(m_canvas.get(), snapshot, space, geometry, look);
        view->setOnFirstPaint([this] { viewPainted(); });
        m_canvas->addSurface(view.get());
        view->show();
        qCInfo(lcRegionSelector, "present: overlay window shown at %s", qUtf8Printable(describe(geometry)));
        m_views.push_back(std::move(view));
    }

    if (SelectorView *key = viewUnderPointer())
        makeKey(key);

    m_escapeConnection = connect(&InProcessNotices::instance(), &InProcessNotices::overlayEscape, this,
                                 &RegionSelector::handleEscape, Qt::QueuedConnection);
    Q_EMIT InProcessNotices::instance().overlayDidPresent();
}

SelectorView *RegionSelector::viewUnderPointer() const
{
    if (m_views.empty())
        return nullptr;
    const QPoint pointer = QCursor::pos();
    for (const auto &view : m_views) {
        if (view->geometry().contains(pointer))
            return view.get();
    }
    return m_views.front().get();
}

void RegionSelector::makeKey(SelectorView *view)
{
    view->raise();
    view->activateWindow();
    view->setFocus(Qt::ActiveWindowFocusReason);
}

void RegionSelector::viewPainted()
{
    if (++m_paintedViews == int(m_views.size()))
        qCInfo(lcRegionSelector, "present: overlay painted on %d display(s) in %lld ms", m_paintedViews,
               qlonglong(m_sincePresent.elapsed()));
}

void RegionSelector::handleEscape()
{
    if (!m_canvas)
        return;
    const SelectorView *key = nullptr;
    for (const auto &view : m_views) {
        if (view->isActiveWindow())
            key = view.get();
    }
    qCInfo(lcRegionSelector, "escape relayed; key window=%s",
           key ? qUtf8Printable(describe(key->geometry())) : "none");
    // Another client had the keyboard: take it back before acting.
    if (!key) {
        if (SelectorView *view = viewUnderPointer())
            makeKey(view);
    }
    m_canvas->escape();
}

std::optional<RegionSelecting::ArmedSelection> RegionSelector::armedSelection() const
{
    if (!m_canvas || !m_canvas->armedRect())
        return std::nullopt;
    const QRectF rect = *m_canvas->armedRect();
    return ArmedSelection{rect, m_snapshots, m_canvas->editor().annotationsInImageSpace(rect)};
}

void RegionSelector::finish(const RegionResult &result)
{
    qCInfo(lcRegionSelector, "finish: didFinish=%d result=%s", m_didFinish, qUtf8Printable(result.description()));
    if (m_didFinish)
        return;
    m_didFinish = true;
    QObject::disconnect(m_escapeConnection);
    Q_EMIT InProcessNotices::instance().overlayDidDismiss();

    // The canvas or a view may be the caller right now: hide at once, free
    // once this turn of the event loop is over.
    for (auto &view : m_views) {
        view->hide();
        view.release()->deleteLater();
    }
    m_views.clear();
    if (m_canvas)
        m_canvas.release()->deleteLater();

    if (m_completion)
        m_completion(result);
}
