#pragma once

#include <QUrl>
#include <QWidget>

#include "web/zbwebrequest.h"

class QNetworkCookieJar;

// The browser pane's web view as the window knows it. The view itself needs
// Qt WebEngine, which lives in the media module with the other heavy
// libraries (ZBMediaModule::createWebPane()); see ZBBrowserView for what each
// call and signal means.
class ZBWebPane : public QWidget
{
    Q_OBJECT

public:
    enum class FailureKind
    {
        // Refused, reset, unknown host, unreachable: there was no answer.
        Connection,
        // The server answered with an error status (404, 500, ...).
        HttpStatus,
        // Certificates, protocol errors and anything else.
        Other
    };
    Q_ENUM(FailureKind)

    using QWidget::QWidget;

    // The start page, with the text the user had typed (may be empty).
    static QUrl startPageUrl(const QString &typedText);
    // The error page for `address`, saying why it failed.
    static QUrl errorPageUrl(const QString &address, FailureKind kind, int code, const QString &description);
    // Our own start or error page, whatever its query.
    static bool isStartPage(const QUrl &url);
    static bool isErrorPage(const QUrl &url);

    virtual QNetworkCookieJar *cookieJar() const = 0;
    virtual QUrl url() const = 0;
    virtual bool isBusy() const = 0;
    virtual void load(const QUrl &url) = 0;
    virtual void reload() = 0;
    virtual void loadStartPage(const QString &typedText) = 0;
    virtual void loadErrorPage(const QString &address, FailureKind kind, int code, const QString &description) = 0;
    virtual void previewSWF(const QUrl &url) = 0;
    virtual void setBackEnabled(bool enabled) = 0;

Q_SIGNALS:
    void resourceRequested(const ZBWebRequest &request);
    void mainFrameLoadStarted(const QUrl &url);
    void mainFrameCommitted(const QUrl &url);
    void titleReceived(const QString &title, const QUrl &url);
    void mainFrameLoadFinished(const QUrl &url, const QString &title);
    void mainFrameLoadFailed(const QUrl &url, ZBWebPane::FailureKind kind, int code, const QString &description);
    void busyChanged(bool busy);
    void newWindowLoaded(const QUrl &url);
    void backRequested();
    void reloadRequested();
};
