#pragma once

// Decides, one playback tick at a time, that a track has ended. Movies and
// streams end when their position reaches their length. SWF movies have no
// reliable end: they end by the frame rules the user chose — the last frame
// reached, the frame number going back (the movie looped), or the same frame
// shown for longer than a limit.
class ZBTrackEndDetector
{
public:
    struct FrameRules
    {
        bool lastFrameIsMet = true;
        bool frameNumberWasDecreased = true;
        bool stayOnTheSameFrameMore = true;
        double stayingTime = 10.0;
    };

    void setFrameRules(const FrameRules &rules) { m_rules = rules; }
    const FrameRules &frameRules() const { return m_rules; }

    // Forget the previous sample; called when a track starts.
    void reset();

    // A time-based sample. `reachedEnd` is the engine's own end-of-file signal,
    // which arrives even when the last frame's time stops short of the length.
    bool sampleTime(double current, double total, bool reachedEnd) const;
    // A stream that reports neither length nor position has ended as well.
    bool sampleStream(double current, double total, bool reachedEnd) const;
    // A frame sample, taken every `tickSeconds`. `previous` is the position
    // shown until now: the last sample, or where a seek put it.
    bool sampleFrame(double previous, int frame, int totalFrames, double tickSeconds);

    bool frameNumberWasDecreased() const { return m_decreased; }
    double stayOnTheSameFrame() const { return m_stayOnTheSameFrame; }

private:
    FrameRules m_rules;
    bool m_decreased = false;
    double m_stayOnTheSameFrame = 0;
};
