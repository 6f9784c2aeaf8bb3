#pragma once

#include <QString>

#include <functional>

class ZBMediaModule;

// Hands out the media module (libnorvikmedia.so: libmpv, FFmpeg, Qt
// WebEngine) on first need. Programs that link the module get it as linked;
// the player does not link it, so that the dynamic loader does not map some
// 200 libraries before its window can show, and loads it from the folder of
// the library holding this code (the same folder in the build tree and once
// installed). NVK_MEDIA_MODULE names another file.
//
// Thread-safe: the first caller loads, any others wait for it. When the
// module cannot be loaded, every later call answers null at once and
// loadError() says why, in the system's words.
class ZBMediaModuleLoader
{
public:
    ZBMediaModuleLoader() = delete;

    using EntryPoint = ZBMediaModule *(*)();
    // The one symbol the module exports for this: extern "C".
    static constexpr const char *EntryPointName = "nvk_media_module";

    static ZBMediaModule *module();
    static QString loadError();

    // Maps the module file and the libraries it needs on a thread of its
    // own, so that module() later finds them in memory instead of holding up
    // its caller (the window) for the 100-200 ms the dynamic loader takes.
    // `mapped` runs on that thread once it is over, whether it worked or not
    // (module() tells); at once on the caller's when nothing is to be mapped.
    static void preload(std::function<void()> mapped);
    // Runs on the loading thread before the module is mapped, whichever
    // thread that is (see ZBSharedGLContext); set before anything loads.
    static void setBeforeLoading(void (*before)());
    // Waits for a preload still running (before the process ends).
    static void waitForPreload();

    // The module registers itself here from a static initialiser, so that a
    // program linking it never opens a second copy.
    static void registerLinked(EntryPoint entry);

    static QString modulePath();

    struct Result
    {
        ZBMediaModule *module = nullptr;
        QString error;
    };
    // Loads the file and asks it for its module; nothing is cached.
    static Result loadFrom(const QString &path);

    // What the web engine needs before the QApplication exists, without
    // loading it: a GL context shared with the video views (unless
    // `shareGLLater`: the caller then makes it in setBeforeLoading()) and,
    // for root, no Chromium sandbox (it refuses to run as root at all).
    static void prepareApplication(bool shareGLLater = false);
};
