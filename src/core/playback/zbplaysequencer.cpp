#include "playback/zbplaysequencer.h"

#include <QRandomGenerator>

ZBPlaySequencer::ZBPlaySequencer()
    : m_random([]() { return QRandomGenerator::global()->generate(); })
{
}

void ZBPlaySequencer::setPlaybackList(const ZBItemList &items)
{
    m_list = items;
    resetPlaybackCounters();
}

void ZBPlaySequencer::resetPlaybackCounters()
{
    m_counts = QList<int>(m_list.size(), 0);
}

void ZBPlaySequencer::replacePlaybackList(const ZBItemList &items)
{
    QList<int> counts(items.size(), 0);
    for (qsizetype i = 0; i < items.size(); ++i)
    {
        const qsizetype was = m_list.indexOf(items.at(i));
        if (was >= 0)
            counts[i] = m_counts.at(was);
    }
    m_list = items;
    m_counts = counts;
}

ZBItem *ZBPlaySequencer::itemAt(int index) const
{
    return index >= 0 && index < m_list.size() ? m_list.at(index) : nullptr;
}

void ZBPlaySequencer::markPlayed(int index)
{
    if (index >= 0 && index < m_counts.size())
        m_counts[index] = 1;
}

bool ZBPlaySequencer::anyUnplayed() const
{
    return m_counts.contains(0);
}

bool ZBPlaySequencer::anyValidityValue() const
{
    for (const ZBItem *item : m_list)
    {
        if (item->isValid().has_value())
            return true;
    }
    return false;
}

int ZBPlaySequencer::drawUnplayed()
{
    const auto size = quint32(m_list.size());
    int index = 0;
    do
        index = int(m_random() % size);
    while (m_counts.at(index) == 1);
    return index;
}

void ZBPlaySequencer::skipEntry(int index, const SkipHandler &skip)
{
    markPlayed(index);
    if (skip)
        skip(m_list.at(index));
}

ZBPlaySequencer::Step ZBPlaySequencer::next(int direction, const UsableTest &usable, const SkipHandler &skip)
{
    if (m_list.isEmpty())
        return {Outcome::EmptyList, -1};
    QList<bool> refused(m_list.size(), false);
    return step(direction, usable, skip, refused);
}

ZBPlaySequencer::Step ZBPlaySequencer::step(int direction, const UsableTest &usable, const SkipHandler &skip,
                                            QList<bool> &refused)
{
    const int size = int(m_list.size());
    const Step end{Outcome::EndOfList, m_index};
    // Every entry has refused in this search: going round again cannot find
    // one. Counting steps instead would give up on a shuffle that has not yet
    // drawn the one entry that plays.
    if (!refused.contains(false))
        return end;

    if (m_repeat == RepeatOne)
    {
        if (m_index < 0 || m_index >= size)
            return end;
        if (usable(m_list.at(m_index)))
            return {Outcome::Play, m_index};
        skipEntry(m_index, skip);
        return end;
    }

    int index = m_index;
    if (m_repeat == RepeatAll)
    {
        if (m_shuffle)
        {
            m_random();
            if (!anyUnplayed())
                resetPlaybackCounters();
            index = drawUnplayed();
        }
        else if (direction > 0 && m_index >= size - 1)
        {
            index = 0;
        }
        else if (direction < 0 && m_index <= 0)
        {
            index = size - 1;
        }
        else
        {
            index = m_index + direction;
        }
    }
    else if (m_shuffle)
    {
        if (!anyUnplayed())
            return end;
        index = drawUnplayed();
    }
    else
    {
        index = m_index + direction;
        if ((direction > 0 && index >= size) || (direction < 0 && index < 0) || index < 0 || index >= size)
            return end;
    }

    m_index = index;
    if (usable(m_list.at(index)))
        return {Outcome::Play, index};

    skipEntry(index, skip);
    refused[index] = true;
    if (size == 1 || direction == 0)
        return end;
    if ((m_shuffle || m_repeat == RepeatAll) && !anyValidityValue())
        return end;
    return step(direction, usable, skip, refused);
}

bool ZBPlaySequencer::canStepNext() const
{
    if (m_shuffle || m_repeat == RepeatAll)
        return true;
    return m_index < m_list.size() - 1;
}

bool ZBPlaySequencer::canStepPrevious() const
{
    if (m_shuffle || m_repeat == RepeatAll)
        return true;
    return m_index >= 1;
}

void ZBPlaySequencer::removeItems(const QSet<const ZBItem *> &items)
{
    // One pass, however many go: the playing index moves back by one for
    // each entry removed at or before it, so that when the playing entry goes
    // itself "next" lands on the entry that followed it.
    qsizetype kept = 0;
    int index = m_index;
    for (qsizetype i = 0; i < m_list.size(); ++i)
    {
        if (items.contains(m_list.at(i)))
        {
            if (i <= m_index)
                --index;
            continue;
        }
        m_list[kept] = m_list.at(i);
        m_counts[kept] = m_counts.at(i);
        ++kept;
    }
    m_list.resize(kept);
    m_counts.resize(kept);
    m_index = index;
}
