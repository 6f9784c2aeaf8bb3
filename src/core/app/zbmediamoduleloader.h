#pragma once

#include <QString>

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
    // loading it: a GL context shared with the video views and, for root, no
    // Chromium sandbox (it refuses to run as root at all).
    static void prepareApplication();
};
