#include "app/zbcontrolsfade.h"

#include <algorithm>

bool ZBControlsFade::tick(double seconds)
{
    m_elapsed += seconds;
    const double before = m_alpha;
    // The small margin keeps a hundred added hundredths from falling short
    // of a whole second.
    const bool stayOver = m_elapsed >= StaySeconds - 1e-9;
    const double step = AlphaPerSecond * seconds;
    m_alpha = std::clamp(m_alpha + (stayOver ? -step : step), 0.0, 1.0);
    return m_alpha != before;
}
