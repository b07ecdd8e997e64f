#include "app/CaptureCoordinator.h"

#include "annotation/AnnotationRenderer.h"
#include "appbase/AppError.h"
#include "appbase/FreeMemory.h"
#include "output/Notifying.h"
#include "output/OutputService.h"
#include "settings/AppSettings.h"
#include "settings/HexColor.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QPointer>
#include <QPromise>
#include <QTimer>

Q_LOGGING_CATEGORY(lcCoordinator, "glimpso.CaptureCoordinator")

namespace {

QString describe(const std::exception &error)
{
    if (const auto *appError = dynamic_cast<const AppError *>(&error))
        return appError->errorDescription();
    return QString::fromUtf8(error.what());
}

// Any failure as the error the user is shown.
AppError asAppError(const std::exception &error)
{
    if (const auto *appError = dynamic_cast<const AppError *>(&error))
        return *appError;
    return AppError::fileIOFailed(QString::fromUtf8(error.what()));
}

} // namespace

CaptureCoordinator::CaptureCoordinator(Parts parts, QObject *parent) : QObject(parent), m_parts(std::move(parts))
{
    m_releaseMemory.setSingleShot(true);
    m_releaseMemory.setInterval(m_parts.keepCaptureMemoryMs);
    connect(&m_releaseMemory, &QTimer::timeout, this, [this] {
        if (m_isCapturing)
            return;
        m_parts.capture.releaseKeptMemory();
        FreeMemory::returnToSystem();
    });
    connect(this, &CaptureCoordinator::regionFlowEnded, this, [this] {
        if (!m_isCapturing)
            m_parts.capture.keepMemoryReady();
        m_releaseMemory.start();
    });
    m_releaseMemory.start();
}

CaptureCoordinator::~CaptureCoordinator() = default;

void CaptureCoordinator::captureRegion(bool allDisplays, CaptureIntent intent)
{
    captureRegion(allDisplays, intent, m_parts.makeSelector);
}

void CaptureCoordinator::captureRegion(bool allDisplays, CaptureIntent intent, SelectorFactory selector)
{
    if (m_parts.note)
        m_parts.note(intent == CaptureIntent::text ? QStringLiteral("Started a text capture")
                     : allDisplays               ? QStringLiteral("Started an all-displays capture")
                                                 : QStringLiteral("Started a region capture"));
    qCInfo(lcCoordinator, "coordinator.captureRegion entry; allDisplays=%d capturing=%d", allDisplays, m_isCapturing);

    if (m_isCapturing) {
        // The text hotkey over a standing selection reads that selection.
        if (intent == CaptureIntent::text && m_regionSelector) {
            if (const auto armed = m_regionSelector->armedSelection()) {
                const std::shared_ptr<RegionSelecting> selectorNow = m_regionSelector;
                selectorNow->finish(
                    RegionResult::selected(armed->rect, armed->snapshots, EditorAction::copyText(), armed->annotations));
            }
        }
        qCInfo(lcCoordinator, "coordinator.captureRegion: session active; ignoring");
        return;
    }

    m_isCapturing = true;
    if (intent == CaptureIntent::text && m_parts.prepareRecognition)
        m_parts.prepareRecognition();
    rememberFrontmost(true);
    QPointer<CaptureCoordinator> self(this);
    QTimer::singleShot(0, this, [self, allDisplays, intent, selector = std::move(selector)] {
        if (self)
            self->startRegionTask(allDisplays, intent, selector);
    });
}

void CaptureCoordinator::startRegionTask(bool allDisplays, CaptureIntent intent, SelectorFactory selector)
{
    if (!m_parts.screens.hasCaptureAccess()) {
        qCCritical(lcCoordinator, "captureRegion: screen recording not authorized; requesting");
        m_parts.screens.requestCaptureAccess();
        snapshotsFailed(AppError::consentRevoked());
        return;
    }
    const QPointF mouse = m_parts.screens.mouseLocation();
    const QList<ScreenList::Screen> all = m_parts.screens.screens();
    QList<ScreenList::Screen> chosen;
    if (allDisplays) {
        chosen = all;
    } else {
        for (const ScreenList::Screen &screen : all) {
            // A frame holds the points of its left and bottom edges, not of
            // its right and top ones.
            const QRectF f = screen.frame.normalized();
            if (mouse.x() >= f.left() && mouse.x() < f.right() && mouse.y() >= f.top() && mouse.y() < f.bottom()) {
                chosen << screen;
                break;
            }
        }
        if (chosen.isEmpty()) {
            const std::optional<int> main = m_parts.screens.mainIndex();
            if (main && *main >= 0 && *main < all.size())
                chosen << all.at(*main);
            else if (!all.isEmpty())
                chosen << all.first();
        }
    }
    takeSnapshots(chosen, 0, {}, intent, std::move(selector));
}

