#pragma once

// The fade of the fullscreen controls: they come up within a quarter of a
// second of a mouse movement, stay a second after the last one, and go within
// another quarter. Time is fed in ticks so that the rule runs the same under
// a timer and in a test.
class ZBControlsFade
{
public:
    static constexpr double TickSeconds = 0.01;
    static constexpr double StaySeconds = 1.0;
    // Alpha gained or lost per second: 0.04 a hundredth.
    static constexpr double AlphaPerSecond = 4.0;

    void mouseMoved() { m_elapsed = 0; }
    // `seconds` since the last tick; true when the alpha changed.
    bool tick(double seconds = TickSeconds);
    double alpha() const { return m_alpha; }
    // Nothing more will change until the mouse moves again.
    bool isSettled() const { return m_elapsed >= StaySeconds - 1e-9 && m_alpha <= 0; }

private:
    double m_elapsed = 0;
    double m_alpha = 1.0;
};
