// The library's fast paths (compiled filters, kept list answers, kept sort
// keys, the folded lookup indexes) against the plain evaluator, the plain sort
// and a plain scan, on small random libraries.
#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

#include "library/zblibrarycontroller.h"
#include "library/zbsmartlistrules.h"
#include "library/zbtracksearch.h"
#include "library/zbtracksorter.h"
#include "predicate/zbtextfold.h"
#include "support/testsupport.h"

namespace
{
// Mixed case and diacritics, precomposed and decomposed.
const QStringList Words = {QStringLiteral("Café"),   QStringLiteral("CAFE"),         QStringLiteral("cafe\u0301"),
                           QStringLiteral("éclair"), QStringLiteral("ÉCLAIR"),       QStringLiteral("Night"),
                           QStringLiteral("nIGHT"),  QStringLiteral("Über"),         QStringLiteral("uber"),
                           QStringLiteral("Straße"), QStringLiteral("a*b?"),         QStringLiteral("")};
const QStringList Types = {"mp4", "MKV", "swf", "Exe", "rm", "xap", "", QString()};
const QStringList TextKeys = {"Name", "URL", "Type", "Path", "SourcePageTitle"};
const QStringList NumberKeys = {"Rating", "PlayCount", "Length", "Added", "LastPlayed"};
const QStringList TextOps = {"CONTAINS", "BEGINSWITH", "ENDSWITH", "LIKE", "==", "!=", "<", ">=", "MATCHES"};
const QStringList NumberOps = {"==", "!=", "<", "<=", ">", ">="};
const QStringList Flags = {"[cd]", "[c]", "[d]", ""};

struct Random
{
    QRandomGenerator generator;
    int below(int n) { return int(generator.bounded(n)); }
    template <typename T>
    T pick(const QList<T> &list) { return list.at(below(int(list.size()))); }
    // A piece of a word as typed: any case, accents or not.
    QString typed()
    {
        QString text = pick(Words).left(below(6));
        return below(2) ? text.toUpper() : ZBTextFold::fold(text, false, below(2));
    }
    QString comparison()
    {
        if (below(2))
        {
            const QString pattern = below(4) ? typed() : QStringLiteral("*%1*").arg(typed());
            return QStringLiteral("%1 %2%3 %4").arg(pick(TextKeys), pick(TextOps), pick(Flags),
                                                      ZBSmartListRules::quoteText(pattern));
        }
        const QString key = pick(NumberKeys);
        const bool date = key == "Added" || key == "LastPlayed";
        const QString value = date && below(4) ? QStringLiteral("CAST(%1, 'NSDate')").arg(below(2000000) + 790000000)
                                               : QString::number(below(60) - 5) + (below(4) ? "" : ".5");
        return QStringLiteral("%1 %2 %3").arg(key, pick(NumberOps), value);
    }
    QString predicate(int depth = 0)
    {
        const int shape = depth > 2 ? 0 : below(5);
        if (shape == 0 || shape == 1)
            return comparison();
        if (shape == 2)
            return QStringLiteral("NOT (%1)").arg(predicate(depth + 1));
        return QStringLiteral("(%1) %2 (%3)").arg(predicate(depth + 1), shape == 3 ? "AND" : "OR",
                                                   predicate(depth + 1));
    }
    void fill(ZBItem *item)
    {
        item->setName(pick(Words) + " " + pick(Words));
        item->setType(pick(Types));
        item->setURL(below(3) ? QString() : "http://x/" + pick(Words));
        item->setSourcePageTitle(below(2) ? QString() : pick(Words));
        item->setRating(below(4) ? std::optional<qint32>(below(6)) : std::nullopt);
        item->setPlayCount(below(4) ? std::optional<qint32>(below(50)) : std::nullopt);
        item->setLength(below(3) ? std::optional<qint32>(below(50)) : std::nullopt);
        const QDateTime base = QDateTime::fromSecsSinceEpoch(978307200 + 790000000, Qt::UTC);
        item->setAdded(below(5) ? base.addSecs(below(2000000)) : QDateTime());
        item->setLastPlayed(below(2) ? base.addSecs(below(2000000)) : QDateTime());
    }
};
} // namespace