void CaptureCoordinator::takeSnapshots(QList<ScreenList::Screen> screens, int index, QList<ScreenSnapshot> taken,
                                       CaptureIntent intent, SelectorFactory selector)
{
    // One display after the other, never two at once.
    while (index < screens.size() && !screens.at(index).displayID)
        ++index;
    if (index >= screens.size()) {
        if (taken.isEmpty()) {
            snapshotsFailed(AppError::displayNotFound());
            return;
        }
        presentSelector(taken, intent, selector);
        return;
    }
    const ScreenList::Screen screen = screens.at(index);
    const std::uint32_t id = *screen.displayID;
    QFuture<QImage> shot = m_parts.settings.hideDesktopIcons()
        ? m_parts.capture.captureDisplayHidingDesktopIcons(id, screen.scale)
        : m_parts.capture.captureDisplay(id);
    QPointer<CaptureCoordinator> self(this);
    shot.then(this,
              [self, screens, index, taken, intent, selector, screen, id](const QImage &image) mutable {
                  if (!self)
                      return;
                  taken.append(ScreenSnapshot{id, image, screen.frame, screen.scale});
                  self->takeSnapshots(screens, index + 1, taken, intent, selector);
              })
        .onFailed(this, [self](const std::exception &error) {
            if (self)
                self->snapshotsFailed(asAppError(error));
        });
}

void CaptureCoordinator::presentSelector(const QList<ScreenSnapshot> &snapshots, CaptureIntent intent,
                                         const SelectorFactory &selector)
{
    QStringList ids;
    for (const ScreenSnapshot &snapshot : snapshots)
        ids << QString::number(snapshot.displayID);
    qCInfo(lcCoordinator, "captureRegion targets: displays=[%s]", qUtf8Printable(ids.join(QStringLiteral(", "))));

    if (!selector) {
        // No overlay in this build: nothing was shown, so the session ends
        // here and the focus stays where it is.
        m_isCapturing = false;
        qCCritical(lcCoordinator, "region snapshot failed: no region selector is available");
        Q_EMIT regionFlowEnded({}, QStringLiteral("no region selector is available"));
        return;
    }
    QPointer<CaptureCoordinator> self(this);
    m_regionSelector = selector(snapshots, intent, [self, intent](const RegionResult &result) {
        if (self)
            self->regionCompleted(result, intent);
    });
    if (!m_regionSelector) {
        m_isCapturing = false;
        qCCritical(lcCoordinator, "region snapshot failed: the region selector could not be made");
        Q_EMIT regionFlowEnded({}, QStringLiteral("the region selector could not be made"));
        return;
    }
    const std::shared_ptr<RegionSelecting> presented = m_regionSelector;
    presented->present();
    qCInfo(lcCoordinator, "coordinator.captureRegion: selector presented on %lld display(s)",
           qlonglong(snapshots.size()));
}

void CaptureCoordinator::snapshotsFailed(const AppError &error)
{
    m_isCapturing = false;
    qCCritical(lcCoordinator, "region snapshot failed: %s", qUtf8Printable(error.errorDescription()));
    m_parts.notifier.error(error);
    Q_EMIT regionFlowEnded({}, error.errorDescription());
}

void CaptureCoordinator::dropSelector()
{
    // The selector may be the caller on the stack right now; it goes once
    // this turn of the loop is over.
    std::shared_ptr<RegionSelecting> gone = std::move(m_regionSelector);
    m_regionSelector.reset();
    if (gone)
        QTimer::singleShot(0, this, [gone] {});
}

