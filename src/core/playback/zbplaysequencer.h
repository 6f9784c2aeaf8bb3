#pragma once

#include <QList>
#include <QSet>

#include <functional>

#include "library/zbitem.h"

// Decides which track of the play list plays next. The play list is a copy of
// the list on screen, frozen when the user starts playback, so sorting or
// filtering the table never disturbs a running sequence. One counter per
// entry marks what this round has played (or skipped); shuffle draws among
// the entries not yet marked.
class ZBPlaySequencer
{
public:
    enum Repeat
    {
        RepeatNone = 0,
        RepeatAll = 1,
        RepeatOne = 2
    };

    enum class Outcome
    {
        Play,
        EndOfList,
        EmptyList
    };

    struct Step
    {
        Outcome outcome = Outcome::EndOfList;
        int index = -1;
    };

    // Uniform 32-bit draws; tests give a seeded one.
    using RandomSource = std::function<quint32()>;
    // Whether a track can be played now: its file is there and an engine
    // accepts it.
    using UsableTest = std::function<bool(ZBItem *)>;
    // Called for a track that is passed over as unplayable.
    using SkipHandler = std::function<void(ZBItem *)>;

    ZBPlaySequencer();

    void setRandomSource(RandomSource source) { m_random = std::move(source); }

    void setPlaybackList(const ZBItemList &items);
    const ZBItemList &playbackList() const { return m_list; }
    const QList<int> &playingCounts() const { return m_counts; }
    void resetPlaybackCounters();
    // The same tracks in a new order or with some added or gone: each keeps
    // its played mark, so a shuffle round goes on where it was.
    void replacePlaybackList(const ZBItemList &items);

    int playingItemIndex() const { return m_index; }
    void setPlayingItemIndex(int index) { m_index = index; }
    ZBItem *itemAt(int index) const;
    void markPlayed(int index);

    int repeat() const { return m_repeat; }
    void setRepeat(int repeat) { m_repeat = repeat; }
    bool shuffle() const { return m_shuffle; }
    void setShuffle(bool shuffle) { m_shuffle = shuffle; }

    // The entry to play after moving by `direction` (+1 next, -1 previous,
    // 0 the same track), skipping unplayable entries.
    Step next(int direction, const UsableTest &usable, const SkipHandler &skip);

    // The next and previous buttons do nothing at the ends of the list unless
    // shuffle or repeat-all gives them somewhere to go.
    bool canStepNext() const;
    bool canStepPrevious() const;

    // Tracks deleted from the library leave the play list with their counters.
    void removeItems(const QSet<const ZBItem *> &items);

private:
    Step step(int direction, const UsableTest &usable, const SkipHandler &skip, QList<bool> &refused);
    int drawUnplayed();
    bool anyUnplayed() const;
    bool anyValidityValue() const;
    void skipEntry(int index, const SkipHandler &skip);

    ZBItemList m_list;
    QList<int> m_counts;
    int m_index = -1;
    int m_repeat = RepeatNone;
    bool m_shuffle = false;
    RandomSource m_random;
};
