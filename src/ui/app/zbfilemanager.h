#pragma once

#include <QDBusConnection>
#include <QString>

// The desktop's file manager: showing a file selected in its folder, or a
// folder. Nothing here waits for the file manager; a missing or slow one never
// holds up the window.
class ZBFileManager
{
public:
    ZBFileManager() = delete;

    // Selects the file in a file manager window through
    // org.freedesktop.FileManager1; where no file manager answers on the bus,
    // or the file is gone, its folder opens in whatever handles folders.
    static void revealFile(const QString &path, const QDBusConnection &bus = QDBusConnection::sessionBus());
    static void openFolder(const QString &folder);
};
