#pragma once

#include <QList>
#include <QString>

class QObject;
class QWidget;
class ZBFlashControls;
class ZBMediaProbeBackend;
class ZBPlaybackEngine;
class ZBWebPane;

// A library this build plays, recognises or browses with, as the Plug-ins
// pane of the preferences lists it.
struct ZBMediaComponent
{
    QString name;    // "libmpv", "FFmpeg", "Ruffle", "Qt", "Qt WebEngine"
    QString version; // empty when the component is missing
    QString detail;  // a second version worth knowing, e.g. "libavformat 59.27.100"; may be empty
};

// Everything that needs libmpv, FFmpeg or Qt WebEngine, behind one interface.
// Those libraries pull in some 200 more; mapping them costs most of the
// player's start, so they live in a library of their own that the player
// loads once the window is up (ZBMediaModuleLoader). Only pointers to the
// player's own abstract types cross this line, never a type of those
// libraries.
//
// Widgets and engines made here belong to the caller (or to the parent
// given); the module itself lives as long as the process.
class ZBMediaModule
{
public:
    virtual ~ZBMediaModule() = default;

    // Thread-safe: the importer probes on worker threads.
    virtual ZBMediaProbeBackend &probe() = 0;

    // The video engine (libmpv), for the VideoMovie and RealMedia codes.
    virtual ZBPlaybackEngine *createVideoEngine(int engineCode, QObject *parent = nullptr) = 0;
    // The Flash view both Flash engines share, and an engine playing in it
    // (FlashMovie or FlashVideo).
    virtual ZBFlashControls *createFlashView(QWidget *parent = nullptr) = 0;
    virtual ZBPlaybackEngine *createFlashEngine(int engineCode, ZBFlashControls *view, QObject *parent = nullptr) = 0;
    // The browser pane's web view.
    virtual ZBWebPane *createWebPane(QWidget *parent = nullptr) = 0;

    // The versions of the media libraries actually loaded, in the order the
    // Plug-ins pane lists them.
    virtual QList<ZBMediaComponent> componentVersions() = 0;
};
