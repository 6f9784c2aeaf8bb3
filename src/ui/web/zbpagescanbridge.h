#pragma once

#include <QObject>
#include <QString>

// The web-channel object the page scan script talks to. It lives in an
// isolated script world, so the page's own scripts cannot reach it.
class ZBPageScanBridge : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // A movie or media address found in a frame's markup, already absolute.
    Q_INVOKABLE void found(const QString &url, const QString &element, const QString &frameUrl, bool topFrame);

Q_SIGNALS:
    void addressFound(const QString &url, const QString &element, const QString &frameUrl, bool topFrame);
};