void CaptureCoordinator::regionCompleted(const RegionResult &result, CaptureIntent intent)
{
    qCInfo(lcCoordinator, "region completion: %s", qUtf8Printable(result.description()));
    // Both before the result is looked at: a new capture may begin while
    // this one's output is still being written.
    dropSelector();
    m_isCapturing = false;

    if (std::holds_alternative<RegionResult::Cancelled>(result.value)) {
        restorePreviousFrontmost();
        Q_EMIT regionFlowEnded({}, {});
        return;
    }

    if (const auto *selected = std::get_if<RegionResult::Selected>(&result.value)) {
        restorePreviousFrontmost();
        QPointer<CaptureCoordinator> self(this);
        const RegionResult::Selected chosen = *selected;
        QTimer::singleShot(0, this, [self, chosen] {
            if (!self)
                return;
            const auto fail = [self](const QString &text, const AppError &error) {
                qCCritical(lcCoordinator, "snapshot crop failed: %s", qUtf8Printable(text));
                self->m_parts.notifier.error(error);
                Q_EMIT self->regionFlowEnded({}, text);
            };
            QFuture<std::optional<QString>> output;
            try {
                const RegionCompositor::Composed composed = RegionCompositor::compose(chosen.rect, chosen.snapshots);
                const QImage flat =
                    glimpso::AnnotationRenderer::flatten(composed.image, chosen.annotations, composed.scale);
                output = self->dispatch(chosen.action, flat, composed.scale);
            } catch (const AppError &error) {
                fail(error.errorDescription(), error);
                return;
            }
            output
                .then(self.data(),
                      [self](const std::optional<QString> &path) {
                          if (self)
                              Q_EMIT self->regionFlowEnded(path.value_or(QString()), {});
                      })
                .onFailed(self.data(), [self, fail](const std::exception &error) {
                    if (self)
                        fail(describe(error), asAppError(error));
                });
        });
        return;
    }

    const auto &area = std::get<RegionResult::Area>(result.value);
    RegionCompositor::Composed composed;
    try {
        composed = RegionCompositor::compose(area.rect, area.snapshots);
    } catch (const AppError &error) {
        qCCritical(lcCoordinator, "snapshot crop failed: %s", qUtf8Printable(error.errorDescription()));
        restorePreviousFrontmost();
        QPointer<CaptureCoordinator> self(this);
        QTimer::singleShot(0, this, [self, error] {
            if (!self)
                return;
            self->m_parts.notifier.error(error);
            Q_EMIT self->regionFlowEnded({}, error.errorDescription());
        });
        return;
    }
    if (intent == CaptureIntent::image) {
        // The focus goes back when the last editor window closes.
        openEditor(composed.image, composed.scale);
    } else {
        restorePreviousFrontmost();
        copyText(composed.image);
    }
    Q_EMIT regionFlowEnded({}, {});
}

