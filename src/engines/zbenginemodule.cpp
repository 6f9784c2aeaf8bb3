#include "engines/zbenginemodule.h"

#include "app/zbmediamoduleloader.h"
#include "engines/flash/zbflashengine.h"
#include "engines/flash/zbflashscheme.h"
#include "engines/flash/zbflashview.h"
#include "engines/mpv/zbmpvengine.h"
#include "engines/zbcomponentversions.h"
#include "ui/web/zbbrowserpane.h"

extern "C" Q_DECL_EXPORT ZBMediaModule *nvk_media_module()
{
    static ZBEngineModule module;
    return &module;
}

namespace
{
// Linked in, the module is there before main(): the loader takes it from
// here instead of opening the file a second time.
const bool linked = (ZBMediaModuleLoader::registerLinked(&nvk_media_module), true);
} // namespace

ZBEngineModule::ZBEngineModule()
{
    // A player that loads the module late registers the Flash scheme here,
    // still before any web engine object exists; programs linking the module
    // have done it before their QApplication.
    ZBFlashSchemeHandler::registerScheme();
}

ZBPlaybackEngine *ZBEngineModule::createVideoEngine(int engineCode, QObject *parent)
{
    return new ZBMpvEngine(engineCode, parent);
}

ZBFlashControls *ZBEngineModule::createFlashView(QWidget *parent)
{
    return new ZBFlashView(parent);
}

ZBPlaybackEngine *ZBEngineModule::createFlashEngine(int engineCode, ZBFlashControls *view, QObject *parent)
{
    return new ZBFlashEngine(engineCode, dynamic_cast<ZBFlashView *>(view), parent);
}

ZBWebPane *ZBEngineModule::createWebPane(QWidget *parent)
{
    return new ZBBrowserPane(parent);
}

QList<ZBMediaComponent> ZBEngineModule::componentVersions()
{
    return ZBComponentVersions::components();
}
