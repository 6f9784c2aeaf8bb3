// Adds tracks one call at a time and prints each UUID once the call has
// returned, so a test can kill it at any moment and know what must survive.
#include <QCoreApplication>

#include <cstdio>

#include "library/zblibrarycontroller.h"

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc < 3)
    {
        std::fprintf(stderr, "usage: helper_addloop DATA_DIR COUNT [PREFIX]\n");
        return 2;
    }
    const QString prefix = argc > 3 ? QString::fromLocal8Bit(argv[3]) : QStringLiteral("track");
    ZBLibraryController library;
    const auto opened = library.openStore(QString::fromLocal8Bit(argv[1]));
    if (!opened.ok || opened.recoveredFromDamage)
    {
        std::fprintf(stderr, "open failed: %s\n", qPrintable(opened.error));
        return 1;
    }
    library.initLibrary();
    const int count = QByteArray(argv[2]).toInt();
    ZBPlaylist *playlist = library.playlistByUUID(
        library.addPlaylistToLibraryByName(prefix, QStringLiteral("Name"), true, 200));
    for (int i = 0; i < count; ++i)
    {
        const QString name = QStringLiteral("%1-%2").arg(prefix).arg(i);
        const QString uuid = library.addItemToLibrarybyName(name, QStringLiteral("/media/%1.mp4").arg(name),
                                                            QStringLiteral(""), QStringLiteral("mp4"), 0, i, 0,
                                                            QDateTime::currentDateTimeUtc(), QDateTime(), QString());
        if (i % 3 == 0)
            library.addItemWithUUID(uuid, playlist);
        std::printf("%s\n", qPrintable(uuid));
        std::fflush(stdout);
    }
    return 0;
}
