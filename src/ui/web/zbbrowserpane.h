#pragma once

#include "ui/web/zbwebpane.h"

class ZBBrowserView;

// The window's web pane: the browser view, filling it, behind the interface
// the window knows. Context menu, shortcuts and drops stay the view's own.
class ZBBrowserPane final : public ZBWebPane
{
    Q_OBJECT

public:
    explicit ZBBrowserPane(QWidget *parent = nullptr);

    ZBBrowserView *view() const { return m_view; }

    QNetworkCookieJar *cookieJar() const override;
    QUrl url() const override;
    bool isBusy() const override;
    void load(const QUrl &url) override;
    void reload() override;
    void loadStartPage(const QString &typedText) override;
    void loadErrorPage(const QString &address, FailureKind kind, int code, const QString &description) override;
    void previewSWF(const QUrl &url) override;
    void setBackEnabled(bool enabled) override;

private:
    ZBBrowserView *m_view;
};
