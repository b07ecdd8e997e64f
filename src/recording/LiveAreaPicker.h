#pragma once

#include "recording/RecordingScreen.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

class PickerView;

// Choosing what to record, as the recording coordinator asks for it.
class LiveAreaPicking
{
public:
    // The chosen area in global points and its screen; both absent on cancel.
    using Completion = std::function<void(std::optional<QRectF> rect, std::optional<RecordingScreen> screen)>;

    virtual ~LiveAreaPicking() = default;
    virtual void pick(const QString &hint, Completion completion) = 0;
};

// Lets the user drag out the area to record over the live screen: the
// content goes on moving under the picker, which covers only the display
// under the pointer. It ends once: with the area, or with nothing on Escape.
class LiveAreaPicker : public LiveAreaPicking
{
public:
    struct Parts {
        std::function<QList<RecordingScreen>()> screens = &RecordingScreen::current;
        std::function<QPointF()> pointer = &RecordingScreen::pointer;
        // Whether windows can be see-through (a compositing manager runs).
        std::function<bool()> translucent;
    };

    explicit LiveAreaPicker(Parts parts);
    ~LiveAreaPicker() override;

    void pick(const QString &hint, Completion completion) override;

    // The window while the picker is up.
    PickerView *view() const { return m_view.get(); }
    std::optional<RecordingScreen> screen() const { return m_screen; }

private:
    void finish(std::optional<QRectF> rect, std::optional<RecordingScreen> screen);

    Parts m_parts;
    std::unique_ptr<PickerView> m_view;
    std::optional<RecordingScreen> m_screen;
    Completion m_completion;
};
