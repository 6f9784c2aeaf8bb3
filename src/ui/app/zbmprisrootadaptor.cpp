#include "ui/app/zbmprisrootadaptor.h"

#include "ui/app/zbmediakeytarget.h"
#include "ui/app/zbmprisservice.h"

ZBMprisRootAdaptor::ZBMprisRootAdaptor(ZBMprisService *service)
    : QDBusAbstractAdaptor(service)
    , m_service(service)
{
}

bool ZBMprisRootAdaptor::fullscreen() const
{
    return m_service->target()->isFullscreen();
}

void ZBMprisRootAdaptor::setFullscreen(bool fullscreen)
{
    m_service->target()->fullscreenRequested(fullscreen);
}

QString ZBMprisRootAdaptor::identity() const
{
    return QStringLiteral("Norvik Player");
}

QString ZBMprisRootAdaptor::desktopEntry() const
{
    return QStringLiteral("norvikplayer");
}

QStringList ZBMprisRootAdaptor::supportedUriSchemes()
{
    return {QStringLiteral("file"), QStringLiteral("norvikplayer")};
}

QStringList ZBMprisRootAdaptor::supportedMimeTypes()
{
    // Kept equal to the MimeType line of norvikplayer.desktop; a test
    // compares the two. F4V and M4V files are video/mp4 to shared-mime-info.
    return {
        QStringLiteral("video/mp4"),
        QStringLiteral("video/x-matroska"),
        QStringLiteral("video/x-msvideo"),
        QStringLiteral("video/avi"),
        QStringLiteral("video/quicktime"),
        QStringLiteral("video/x-ms-wmv"),
        QStringLiteral("video/mpeg"),
        QStringLiteral("video/3gpp"),
        QStringLiteral("video/3gpp2"),
        QStringLiteral("video/dv"),
        QStringLiteral("video/x-flv"),
        QStringLiteral("application/vnd.rn-realmedia"),
        QStringLiteral("application/vnd.rn-realmedia-vbr"),
        QStringLiteral("video/vnd.rn-realvideo"),
        QStringLiteral("application/vnd.adobe.flash.movie"),
        QStringLiteral("application/x-shockwave-flash"),
        QStringLiteral("application/x-norvikplayer-playlist"),
    };
}

void ZBMprisRootAdaptor::Raise()
{
    m_service->target()->raiseRequested();
}

void ZBMprisRootAdaptor::Quit()
{
    m_service->target()->quitRequested();
}
