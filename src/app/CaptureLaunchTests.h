#pragma once

#include "acquire/WindowCapture.h"

#include <QString>

#include <cstdint>
#include <optional>

class TextRecognizer;
class WindowGrabbing;
class WindowList;

// The launch features that exercise reading and window capture with no person
// at the keyboard; each writes what it found next to its output.
//   GLIMPSO_TEST_OCR=PATH: reads the picture and writes PATH.ocr.txt with
//     "seconds: ", "text: " and "code: " lines.
//   GLIMPSO_TEST_WINDOW=ID:BACKGROUND:PADDING:SHADOW with
//   GLIMPSO_TEST_WINDOW_OUT=FILE: captures the window (decimal id; empty for
//     the first window on the screen), BACKGROUND "transparent" or a hex
//     colour (white when it doesn't parse), PADDING in points (48 when it
//     doesn't parse), SHADOW "0" for none; writes the PNG to FILE and
//     FILE.txt with "window: ", "size: WxH", "alpha: yes|no", or "error: ".
namespace CaptureLaunchTests {

struct WindowRequest {
    std::optional<std::uint32_t> windowID;
    WindowCapture::Options options;
};
WindowRequest parseWindow(const QString &value);

void readText(const QString &path, TextRecognizer &recognizer);
void captureWindow(const QString &value, const QString &output, WindowList &windows, WindowGrabbing &grabber,
                   qint64 ownProcessID);

} // namespace CaptureLaunchTests
