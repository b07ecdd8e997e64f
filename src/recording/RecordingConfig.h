#pragma once

// How one recording runs; all set by the caller (the recording coordinator
// reads them from the settings).
struct RecordingConfig {
    // The requested rate.
    int framesPerSecond = 30;
    // Pixels per point of the output: the display's own for sharp output, else 1.
    double scale = 1.0;
    // Draw the pointer into the frames.
    bool showsCursor = true;
    // The clock value at which the recording stops by itself.
    int maxSeconds = 30;
    // Count 3, 2, 1 before the stream starts.
    bool countdown = true;
    bool systemAudio = false;
    bool microphone = false;
    // Show a ring where the user clicks inside the area.
    bool showClicks = false;
};
