#include "engines/flash/zbflashrequestguard.h"

#include <QLoggingCategory>

#include "engines/flash/zbflashscheme.h"

Q_LOGGING_CATEGORY(lcFlashGuard, "norvik.engine.flash.guard")

bool ZBFlashRequestGuard::allows(const QUrl &url, bool security)
{
    if (!security)
        return true;
    const QString scheme = url.scheme();
    // data: and blob: stay inside the page; everything else but our own
    // scheme reaches out.
    return scheme == QLatin1String(ZBFlashSchemeHandler::SchemeName) || scheme == u"data" || scheme == u"blob";
}

void ZBFlashRequestGuard::interceptRequest(QWebEngineUrlRequestInfo &info)
{
    if (allows(info.requestUrl(), m_security))
        return;
    qCInfo(lcFlashGuard).noquote() << "Local security blocked" << info.requestUrl().toDisplayString();
    info.block(true);
}
