#include <memory>

#include <QRandomGenerator>
#include <QSet>
#include <QTest>

#include "playback/zbplaysequencer.h"

namespace
{
// A play list of named tracks, some of which cannot be played.
class Fixture
{
public:
    explicit Fixture(int count, QSet<int> broken = {})
        : m_broken(std::move(broken))
    {
        for (int i = 0; i < count; ++i)
        {
            m_items.push_back(std::make_unique<ZBItem>());
            m_items.back()->setName(QString::number(i));
            list << m_items.back().get();
        }
        sequencer.setPlaybackList(list);
        sequencer.setRandomSource([this]() { return m_random.generate(); });
    }

    // Starts at `index` as a user start does, then walks in `direction`
    // until the sequence ends or `limit` tracks have played.
    QList<int> walk(int start, int direction, int limit = 100)
    {
        QList<int> played;
        sequencer.setPlayingItemIndex(start);
        sequencer.markPlayed(start);
        played << start;
        while (played.size() < limit)
        {
            const ZBPlaySequencer::Step step = next(direction);
            if (step.outcome != ZBPlaySequencer::Outcome::Play)
                break;
            sequencer.markPlayed(step.index);
            played << step.index;
        }
        return played;
    }

    ZBPlaySequencer::Step next(int direction)
    {
        return sequencer.next(
            direction, [this](ZBItem *item) { return !m_broken.contains(item->Name().toInt()); },
            [this](ZBItem *item)
            {
                item->setIsValid(false);
                skipped << item->Name().toInt();
            });
    }

    ZBPlaySequencer sequencer;
    ZBItemList list;
    QList<int> skipped;

private:
    std::vector<std::unique_ptr<ZBItem>> m_items;
    QSet<int> m_broken;
    QRandomGenerator m_random{42};
};
} // namespace

class TestZBPlaySequencer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void inOrderStopsAtEitherEndAndSkipsUnplayableTracks();
    void everyTrackMissingEndsAfterTryingEachOnce_data();
    void everyTrackMissingEndsAfterTryingEachOnce();
    void repeatAllWrapsAroundAndRepeatOneStays();
    void shufflePlaysEachTrackOncePerRound();
    void buttonsAtTheEnds();
    void emptyListAndRemoval();
    void manyRemovedAtOnce_data();
    void manyRemovedAtOnce();
};

void TestZBPlaySequencer::inOrderStopsAtEitherEndAndSkipsUnplayableTracks()
{
    Fixture f(4);
    QCOMPARE(f.walk(0, +1), QList<int>({0, 1, 2, 3}));
    QCOMPARE(f.next(+1).outcome, ZBPlaySequencer::Outcome::EndOfList);
    QCOMPARE(f.walk(3, -1), QList<int>({3, 2, 1, 0}));
    QCOMPARE(f.next(-1).outcome, ZBPlaySequencer::Outcome::EndOfList);

    // The last track broken: the sequence ends instead of running off.
    Fixture g(5, {1, 2, 4});
    QCOMPARE(g.walk(0, +1), QList<int>({0, 3}));
    QCOMPARE(g.skipped, QList<int>({1, 2, 4}));
    QCOMPARE(g.list.at(1)->isValid(), std::optional<bool>(false));
    QCOMPARE(g.sequencer.playingCounts(), QList<int>({1, 1, 1, 1, 1}));
}

void TestZBPlaySequencer::everyTrackMissingEndsAfterTryingEachOnce_data()
{
    QTest::addColumn<int>("repeat");
    QTest::addColumn<bool>("shuffle");
    QTest::newRow("in order") << int(ZBPlaySequencer::RepeatNone) << false;
    QTest::newRow("shuffle") << int(ZBPlaySequencer::RepeatNone) << true;
    QTest::newRow("repeat all") << int(ZBPlaySequencer::RepeatAll) << false;
    QTest::newRow("repeat all, shuffle") << int(ZBPlaySequencer::RepeatAll) << true;
}

void TestZBPlaySequencer::everyTrackMissingEndsAfterTryingEachOnce()
{
    QFETCH(int, repeat);
    QFETCH(bool, shuffle);
    Fixture f(6, {0, 1, 2, 3, 4, 5});
    f.sequencer.setRepeat(repeat);
    f.sequencer.setShuffle(shuffle);
    f.sequencer.setPlayingItemIndex(-1);
    const ZBPlaySequencer::Step step = f.next(+1);
    QCOMPARE(step.outcome, ZBPlaySequencer::Outcome::EndOfList);
    QCOMPARE(QSet<int>(f.skipped.begin(), f.skipped.end()).size(), f.skipped.size());
    if (!shuffle)
        QCOMPARE(f.skipped.size(), 6);
}

void TestZBPlaySequencer::repeatAllWrapsAroundAndRepeatOneStays()
{
    Fixture f(3);
    f.sequencer.setRepeat(ZBPlaySequencer::RepeatAll);
    QCOMPARE(f.walk(1, +1, 7), QList<int>({1, 2, 0, 1, 2, 0, 1}));
    QCOMPARE(f.walk(1, -1, 5), QList<int>({1, 0, 2, 1, 0}));

    Fixture one(1);
    one.sequencer.setRepeat(ZBPlaySequencer::RepeatAll);
    QCOMPARE(one.walk(0, +1, 3), QList<int>({0, 0, 0}));

    // Repeat one stays on the track, unless it cannot be played.
    Fixture g(3, {2});
    g.sequencer.setRepeat(ZBPlaySequencer::RepeatOne);
    QCOMPARE(g.walk(1, 0, 4), QList<int>({1, 1, 1, 1}));
    g.sequencer.setPlayingItemIndex(2);
    QCOMPARE(g.next(0).outcome, ZBPlaySequencer::Outcome::EndOfList);
    QCOMPARE(g.skipped, QList<int>({2}));
}

