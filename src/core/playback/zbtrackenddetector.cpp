#include "playback/zbtrackenddetector.h"

void ZBTrackEndDetector::reset()
{
    m_decreased = false;
    m_stayOnTheSameFrame = 0;
}

bool ZBTrackEndDetector::sampleTime(double current, double total, bool reachedEnd) const
{
    return reachedEnd || (current >= total && total > 0);
}

bool ZBTrackEndDetector::sampleStream(double current, double total, bool reachedEnd) const
{
    return sampleTime(current, total, reachedEnd) || (current < 1 && total < 1);
}

bool ZBTrackEndDetector::sampleFrame(double previous, int frame, int totalFrames, double tickSeconds)
{
    if (frame == previous)
        m_stayOnTheSameFrame += tickSeconds;
    else
        m_stayOnTheSameFrame = 0;
    m_decreased = previous > frame;

    // A one-frame movie is always on its last frame; it never ends by that rule.
    const bool ended = (m_rules.lastFrameIsMet && frame >= totalFrames - 1 && totalFrames != 1)
                       || (m_rules.frameNumberWasDecreased && m_decreased)
                       || (m_rules.stayOnTheSameFrameMore && m_stayOnTheSameFrame > m_rules.stayingTime);
    if (ended)
        m_stayOnTheSameFrame = 0;
    return ended;
}
