#pragma once

#include <QImage>

#include <cstdint>

// How window capture reaches one window's own pixels. Implemented by the
// platform; called off the main thread.
class WindowGrabbing
{
public:
    struct Shot {
        // The window with its decorations; ARGB32 premultiplied where the
        // window has alpha (rounded corners, shadows drawn by the client),
        // RGB32 where it has none.
        QImage image;
        double scale = 1.0; // pixels per point
    };

    virtual ~WindowGrabbing() = default;
    // Reads, on the main thread, what the grab needs from there (the
    // displays' layout); called before each capture.
    virtual void prepare() {}
    // `justUncovered`: something of ours lay over the window a moment ago
    // (the picker), so its pixels may still be being drawn again. Throws
    // AppError captureFailed, with "That window closed before it could be
    // captured." when it is gone.
    virtual Shot grab(std::uint32_t windowID, bool justUncovered) = 0;
};
