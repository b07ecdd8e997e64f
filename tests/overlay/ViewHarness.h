#pragma once

#include "SettingsFakes.h"
#include "overlay/OverlayLook.h"
#include "overlay/SelectionCanvas.h"
#include "overlay/SelectorView.h"
#include "settings/AppSettings.h"

#include <QImage>
#include <QList>
#include <QRect>

// A selection canvas over one display and the view that draws it, with real
// settings in memory; the canvas's results are collected.
struct ViewHarness {
    explicit ViewHarness(const ScreenSnapshot &snapshot, const QString &accentHex = QStringLiteral("#EBEBEB"))
        : settings(storage, login),
          canvas({snapshot}, CaptureIntent::image, settings, [this](const RegionResult &r) { results << r; }),
          view(&canvas, snapshot, DesktopSpace(snapshot.frame.toRect()), snapshot.frame.toRect(),
               OverlayLook::make("#000000", 0.5, accentHex, CaptureIntent::image))
    {
        canvas.addSurface(&view);
    }
    QImage picture() { return view.grab().toImage().convertToFormat(QImage::Format_RGB32); }

    QList<RegionResult> results;
    MemorySettingsStorage storage;
    InertLoginItem login;
    AppSettings settings;
    SelectionCanvas canvas;
    SelectorView view;
};