class TestZBLibraryFastPaths : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fastPathsAnswerAsThePlainOnes_data();
    void fastPathsAnswerAsThePlainOnes();
    // Large enough that the order by name is worked out on two threads.
    void largeLibrarySortsAsThePlainSort();
    // Large enough that the tracks are made on a second thread, in batches.
    void largeLibraryReadsBackEveryValue();
};

void TestZBLibraryFastPaths::fastPathsAnswerAsThePlainOnes_data()
{
    QTest::addColumn<quint32>("seed");
    for (const quint32 seed : {1u, 2u, 3u, 20261124u})
        QTest::addRow("seed %u", seed) << seed;
}

void TestZBLibraryFastPaths::fastPathsAnswerAsThePlainOnes()
{
    QFETCH(quint32, seed);
    Random random{QRandomGenerator(seed)};
    nvktest::DataDir dir;
    auto library = std::make_unique<ZBLibraryController>();
    QVERIFY(library->openStore(dir.path()).ok);
    ZBObjectContext *context = library->managedObjectContext();
    for (int i = 0; i < 400; ++i)
    {
        ZBItem *item = context->insertItem();
        item->setItemUUID(QStringLiteral("uuid-%1").arg(i));
        // Paths repeat in other spellings, so that lookups find several.
        item->setPath(QStringLiteral("/m/%1/%2").arg(random.pick(Words)).arg(i % 50));
        random.fill(item);
    }
    QVERIFY(library->save());
    // Reopened, so that the indexes and keys are the ones an open builds.
    library = std::make_unique<ZBLibraryController>();
    QVERIFY(library->openStore(dir.path()).ok);
    context = library->managedObjectContext();

    // Lists the tree asks for again and again; their kept answers must follow
    // every change.
    const QStringList kept = {QStringLiteral("!(Type contains[cd] 'SWF') AND !(Type contains[cd] 'EXE')"),
                              QStringLiteral("(Name CONTAINS[cd] 'cafe') AND (Rating > 2) AND (PlayCount < 40)"),
                              ZBLibraryController::downloadFilterRequest(QDateTime::fromSecsSinceEpoch(1769307200))};
    for (int round = 0; round < 300; ++round)
    {
        const ZBItemList all = context->items();
        for (const QString &request : kept)
            QCOMPARE(library->itemsMatching(request), ZBPredicate::parse(request).filter(all));
        const ZBPredicate predicate = ZBPredicate::parse(random.predicate());
        QVERIFY2(predicate.isValid(), qPrintable(predicate.text() + ": " + predicate.errorString()));
        const ZBItemList plain = predicate.filter(all);
        QCOMPARE(ZBLibraryController::filterItems(all, predicate), plain);
        QCOMPARE(library->itemsMatching(predicate.text()), plain);

        const QString typed = random.typed();
        QCOMPARE(ZBTrackSearch::filter(all, typed), ZBPredicate::parse(ZBTrackSearch::request(typed)).filter(all));

        ZBItemList shuffled = all;
        std::shuffle(shuffled.begin(), shuffled.end(), random.generator);
        const QString key = random.pick(TextKeys + NumberKeys);
        const bool ascend = random.below(2);
        QCOMPARE(ZBTrackSorter::sort(shuffled, key, ascend), ZBTrackSorter::plainSort(shuffled, key, ascend));

        const ZBItem *probe = random.pick(all);
        const QString path = random.below(2) ? probe->Path().toUpper() : ZBTextFold::fold(probe->Path(), false, true);
        ZBItemList scanned;
        for (ZBItem *item : all)
        {
            if (ZBTextFold::fold(item->Path(), true, true) == ZBTextFold::fold(path, true, true))
                scanned.append(item);
        }
        // The track indexed last comes first, and a changed path is indexed
        // anew: compared as sets.
        ZBItemList found = context->itemsWithFoldedPath(ZBTextFold::fold(path, true, true));
        std::sort(found.begin(), found.end());
        std::sort(scanned.begin(), scanned.end());
        QCOMPARE(found, scanned);

        // A change, so that kept answers and keys must follow it: one value
        // of a track (answers that do not read it may stay), a new track or
        // a deleted one.
        const int change = random.below(10);
        if (change == 0)
        {
            ZBItem *added = context->insertItem();
            added->setItemUUID(QStringLiteral("added-%1").arg(round));
            added->setPath(QStringLiteral("/m/added/%1").arg(round));
            random.fill(added);
        }
        else if (change == 1)
        {
            context->deleteItem(random.pick(all));
        }
        else
        {
            ZBItem fresh;
            random.fill(&fresh);
            fresh.setPath(QStringLiteral("/m/%1/%2").arg(random.pick(Words)).arg(random.below(50)));
            const QString changed = random.pick(TextKeys + NumberKeys);
            random.pick(all)->setUntypedValueByName(changed, fresh.getUntypedValueByName(changed));
        }
    }
}

