#pragma once

#include <atomic>

#include <QWebEngineUrlRequestInterceptor>

// Keeps movies off the network while local security is on: every request of
// the Flash page that leaves our own scheme is blocked. With security off the
// page's requests go out as a browser's would.
class ZBFlashRequestGuard : public QWebEngineUrlRequestInterceptor
{
    Q_OBJECT

public:
    using QWebEngineUrlRequestInterceptor::QWebEngineUrlRequestInterceptor;

    void setSecurity(bool on) { m_security = on; }
    bool security() const { return m_security; }

    void interceptRequest(QWebEngineUrlRequestInfo &info) override;

    // Whether a request for `url` may go out, security on or off.
    static bool allows(const QUrl &url, bool security);

private:
    std::atomic_bool m_security{false};
};