QFuture<std::optional<QString>> CaptureCoordinator::dispatch(const EditorAction &action, const QImage &image,
                                                             double scale)
{
    Q_UNUSED(scale) // The picture's pixels are what goes out; its scale matters to the editor only.
    using Kind = EditorAction::Kind;
    const Kind kind = action.kind();
    if (m_parts.note) {
        if (kind == Kind::copy)
            m_parts.note(QStringLiteral("Chose Copy"));
        else if (kind == Kind::save)
            m_parts.note(QStringLiteral("Chose Save"));
        else if (kind == Kind::upload)
            m_parts.note(QStringLiteral("Chose Upload"));
        else if (kind == Kind::copyText)
            m_parts.note(QStringLiteral("Chose Copy Text"));
    }
    qCInfo(lcCoordinator, "dispatch action=%s imageSize=%dx%d", qUtf8Printable(action.description()), image.width(),
           image.height());
    if ((kind == Kind::copy || kind == Kind::save || kind == Kind::upload) && m_parts.playShutter)
        m_parts.playShutter();

    QPointer<CaptureCoordinator> self(this);
    const auto addFile = [self](const QString &path) {
        if (self && self->m_parts.addHistoryFile)
            self->m_parts.addHistoryFile(path);
    };
    switch (kind) {
    case Kind::copy:
        return m_parts.output.copy(image).then(this, [addFile](const std::optional<QString> &path) {
            if (path)
                addFile(*path);
            return path;
        });
    case Kind::save:
        return m_parts.output.handle(image, true).then(this, [addFile](const QString &path) {
            addFile(path);
            return std::optional<QString>(path);
        });
    case Kind::upload: {
        auto promise = std::make_shared<QPromise<std::optional<QString>>>();
        QFuture<std::optional<QString>> result = promise->future();
        promise->start();
        m_parts.output.handle(image, false)
            .then(this,
                  [self, promise, addFile, image](const QString &path) {
                      // The file and its history entry stay whatever the upload does.
                      addFile(path);
                      if (!self || !self->m_parts.upload) {
                          promise->setException(AppError::uploadNotConfigured());
                          promise->finish();
                          return;
                      }
                      self->m_parts.upload(image, path)
                          .then(self.data(),
                                [self, promise, path](const QUrl &link) {
                                    const QString text = link.toString(QUrl::FullyEncoded);
                                    qCInfo(lcCoordinator, "dispatch: uploaded %s → %s",
                                           qUtf8Printable(QFileInfo(path).fileName()), qUtf8Printable(text));
                                    if (self)
                                        self->post(QStringLiteral("Uploaded — link copied"), text, 2.0,
                                                   NoticeAction::open(text));
                                    promise->addResult(std::optional<QString>(path));
                                    promise->finish();
                                })
                          .onFailed(self.data(), [promise](const std::exception &error) {
                              promise->setException(asAppError(error));
                              promise->finish();
                          });
                  })
            .onFailed(this, [promise](const std::exception &error) {
                promise->setException(asAppError(error));
                promise->finish();
            });
        return result;
    }
    case Kind::copyText:
        copyText(image);
        return QtFuture::makeReadyFuture(std::optional<QString>());
    case Kind::selectTool:
    case Kind::selectColor:
    case Kind::setSize:
    case Kind::setTextOptions:
    case Kind::undo:
    case Kind::redo:
    case Kind::close:
        break;
    }
    return QtFuture::makeReadyFuture(std::optional<QString>());
}

bool CaptureCoordinator::isOpenableLink(const QString &code)
{
    const QUrl url(code, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty())
        return false;
    const QString scheme = url.scheme().toLower();
    return scheme == QLatin1String("http") || scheme == QLatin1String("https");
}

int CaptureCoordinator::lineCount(const QString &text)
{
    return int(text.split(QLatin1Char('\n'), Qt::SkipEmptyParts).size());
}

QString CaptureCoordinator::firstLine(const QString &text)
{
    const QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    return lines.isEmpty() ? text : lines.first();
}

void CaptureCoordinator::copyText(const QImage &image)
{
    QPointer<CaptureCoordinator> self(this);
    const auto failed = [self](const QString &description) {
        if (!self)
            return;
        qCCritical(lcCoordinator, "text recognition failed: %s", qUtf8Printable(description));
        self->post(QStringLiteral("Couldn't read the text"), description, 2.0, NoticeAction::none());
        Q_EMIT self->textRead({});
    };
    if (!m_parts.recognize) {
        QTimer::singleShot(0, this, [failed] { failed(QStringLiteral("Text recognition is not available.")); });
        return;
    }
    m_parts.recognize(image)
        .then(this,
              [self](const RecognizedText &found) {
                  if (!self)
                      return;
                  const Parts &parts = self->m_parts;
                  if (found.code) {
                      const QString code = *found.code;
                      if (parts.copyTextToClipboard)
                          parts.copyTextToClipboard(code);
                      if (parts.addHistoryText)
                          parts.addHistoryText(code);
                      if (isOpenableLink(code))
                          self->post(QStringLiteral("Copied link · click to open"), code, 4.0,
                                     NoticeAction::open(code));
                      else
                          self->post(QStringLiteral("Copied code"), code, 2.0, NoticeAction::none());
                      Q_EMIT self->textRead(code);
                  } else if (found.text) {
                      const QString text = *found.text;
                      if (parts.copyTextToClipboard)
                          parts.copyTextToClipboard(text);
                      if (parts.addHistoryText)
                          parts.addHistoryText(text);
                      const int count = lineCount(text);
                      self->post(count == 1 ? QStringLiteral("Copied text") : QStringLiteral("Copied %1 lines").arg(count),
                                 firstLine(text), 2.0, NoticeAction::none());
                      Q_EMIT self->textRead(text);
                  } else {
                      self->post(QStringLiteral("No text found"), QStringLiteral("Try a larger area or sharper text."),
                                 2.0, NoticeAction::none());
                      Q_EMIT self->textRead({});
                  }
              })
        .onFailed(this, [failed](const std::exception &error) { failed(describe(error)); });
}

