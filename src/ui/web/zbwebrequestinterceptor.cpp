#include "ui/web/zbwebrequestinterceptor.h"

#include <QMetaObject>

ZBWebRequestInterceptor::ZBWebRequestInterceptor(QObject *parent)
    : QWebEngineUrlRequestInterceptor(parent)
{
    qRegisterMetaType<ZBWebRequest>();
}

void ZBWebRequestInterceptor::setIgnoredPrefixes(const QList<QUrl> &prefixes)
{
    m_ignoredPrefixes.clear();
    for (const QUrl &prefix : prefixes)
        m_ignoredPrefixes.append(prefix.toString());
}

void ZBWebRequestInterceptor::setPreviewPage(const QUrl &firstPartyUrl)
{
    m_previewPage = firstPartyUrl;
}

void ZBWebRequestInterceptor::interceptRequest(QWebEngineUrlRequestInfo &info)
{
    const QUrl url = info.requestUrl();
    const QString text = url.toString();
    for (const QString &prefix : std::as_const(m_ignoredPrefixes))
    {
        if (text.startsWith(prefix))
            return;
    }
    ZBWebRequest request;
    request.url = url;
    request.resourceType = ZBWebRequest::ResourceType(info.resourceType());
    request.navigationType = ZBWebRequest::NavigationType(info.navigationType());
    request.firstPartyUrl = info.firstPartyUrl();
    request.initiator = info.initiator();
    request.method = QString::fromLatin1(info.requestMethod());
    request.mainFrame = info.resourceType() == QWebEngineUrlRequestInfo::ResourceTypeMainFrame;
    request.preview = !m_previewPage.isEmpty()
                      && (request.firstPartyUrl == m_previewPage || (request.mainFrame && url == m_previewPage));
    // Listeners may start network work or touch widgets: never inside the
    // engine's call, whichever thread it is made on.
    QMetaObject::invokeMethod(
        this, [this, request]() { Q_EMIT resourceRequested(request); }, Qt::QueuedConnection);
}
