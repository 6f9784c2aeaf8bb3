#pragma once

#include <QList>
#include <QUrl>
#include <QWebEngineUrlRequestInterceptor>

#include "web/zbwebrequest.h"

// Sees every request the browser's pages make and hands a copy of it to the
// GUI thread as resourceRequested(). Blocks nothing and changes nothing.
//
// Requests for the program's own helpers (the Flash engine's files, served to
// pages from a loopback server) are left out: they are ours, not the page's.
class ZBWebRequestInterceptor : public QWebEngineUrlRequestInterceptor
{
    Q_OBJECT

public:
    explicit ZBWebRequestInterceptor(QObject *parent = nullptr);

    // Requests whose URL begins with one of these prefixes are not reported.
    void setIgnoredPrefixes(const QList<QUrl> &prefixes);
    // Requests made for this top page are tagged as made by a preview; an
    // empty URL tags none.
    void setPreviewPage(const QUrl &firstPartyUrl);

    void interceptRequest(QWebEngineUrlRequestInfo &info) override;

Q_SIGNALS:
    // Always queued: the engine may call us on its own thread.
    void resourceRequested(const ZBWebRequest &request);

private:
    // Read on the engine's thread; only changed from the GUI thread between
    // loads, and a stale read mis-tags at most one late request.
    QList<QString> m_ignoredPrefixes;
    QUrl m_previewPage;
};
