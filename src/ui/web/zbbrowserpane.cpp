#include "ui/web/zbbrowserpane.h"

#include <QVBoxLayout>

#include "ui/web/zbbrowserview.h"

ZBBrowserPane::ZBBrowserPane(QWidget *parent)
    : ZBWebPane(parent)
    , m_view(new ZBBrowserView(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    setFocusProxy(m_view);

    connect(m_view, &ZBBrowserView::resourceRequested, this, &ZBWebPane::resourceRequested);
    connect(m_view, &ZBBrowserView::mainFrameLoadStarted, this, &ZBWebPane::mainFrameLoadStarted);
    connect(m_view, &ZBBrowserView::mainFrameCommitted, this, &ZBWebPane::mainFrameCommitted);
    connect(m_view, &ZBBrowserView::titleReceived, this, &ZBWebPane::titleReceived);
    connect(m_view, &ZBBrowserView::mainFrameLoadFinished, this, &ZBWebPane::mainFrameLoadFinished);
    connect(m_view, &ZBBrowserView::mainFrameLoadFailed, this, &ZBWebPane::mainFrameLoadFailed);
    connect(m_view, &ZBBrowserView::busyChanged, this, &ZBWebPane::busyChanged);
    connect(m_view, &ZBBrowserView::newWindowLoaded, this, &ZBWebPane::newWindowLoaded);
    connect(m_view, &ZBBrowserView::backRequested, this, &ZBWebPane::backRequested);
    connect(m_view, &ZBBrowserView::reloadRequested, this, &ZBWebPane::reloadRequested);
}

QNetworkCookieJar *ZBBrowserPane::cookieJar() const
{
    return m_view->cookieJar();
}

QUrl ZBBrowserPane::url() const
{
    return m_view->url();
}

bool ZBBrowserPane::isBusy() const
{
    return m_view->isBusy();
}

void ZBBrowserPane::load(const QUrl &url)
{
    m_view->load(url);
}

void ZBBrowserPane::reload()
{
    m_view->reload();
}

void ZBBrowserPane::loadStartPage(const QString &typedText)
{
    m_view->loadStartPage(typedText);
}

void ZBBrowserPane::loadErrorPage(const QString &address, FailureKind kind, int code, const QString &description)
{
    m_view->loadErrorPage(address, kind, code, description);
}

void ZBBrowserPane::previewSWF(const QUrl &url)
{
    m_view->previewSWF(url);
}

void ZBBrowserPane::setBackEnabled(bool enabled)
{
    m_view->setBackEnabled(enabled);
}