void TestZBLibraryFastPaths::largeLibrarySortsAsThePlainSort()
{
    Random random{QRandomGenerator(7)};
    nvktest::DataDir dir;
    ZBLibraryController library;
    QVERIFY(library.openStore(dir.path()).ok);
    ZBObjectContext *context = library.managedObjectContext();
    for (int i = 0; i < 60000; ++i)
    {
        ZBItem *item = context->insertItem();
        // Many equal texts, meeting across the halves, and some of one track.
        item->setName(random.pick(Words) + (random.below(3) ? QString() : " " + QString::number(i)));
        item->setURL(random.below(3) ? QString() : "http://x/" + random.pick(Words));
    }
    ZBItemList tracks = context->items();
    std::shuffle(tracks.begin(), tracks.end(), random.generator);
    for (const char *key : {"Name", "URL"})
    {
        for (const bool ascend : {true, false})
        {
            // Both keep equal texts in the order they came in.
            QCOMPARE(ZBTrackSorter::sort(tracks, QLatin1String(key), ascend),
                     ZBTrackSorter::plainSort(tracks, QLatin1String(key), ascend));
        }
    }
}

void TestZBLibraryFastPaths::largeLibraryReadsBackEveryValue()
{
    // Every value of every track in order, absent and empty told apart.
    const auto values = [](ZBObjectContext *context) {
        QStringList all;
        for (const ZBItem *item : context->items())
        {
            QString line;
            for (const char *key : {"ItemUUID", "Name", "Path", "URL", "Type", "SourcePageTitle", "Rating", "Length",
                                    "PlayCount", "Added", "LastPlayed", "isValid", "isAvailable"})
            {
                const QVariant value = item->getUntypedValueByName(QLatin1String(key));
                line += value.isNull() ? QStringLiteral("|-") : QStringLiteral("|'%1'").arg(value.toString());
            }
            all << line;
        }
        return all;
    };
    Random random{QRandomGenerator(11)};
    nvktest::DataDir dir;
    auto library = std::make_unique<ZBLibraryController>();
    QVERIFY(library->openStore(dir.path()).ok);
    for (int i = 0; i < 25000; ++i)
    {
        ZBItem *item = library->managedObjectContext()->insertItem();
        item->setItemUUID(QStringLiteral("uuid-%1").arg(i));
        item->setPath(random.below(9) ? QStringLiteral("/m/%1/\u00e9\U0001F3B5%2").arg(random.pick(Words)).arg(i)
                                      : QString());
        random.fill(item);
        if (random.below(5) == 0)
            item->setURL(QLatin1String(""));
        item->setIsValid(random.below(3) ? std::optional<bool>(random.below(2)) : std::nullopt);
        item->setIsAvailable(random.below(3) ? std::optional<bool>(random.below(2)) : std::nullopt);
    }
    const QStringList written = values(library->managedObjectContext());
    QVERIFY(library->save());
    library = std::make_unique<ZBLibraryController>();
    QVERIFY(library->openStore(dir.path()).ok);
    QCOMPARE(values(library->managedObjectContext()), written);
}

QTEST_GUILESS_MAIN(TestZBLibraryFastPaths)
#include "tst_zblibraryfastpaths.moc"
