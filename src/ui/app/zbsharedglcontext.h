#pragma once

// The GL context every GL view of the program shares, so that a video view
// keeps its picture when it moves to the detached or fullscreen window, and
// that the web engine requires. Qt makes it inside QApplication when asked
// before; that costs ~50 ms of the window's first frame (the GL driver
// loads), so the player makes it just before the media module loads
// instead, before any GL view or the web engine exists.
class ZBSharedGLContext
{
public:
    ZBSharedGLContext() = delete;

    // Any thread, any number of times: the first call makes the context and
    // hands it to the GUI thread, later ones wait for it. False when the
    // system gives no GL context; views then work without sharing.
    static bool create();
};
