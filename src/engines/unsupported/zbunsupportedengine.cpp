#include "engines/unsupported/zbunsupportedengine.h"

#include <QTimer>

ZBUnsupportedEngine::ZBUnsupportedEngine(int engineCode, const QString &reason, QObject *parent)
    : ZBPlaybackEngine(parent)
    , m_code(engineCode)
    , m_reason(reason)
{
}

bool ZBUnsupportedEngine::canInitWithFile(const QString &)
{
    return false;
}

void ZBUnsupportedEngine::load(const QString &)
{
    // Answer after returning, as every engine does, so callers need only one
    // way to hear of a failure.
    QTimer::singleShot(0, this, [this]() { Q_EMIT loadFailed(m_reason); });
}