void CaptureCoordinator::captureRegionDelayed()
{
    const qint64 seconds = m_parts.settings.captureDelaySeconds();
    qCInfo(lcCoordinator, "delayed capture queued; firing in %llds", static_cast<long long>(seconds));
    QPointer<CaptureCoordinator> self(this);
    auto fire = [self] {
        if (self)
            self->captureRegion(false, CaptureIntent::image);
    };
    if (m_parts.after)
        m_parts.after(seconds, fire);
    else
        QTimer::singleShot(std::chrono::seconds(std::max<qint64>(seconds, 0)), this, fire);
}

void CaptureCoordinator::captureWindow()
{
    startWindowCapture(m_parts.pickWindow, std::nullopt, true);
}

void CaptureCoordinator::captureWindow(std::function<void(PickCompletion)> pick, std::optional<EditorAction> output)
{
    startWindowCapture(std::move(pick), std::move(output), false);
}

void CaptureCoordinator::startWindowCapture(std::function<void(PickCompletion)> pick,
                                            std::optional<EditorAction> output, bool afterPicker)
{
    if (m_parts.note)
        m_parts.note(QStringLiteral("Started a window capture"));
    if (m_isCapturing)
        return;
    if (!m_parts.screens.hasCaptureAccess()) {
        m_parts.screens.requestCaptureAccess();
        QPointer<CaptureCoordinator> self(this);
        QTimer::singleShot(0, this, [self] {
            if (!self)
                return;
            self->m_parts.notifier.error(AppError::consentRevoked());
            Q_EMIT self->windowFlowEnded({}, AppError::consentRevoked().errorDescription());
        });
        return;
    }
    if (!pick || !m_parts.captureWindow) {
        qCInfo(lcCoordinator, "captureWindow: no window picker in this build");
        return;
    }
    rememberFrontmost(false);
    m_isCapturing = true;
    QPointer<CaptureCoordinator> self(this);
    pick([self, afterPicker, output](std::optional<std::uint32_t> windowID, bool shiftHeld) {
        if (self)
            self->windowPicked(windowID, shiftHeld, afterPicker, output);
    });
}

void CaptureCoordinator::windowPicked(std::optional<std::uint32_t> windowID, bool shiftHeld, bool afterPicker,
                                      std::optional<EditorAction> output)
{
    m_isCapturing = false;
    if (!windowID) {
        restorePreviousFrontmost();
        Q_EMIT windowFlowEnded({}, {});
        return;
    }
    const AppSettings &settings = m_parts.settings;
    WindowCaptureOptions options;
    const QColor colour = HexColor::parse(settings.windowBackgroundHex()).value_or(QColor(Qt::white));
    // Shift at the click swaps a transparent and a coloured background for
    // this one capture.
    if ((!shiftHeld) != settings.windowTransparent())
        options.background = colour;
    options.padding = settings.windowPadding();
    options.shadow = settings.windowShadow();
    const std::uint32_t id = *windowID;
    QPointer<CaptureCoordinator> self(this);
    QTimer::singleShot(0, this, [self, id, options, afterPicker, output] {
        if (!self)
            return;
        const auto fail = [self](const std::exception &error) {
            if (!self)
                return;
            qCCritical(lcCoordinator, "window capture failed: %s", qUtf8Printable(describe(error)));
            self->restorePreviousFrontmost();
            self->m_parts.notifier.error(asAppError(error));
            Q_EMIT self->windowFlowEnded({}, describe(error));
        };
        self->m_parts.captureWindow(id, options, afterPicker)
            .then(self.data(),
                  [self, fail, output](const RegionCompositor::Composed &shot) {
                      if (!self)
                          return;
                      if (!output && self->m_parts.settings.editMode() == EditMode::afterCapture) {
                          self->openEditor(shot.image, shot.scale);
                          Q_EMIT self->windowFlowEnded({}, {});
                          return;
                      }
                      self->restorePreviousFrontmost();
                      self->dispatch(output.value_or(EditorAction::copy()), shot.image, shot.scale)
                          .then(self.data(),
                                [self](const std::optional<QString> &path) {
                                    if (self)
                                        Q_EMIT self->windowFlowEnded(path.value_or(QString()), {});
                                })
                          .onFailed(self.data(), [fail](const std::exception &error) { fail(error); });
                  })
            .onFailed(self.data(), [fail](const std::exception &error) { fail(error); });
    });
}

