#pragma once

#include <QStringList>
#include <QTextStream>

#include <memory>

class QJsonObject;
class ZBDownloadItem;
class ZBLibraryController;

// The web commands of norvikctl: "download URL [--to DIR] [--title T]" and
// "capture URL [--wait S] [--filter F] [--json | --download [--to DIR]]". They
// open the library only when main() was given --data-dir, and then add what
// they fetch the way the player does. capture browses with the window's own
// engine, so main() gives it the graphical application object.
class ZBCtlWeb
{
public:
    static bool handles(const QString &command);
    // Commands that need a QApplication rather than a QCoreApplication.
    static bool needsGui(const QString &command);
    static int run(const QString &command, const QStringList &arguments, const QString &dataDir, QTextStream &out,
                   QTextStream &err);

private:
    static int download(const QStringList &arguments, const QString &dataDir, QTextStream &out, QTextStream &err);
    static int capture(const QStringList &arguments, const QString &dataDir, QTextStream &out, QTextStream &err);

    // The player's downloads folder, read without rewriting its settings.
    static QString downloadsFolderSetting();
    // The library in `dataDir`; none, with the reason in `error`, when it
    // cannot be opened as it is.
    static std::unique_ptr<ZBLibraryController> openLibrary(const QString &dataDir, QString *error);
    static QJsonObject itemJson(const ZBDownloadItem *item, int filter, bool page);
    static void printTree(const ZBDownloadItem *item, int depth, int filter, QTextStream &out);
};
