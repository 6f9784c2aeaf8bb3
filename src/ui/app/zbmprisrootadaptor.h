#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>

class ZBMprisService;

// org.mpris.MediaPlayer2: who the player is, what it opens, raise and quit.
class ZBMprisRootAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2")
    Q_PROPERTY(bool CanQuit READ canQuit)
    Q_PROPERTY(bool CanRaise READ canRaise)
    Q_PROPERTY(bool HasTrackList READ hasTrackList)
    Q_PROPERTY(bool Fullscreen READ fullscreen WRITE setFullscreen)
    Q_PROPERTY(bool CanSetFullscreen READ canSetFullscreen)
    Q_PROPERTY(QString Identity READ identity)
    Q_PROPERTY(QString DesktopEntry READ desktopEntry)
    Q_PROPERTY(QStringList SupportedUriSchemes READ supportedUriSchemes)
    Q_PROPERTY(QStringList SupportedMimeTypes READ supportedMimeTypes)

public:
    explicit ZBMprisRootAdaptor(ZBMprisService *service);

    bool canQuit() const { return true; }
    bool canRaise() const { return true; }
    // The play list is not offered to the desktop.
    bool hasTrackList() const { return false; }
    bool fullscreen() const;
    void setFullscreen(bool fullscreen);
    bool canSetFullscreen() const { return true; }
    QString identity() const;
    QString desktopEntry() const;
    // What OpenUri accepts.
    static QStringList supportedUriSchemes();
    // The types the desktop entry registers, apart from the URL scheme.
    static QStringList supportedMimeTypes();

public Q_SLOTS:
    void Raise();
    void Quit();

private:
    ZBMprisService *m_service;
};