void CaptureCoordinator::openEditor(const QImage &image, double scale)
{
    if (m_parts.note)
        m_parts.note(QStringLiteral("Opened the editor window"));
    QPointer<CaptureCoordinator> self(this);
    if (!m_parts.makeEditor) {
        // Without an editor window the picture still has to reach the user:
        // it goes to the clipboard as a copy would, and the focus goes back.
        qCInfo(lcCoordinator, "openEditor: no editor window in this build; copying instead");
        restorePreviousFrontmost();
        dispatch(EditorAction::copy(), image, scale).onFailed(this, [self](const std::exception &error) {
            qCCritical(lcCoordinator, "editor output failed: %s", qUtf8Printable(describe(error)));
            if (self)
                self->m_parts.notifier.error(asAppError(error));
            return std::optional<QString>();
        });
        return;
    }
    auto identity = std::make_shared<EditorWindow *>(nullptr);
    auto onOutput = [self](const EditorAction &action, const QImage &output, double outputScale) {
        if (!self)
            return;
        QTimer::singleShot(0, self.data(), [self, action, output, outputScale] {
            if (!self)
                return;
            self->dispatch(action, output, outputScale).onFailed(self.data(), [self](const std::exception &error) {
                qCCritical(lcCoordinator, "editor output failed: %s", qUtf8Printable(describe(error)));
                if (self)
                    self->m_parts.notifier.error(asAppError(error));
                return std::optional<QString>();
            });
        });
    };
    auto onClose = [self, identity] {
        if (!self)
            return;
        auto &windows = self->m_editorWindows;
        const auto it = std::find_if(windows.begin(), windows.end(),
                                     [&identity](const std::unique_ptr<EditorWindow> &w) { return w.get() == *identity; });
        if (it == windows.end())
            return;
        // The window may be closing itself on the stack right now.
        std::shared_ptr<EditorWindow> gone(std::move(*it));
        windows.erase(it);
        QTimer::singleShot(0, self.data(), [gone] {});
        if (windows.empty())
            self->restorePreviousFrontmost();
    };
    std::unique_ptr<EditorWindow> window = m_parts.makeEditor(image, scale, onOutput, onClose);
    if (!window)
        return;
    *identity = window.get();
    EditorWindow *shown = window.get();
    m_editorWindows.push_back(std::move(window));
    shown->present();
}

void CaptureCoordinator::rememberFrontmost(bool logIt)
{
    // glimpso's own windows are skipped, so a capture started from an editor
    // keeps the window that was in front before it.
    const std::optional<FocusKeeper::Window> active = m_parts.focus.activeForeignWindow();
    if (!active)
        return;
    m_previousFrontmost = active;
    if (logIt)
        qCInfo(lcCoordinator, "captureRegion: previous frontmost=%s (0x%x)", qUtf8Printable(active->name), active->id);
}

void CaptureCoordinator::restorePreviousFrontmost()
{
    if (!m_previousFrontmost)
        return;
    const FocusKeeper::Window window = *m_previousFrontmost;
    m_previousFrontmost.reset();
    if (!m_parts.focus.activate(window)) {
        qCCritical(lcCoordinator, "restoreFocus: no window 0x%x (%s) any more", window.id, qUtf8Printable(window.name));
        return;
    }
    qCInfo(lcCoordinator, "restoreFocus: activated %s (0x%x)", qUtf8Printable(window.name), window.id);
}

void CaptureCoordinator::post(const QString &title, const QString &body, double duration, const NoticeAction &action)
{
    m_parts.notifier.post(title, body, duration, action);
}
