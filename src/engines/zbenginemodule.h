#pragma once

#include "app/zbmediamodule.h"
#include "engines/zbavprobe.h"

// The media module's one implementation: the libmpv and Flash engines, the
// browser pane and the FFmpeg probe. Made once, by the exported entry point.
class ZBEngineModule final : public ZBMediaModule
{
public:
    ZBEngineModule();

    ZBMediaProbeBackend &probe() override { return m_probe; }
    ZBPlaybackEngine *createVideoEngine(int engineCode, QObject *parent = nullptr) override;
    ZBFlashControls *createFlashView(QWidget *parent = nullptr) override;
    ZBPlaybackEngine *createFlashEngine(int engineCode, ZBFlashControls *view, QObject *parent = nullptr) override;
    ZBWebPane *createWebPane(QWidget *parent = nullptr) override;
    QList<ZBMediaComponent> componentVersions() override;

private:
    ZBAVProbe m_probe;
};
