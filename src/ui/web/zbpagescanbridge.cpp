#include "ui/web/zbpagescanbridge.h"

void ZBPageScanBridge::found(const QString &url, const QString &element, const QString &frameUrl, bool topFrame)
{
    Q_EMIT addressFound(url, element, frameUrl, topFrame);
}
