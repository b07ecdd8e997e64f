#pragma once

#include "acquire/CaptureServicing.h"
#include "annotation/EditorAction.h"
#include "acquire/FocusKeeper.h"
#include "acquire/RegionCompositor.h"
#include "acquire/RegionResult.h"
#include "acquire/ScreenList.h"
#include "app/EditorWindow.h"
#include "acquire/RegionSelecting.h"
#include "acquire/WindowCapture.h"
#include "appbase/CaptureIntent.h"

#include <QColor>
#include <QFuture>
#include <QImage>
#include <QObject>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

class AppSettings;
class AppError;
class Notifying;
struct NoticeAction;
class OutputService;

// The one object every image capture passes through: it guards against two
// sessions at once, takes the display snapshots, puts up the selector, and
// sends what comes back to output, upload, text recognition or the editor.
// Main thread only.
class CaptureCoordinator : public QObject
{
    Q_OBJECT

public:
    // What text recognition found; either may be absent.
    struct RecognizedText {
        std::optional<QString> text;
        std::optional<QString> code;
    };
    // How a picked window is drawn.
    using WindowCaptureOptions = WindowCapture::Options;

    using SelectorFactory = std::function<std::shared_ptr<RegionSelecting>(
        const QList<ScreenSnapshot> &snapshots, CaptureIntent intent, std::function<void(const RegionResult &)>)>;
    using EditorFactory = std::function<std::unique_ptr<EditorWindow>(
        const QImage &image, double scale, std::function<void(const EditorAction &, const QImage &, double)> onOutput,
        std::function<void()> onClose)>;
    // The chosen window, or absent when the pick was left; and whether Shift
    // was held at the click.
    using PickCompletion = std::function<void(std::optional<std::uint32_t> windowID, bool shiftHeld)>;

    // Everything the coordinator reaches. The services are required; each
    // function may be left empty while its subsystem is missing, and the
    // coordinator then does the least surprising thing (see each flow).
    struct Parts {
        AppSettings &settings;
        CaptureServicing &capture;
        OutputService &output;
        Notifying &notifier;
        ScreenList &screens;
        FocusKeeper &focus;
        // A diary sentence of what the user did.
        std::function<void(const QString &)> note;
        std::function<void()> playShutter;
        SelectorFactory makeSelector;
        EditorFactory makeEditor;
        std::function<void(PickCompletion)> pickWindow;
        // The window's picture on its background; `afterPicker`: the picker
        // lay over the window a moment ago.
        std::function<QFuture<RegionCompositor::Composed>(std::uint32_t, const WindowCaptureOptions &, bool afterPicker)>
            captureWindow;
        std::function<QFuture<RecognizedText>(const QImage &)> recognize;
        // A text capture has begun: the reader may get ready while the user
        // drags.
        std::function<void()> prepareRecognition;
        // Uploads and returns the public link. `savedPath` is the capture's
        // file just written: when it is the picture's PNG, its bytes serve
        // as they are, and the picture is not encoded a second time.
        std::function<QFuture<QUrl>(const QImage &, const QString &savedPath)> upload;
        std::function<void(const QString &path)> addHistoryFile;
        std::function<void(const QString &text)> addHistoryText;
        // Replaces the clipboard with plain text.
        std::function<void(const QString &text)> copyTextToClipboard;
        // Runs `fire` after `seconds`; empty means a timer on this object.
        std::function<void(qint64 seconds, std::function<void()> fire)> after;
        // How long capture memory is kept after a capture (and after start)
        // for a quick next one, before an idle copy lets it go.
        int keepCaptureMemoryMs = 10000;
    };

    explicit CaptureCoordinator(Parts parts, QObject *parent = nullptr);
    ~CaptureCoordinator() override;

    bool isCapturing() const { return m_isCapturing; }
    // The recording coordinator's area pick holds the same guard.
    void setCapturing(bool capturing) { m_isCapturing = capturing; }
    bool hasRegionSelector() const { return m_regionSelector != nullptr; }
    // Whether this build can pick a window to capture.
    bool canPickWindows() const { return m_parts.pickWindow && m_parts.captureWindow; }
    int editorWindowCount() const { return int(m_editorWindows.size()); }
    std::optional<FocusKeeper::Window> previousFrontmost() const { return m_previousFrontmost; }

    void captureRegion(bool allDisplays, CaptureIntent intent);
    // The same flow with a selector of the caller's choice for this one
    // session: the command line chooses its rectangle without an overlay.
    void captureRegion(bool allDisplays, CaptureIntent intent, SelectorFactory selector);
    void captureRegionDelayed();
    void captureWindow();
    // The same flow with the window chosen by `pick` instead of the picker
    // (the command line names it), and, when given, this output instead of
    // the one the settings choose.
    void captureWindow(std::function<void(PickCompletion)> pick, std::optional<EditorAction> output);
    void openEditor(const QImage &image, double scale);

    // Output of a finished picture; the saved file's path when there is one.
    // Fails with the output's or the upload's error.
    QFuture<std::optional<QString>> dispatch(const EditorAction &action, const QImage &image, double scale);

    // Whether a link in a code is one to open: http or https, in any case.
    static bool isOpenableLink(const QString &code);
    // Lines of recognised text: pieces between line feeds, empty ones dropped.
    static int lineCount(const QString &text);
    static QString firstLine(const QString &text);

Q_SIGNALS:
    // A region session's output is done: the file written, if any, or the
    // text of the error that ended it. Also after a cancel or a failed start.
    void regionFlowEnded(const QString &savedPath, const QString &errorText);
    // The same for a window capture: the file written, if any, or the text of
    // the error; also when the pick was left (both empty).
    void windowFlowEnded(const QString &savedPath, const QString &errorText);
    // A reading of text is over: what went to the clipboard (the code, or the
    // text), empty when nothing was found or the reading failed.
    void textRead(const QString &copied);

private:
    void startRegionTask(bool allDisplays, CaptureIntent intent, SelectorFactory selector);
    void takeSnapshots(QList<ScreenList::Screen> screens, int index, QList<ScreenSnapshot> taken, CaptureIntent intent,
                       SelectorFactory selector);
    void presentSelector(const QList<ScreenSnapshot> &snapshots, CaptureIntent intent, const SelectorFactory &selector);
    void snapshotsFailed(const AppError &error);
    void dropSelector();
    void regionCompleted(const RegionResult &result, CaptureIntent intent);
    void copyText(const QImage &image);
    void startWindowCapture(std::function<void(PickCompletion)> pick, std::optional<EditorAction> output,
                            bool afterPicker);
    void windowPicked(std::optional<std::uint32_t> windowID, bool shiftHeld, bool afterPicker,
                      std::optional<EditorAction> output);
    void rememberFrontmost(bool logIt);
    void restorePreviousFrontmost();
    void post(const QString &title, const QString &body, double duration, const NoticeAction &action);

    Parts m_parts;
    QTimer m_releaseMemory;
    std::shared_ptr<RegionSelecting> m_regionSelector;
    std::vector<std::unique_ptr<EditorWindow>> m_editorWindows;
    bool m_isCapturing = false;
    std::optional<FocusKeeper::Window> m_previousFrontmost;
};
