#include "ui/app/zbfilemanager.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDebug>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

void ZBFileManager::revealFile(const QString &path, const QDBusConnection &bus)
{
    if (path.isEmpty())
        return;
    const QFileInfo file(path);
    if (!file.exists() || !bus.isConnected())
    {
        openFolder(file.absolutePath());
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{QUrl::fromLocalFile(file.absoluteFilePath()).toString()} << QString();
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 5000));
    const QString folder = file.absolutePath();
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished,
                     [folder](QDBusPendingCallWatcher *finished)
                     {
                         if (finished->isError())
                             openFolder(folder);
                         finished->deleteLater();
                     });
}

void ZBFileManager::openFolder(const QString &folder)
{
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
    {
        qWarning().noquote() << "Cannot show the folder" << QDir::toNativeSeparators(folder) << "- it does not exist";
        return;
    }
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(folder)))
        qWarning().noquote() << "No program opens the folder" << QDir::toNativeSeparators(folder);
}
