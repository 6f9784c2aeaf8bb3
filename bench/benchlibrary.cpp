#include "benchlibrary.h"

#include <QDateTime>
#include <QRandomGenerator>

#include <cstdio>

#include "library/zblibrarycontroller.h"
#include "predicate/zbpredicate.h"
#include "util/zbadditionalmethods.h"

namespace
{
const char *const Words[] = {"Summer", "Night",  "Café",   "Robot", "River", "Ocean",  "Dragon", "Space",
                             "Éclair", "Garden", "Winter", "Cat",   "Movie", "Trailer", "Demo",  "Party"};
const char *const Types[] = {"mp4", "mkv", "avi", "mov", "swf", "flv", "wmv", "exe", "rm", "mpg", "webm", "xap"};
} // namespace

void nvkbench::populateLibrary(ZBLibraryController &library, int size)
{
    QRandomGenerator random(20261123);
    ZBObjectContext *context = library.managedObjectContext();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    ZBPlaylist *favourites =
        library.playlistByUUID(library.addPlaylistToLibraryByName(QStringLiteral("Favourites"), "Name", true, 200));
    for (int i = 0; i < size; ++i)
    {
        const QString name = QStringLiteral("%1 %2 %3")
                                 .arg(QString::fromUtf8(Words[random.bounded(16)]),
                                      QString::fromUtf8(Words[random.bounded(16)]))
                                 .arg(i);
        const QString type = QString::fromLatin1(Types[random.bounded(12)]);
        ZBItem *item = context->insertItem();
        item->setItemUUID(ZBAdditionalMethods::generateUUID());
        item->setName(name);
        item->setPath(QStringLiteral("/home/user/Videos/%1/%2.%3").arg(i % 97).arg(name, type));
        item->setURL(i % 4 == 0 ? QStringLiteral("http://media.example/%1.%2").arg(i).arg(type) : QStringLiteral(""));
        item->setType(type);
        item->setRatingValue(random.bounded(6));
        item->setLengthValue(random.bounded(7200));
        item->setPlayCountValue(random.bounded(50));
        item->setAdded(now.addSecs(-random.bounded(90 * 86400)));
        if (i % 3 == 0)
            item->setLastPlayed(now.addSecs(-random.bounded(30 * 86400)));
        if (i % 50 == 0)
            context->addMember(favourites, item);
    }
    library.save();
}

QString nvkbench::addFiveRuleList(ZBLibraryController &library)
{
    const QString fiveRules = QStringLiteral(
        "(Name CONTAINS[CD] 'night') AND (Rating > 2) AND (PlayCount < 40) AND (Added > CAST(%1, 'NSDate')) AND "
        "(Type BEGINSWITH[CD] 'm')")
                                  .arg(ZBPredicate::referenceSecondsFromDate(
                                           QDateTime::currentDateTimeUtc().addDays(-60)),
                                       0, 'f', 6);
    return library.addSmartListWithName("Five rules", fiveRules, "User", "Name", false, 200);
}

bool nvkbench::parseArguments(int argc, char *argv[], const char *program, int *tracks, QString *keep)
{
    for (int i = 1; i < argc; ++i)
    {
        const QByteArray arg(argv[i]);
        if (arg == "--keep" && i + 1 < argc)
            *keep = QString::fromLocal8Bit(argv[++i]);
        else if (arg.toInt() > 0)
            *tracks = arg.toInt();
        else
        {
            std::fprintf(stderr, "usage: %s [tracks] [--keep DIR]\n", program);
            return false;
        }
    }
    return true;
}