void TestZBPlaySequencer::shufflePlaysEachTrackOncePerRound()
{
    Fixture f(8, {5});
    f.sequencer.setShuffle(true);
    const QList<int> played = f.walk(3, +1);
    QCOMPARE(played.size(), 7);
    QCOMPARE(QSet<int>(played.begin(), played.end()), QSet<int>({0, 1, 2, 3, 4, 6, 7}));
    QCOMPARE(f.skipped, QList<int>({5}));
    QCOMPARE(f.next(+1).outcome, ZBPlaySequencer::Outcome::EndOfList);
    // Not simply in order.
    QVERIFY(played != QList<int>({3, 4, 6, 7, 0, 1, 2}));

    // With repeat all, each round of five plays every track once.
    Fixture g(5);
    g.sequencer.setShuffle(true);
    g.sequencer.setRepeat(ZBPlaySequencer::RepeatAll);
    const QList<int> rounds = g.walk(0, +1, 15);
    QCOMPARE(rounds.size(), 15);
    for (int round = 0; round < 3; ++round)
        QCOMPARE(QSet<int>(rounds.begin() + round * 5, rounds.begin() + round * 5 + 5).size(), 5);
    Fixture alone(6, {1, 2, 3, 4, 5});
    alone.sequencer.setShuffle(true);
    alone.sequencer.setRepeat(ZBPlaySequencer::RepeatAll);
    QCOMPARE(alone.walk(0, +1, 3), QList<int>({0, 0, 0}));
}

void TestZBPlaySequencer::buttonsAtTheEnds()
{
    Fixture f(3);
    f.sequencer.setPlayingItemIndex(2);
    QVERIFY(!f.sequencer.canStepNext());
    QVERIFY(f.sequencer.canStepPrevious());
    f.sequencer.setPlayingItemIndex(0);
    QVERIFY(f.sequencer.canStepNext());
    QVERIFY(!f.sequencer.canStepPrevious());
    f.sequencer.setRepeat(ZBPlaySequencer::RepeatAll);
    QVERIFY(f.sequencer.canStepPrevious());
    f.sequencer.setRepeat(ZBPlaySequencer::RepeatNone);
    f.sequencer.setShuffle(true);
    f.sequencer.setPlayingItemIndex(2);
    QVERIFY(f.sequencer.canStepNext());
}

void TestZBPlaySequencer::emptyListAndRemoval()
{
    Fixture empty(0);
    QCOMPARE(empty.next(+1).outcome, ZBPlaySequencer::Outcome::EmptyList);

    Fixture f(4);
    f.sequencer.setPlayingItemIndex(2);
    f.sequencer.markPlayed(0);
    f.sequencer.removeItems({f.list.at(0)});
    QCOMPARE(f.sequencer.playbackList().size(), 3);
    QCOMPARE(f.sequencer.playingCounts(), QList<int>({0, 0, 0}));
    QCOMPARE(f.sequencer.playingItemIndex(), 1);
    QCOMPARE(f.sequencer.itemAt(1)->Name(), QStringLiteral("2"));
    // Removing the playing entry leaves the index before it, so "next" lands
    // on the entry that followed.
    f.sequencer.removeItems({f.list.at(2)});
    QCOMPARE(f.next(+1).index, 1);
    QCOMPARE(f.sequencer.itemAt(1)->Name(), QStringLiteral("3"));
    Fixture g(3);
    g.sequencer.markPlayed(1);
    g.sequencer.replacePlaybackList({g.list.at(1), g.list.at(0)});
    QCOMPARE(g.sequencer.playingCounts(), QList<int>({1, 0}));
}

void TestZBPlaySequencer::manyRemovedAtOnce_data()
{
    QTest::addColumn<int>("playing");
    QTest::addColumn<QList<int>>("removed");
    QTest::addColumn<int>("playingAfter");
    // What is left, a star for a track played.
    QTest::addColumn<QString>("left");
    // The index moves back by one for each track removed at or before it.
    QTest::newRow("before") << 3 << QList<int>{0, 1} << 1 << "2 3* 4";
    QTest::newRow("the playing one and around it") << 3 << QList<int>{2, 3, 4} << 1 << "0 1*";
    QTest::newRow("the first, playing") << 0 << QList<int>{0} << -1 << "1* 2 3* 4";
    QTest::newRow("nothing playing") << -1 << QList<int>{0, 4} << -1 << "1* 2 3*";
}

void TestZBPlaySequencer::manyRemovedAtOnce()
{
    QFETCH(int, playing);
    QFETCH(QList<int>, removed);
    QFETCH(int, playingAfter);
    QFETCH(QString, left);
    Fixture f(5);
    f.sequencer.setPlayingItemIndex(playing);
    QSet<const ZBItem *> items;
    for (int i = 0; i < 5; ++i)
    {
        if (i % 2)
            f.sequencer.markPlayed(i);
        if (removed.contains(i))
            items.insert(f.list.at(i));
    }
    f.sequencer.removeItems(items);
    QCOMPARE(f.sequencer.playingItemIndex(), playingAfter);
    QStringList kept;
    for (int i = 0; i < f.sequencer.playbackList().size(); ++i)
        kept << f.sequencer.itemAt(i)->Name() + (f.sequencer.playingCounts().at(i) ? "*" : "");
    QCOMPARE(kept.join(u' '), left);
}

QTEST_GUILESS_MAIN(TestZBPlaySequencer)
#include "tst_zbplaysequencer.moc"
