// What one pointer move costs the overlay while a pencil stroke is drawn on a
// 3840 x 2160 display with 50 marks already on it: synthetic mouse events go
// through the real SelectorView and SelectionCanvas on the offscreen
// platform, and each move is timed from the event to its repaint done
// (paint and flush of the window's backing store). Prints the median and the
// 95th percentile of the paint alone and of the whole move.
//
//   overlay_paint_bench [--moves N] [--marks N]

#include "overlay/SelectionCanvas.h"
#include "overlay/SelectorView.h"
#include "settings/AppSettings.h"
#include "SettingsFakes.h"

#include "../support/SyntheticDesktop.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QPainter>
#include <QRandomGenerator>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr QSize displaySize(3840, 2160);

// A view that times each of its repaints (paint and flush).
class TimedView : public SelectorView
{
public:
    using SelectorView::SelectorView;
    std::vector<double> paints;

protected:
    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::UpdateRequest)
            return SelectorView::event(event);
        QElapsedTimer timer;
        timer.start();
        const bool handled = SelectorView::event(event);
        paints.push_back(timer.nsecsElapsed() / 1e6);
        return handled;
    }
};

void send(QWidget &view, QEvent::Type type, QPointF local, Qt::MouseButtons held)
{
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, local, view.mapToGlobal(local), button, held, Qt::NoModifier);
    QApplication::sendEvent(&view, &event);
}

void press(QWidget &view, QPointF p) { send(view, QEvent::MouseButtonPress, p, Qt::LeftButton); }
void move(QWidget &view, QPointF p) { send(view, QEvent::MouseMove, p, Qt::LeftButton); }
void release(QWidget &view, QPointF p) { send(view, QEvent::MouseButtonRelease, p, Qt::NoButton); }

// Lets every pending repaint run.
void settle()
{
    QApplication::processEvents();
    QApplication::processEvents();
}

void useTool(SelectionCanvas &canvas, glimpso::Tool tool)
{
    canvas.handleToolbarAction(EditorAction::selectTool(tool));
}

// `count` marks of every stroked kind, drawn with the pointer.
void drawMarks(TimedView &view, SelectionCanvas &canvas, int count)
{
    QRandomGenerator random(11);
    const glimpso::Tool tools[] = {glimpso::Tool::pencil, glimpso::Tool::rect,    glimpso::Tool::arrow,
                                   glimpso::Tool::highlight, glimpso::Tool::ellipse, glimpso::Tool::line};
    for (int i = 0; i < count; ++i) {
        const glimpso::Tool tool = tools[i % 6];
        useTool(canvas, tool);
        QPointF p(200 + random.bounded(3300), 200 + random.bounded(1700));
        press(view, p);
        const bool freehand = tool == glimpso::Tool::pencil || tool == glimpso::Tool::highlight;
        const int steps = freehand ? 120 : 10;
        for (int s = 0; s < steps; ++s) {
            p += freehand ? QPointF(random.bounded(13) - 4, random.bounded(11) - 5) : QPointF(30, 18);
            move(view, p);
        }
        release(view, p);
        settle();
    }
}

double percentile(std::vector<double> values, double share)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const size_t index = std::min(values.size() - 1, size_t(std::ceil(share * double(values.size())) - 1));
    return values[index];
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // The figures only; the view's own timing lines would cost time too.
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        qputenv("QT_LOGGING_RULES", "glimpso.*=false");
    int moves = 600, marks = 50;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!std::strcmp(argv[i], "--moves"))
            moves = std::atoi(argv[i + 1]);
        else if (!std::strcmp(argv[i], "--marks"))
            marks = std::atoi(argv[i + 1]);
    }
    QApplication app(argc, argv);

    MemorySettingsStorage storage;
    InertLoginItem login;
    AppSettings settings(storage, login);
    const QRectF frame(QPointF(0, 0), QSizeF(displaySize));
    const ScreenSnapshot snapshot{1, syntheticDesktop(displaySize, QImage::Format_RGB32), frame, 1.0};
    SelectionCanvas canvas({snapshot}, CaptureIntent::image, settings, [](const RegionResult &) {});
    TimedView view(&canvas, snapshot, DesktopSpace(frame.toRect()), frame.toRect(),
                   OverlayLook::make("#000000", 0.35, "#EBEBEB", CaptureIntent::image));
    canvas.addSurface(&view);
    view.show();
    settle();

    // Select most of the display, then put the marks on it.
    press(view, QPointF(40, 40));
    move(view, QPointF(3800, 2120));
    release(view, QPointF(3800, 2120));
    settle();
    drawMarks(view, canvas, marks);
    const qsizetype drawn = canvas.editor().annotations().size();

    // The timed stroke: a long pencil line sweeping across the display.
    useTool(canvas, glimpso::Tool::pencil);
    settle();
    view.paints.clear();
    std::vector<double> whole;
    QPointF p(300, 1000);
    press(view, p);
    settle();
    view.paints.clear();
    const int marksBefore = view.layers().marksDrawn();
    for (int i = 0; i < moves; ++i) {
        p = QPointF(300 + i * 5.5, 1000 + 700 * std::sin(i / 40.0));
        QElapsedTimer timer;
        timer.start();
        move(view, p);
        settle();
        whole.push_back(timer.nsecsElapsed() / 1e6);
    }
    const int marksDuring = view.layers().marksDrawn() - marksBefore;
    release(view, p);
    settle();

    std::printf("overlay paint, %dx%d display, %lld committed marks, %d pointer moves of one pencil stroke\n",
                displaySize.width(), displaySize.height(), qlonglong(drawn), moves);
    std::printf("  %-34s %8s %8s\n", "per move (ms)", "median", "p95");
    std::printf("  %-34s %8.3f %8.3f\n", "paint and flush", percentile(view.paints, 0.5),
                percentile(view.paints, 0.95));
    std::printf("  %-34s %8.3f %8.3f\n", "event, editor, paint and flush", percentile(whole, 0.5),
                percentile(whole, 0.95));
    std::printf("  repaints: %zu; committed marks redrawn during the stroke: %d\n", view.paints.size(),
                marksDuring);
    return 0;
}
