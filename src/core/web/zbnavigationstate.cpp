#include "web/zbnavigationstate.h"

#include <QRegularExpression>

#include "localization/zblocalizer.h"
#include "web/zbbrowserhost.h"
#include "web/zbhistory.h"

namespace
{
const QString AboutBlank = QStringLiteral("about:blank");
const QString SchemePrefix = QStringLiteral("norvikplayer://");
// Characters a URL may hold as typed; anything else (a blank, a letter
// outside ASCII) makes the text be percent-escaped as a whole first.
const QByteArray UrlCharacters = QByteArrayLiteral("!#$&'()*+,/:;=?@[]~-._");

bool isAboutBlank(const QString &url)
{
    return url.compare(AboutBlank, Qt::CaseInsensitive) == 0;
}

QUrl parseTyped(const QString &text)
{
    for (const QChar c : text)
    {
        if (c.unicode() > 0x7e || (!c.isLetterOrNumber() && !UrlCharacters.contains(char(c.unicode()))
                                   && c != QLatin1Char('%')))
            return QUrl();
    }
    return QUrl(text, QUrl::StrictMode);
}

// "localhost:8080" and "example.com:8080/x" parse as a URL whose scheme is the
// host; nobody means that when typing them.
bool schemeIsReallyAHost(const QUrl &url, const QString &text)
{
    static const QRegularExpression hostAndPort(QStringLiteral("^[A-Za-z0-9.-]+:[0-9]+([/?#].*)?$"));
    return !url.scheme().isEmpty() && hostAndPort.match(text).hasMatch();
}

QString localized(const char *key)
{
    return ZBLocalizer::localizedStringForKey(QString::fromLatin1(key));
}

// file://localhost/x and file:///x name the same file; the view may give
// either back for what it was asked to load.
QString normalizedURL(const QString &url)
{
    QUrl parsed(url);
    if (parsed.scheme() == QLatin1String("file") && parsed.host().compare(QLatin1String("localhost"),
                                                                          Qt::CaseInsensitive) == 0)
        parsed.setHost(QString());
    return parsed.toString(QUrl::FullyEncoded);
}
} // namespace

ZBNavigationState::ZBNavigationState(ZBBrowserHost *host, ZBHistory *history, const QString &startPagePath,
                                     const QString &errorPagePath)
    : m_host(host)
    , m_history(history)
    , m_startPagePath(startPagePath)
    , m_errorPagePath(errorPagePath)
{
}

void ZBNavigationState::start()
{
    reloadRecentURLs();
    m_host->setBackEnabled(false);
    m_host->historyMenuChanged();
    validateGoButton();
    m_host->load(QUrl(startPageURL()));
}

QUrl ZBNavigationState::urlForAddress(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return QUrl();
    QString typed = trimmed;
    QUrl url = parseTyped(typed);
    if (!url.isValid())
    {
        typed = QString::fromLatin1(QUrl::toPercentEncoding(trimmed, UrlCharacters));
        url = QUrl(typed, QUrl::StrictMode);
    }
    if (!url.isValid())
        return QUrl();
    if (url.scheme().isEmpty() || schemeIsReallyAHost(url, typed))
        url = QUrl(QStringLiteral("http://") + url.toString(QUrl::FullyEncoded));
    return url.isValid() ? url : QUrl();
}

void ZBNavigationState::goToURL()
{
    if (m_host->addressText().trimmed().isEmpty())
        return;
    const QUrl url = urlForAddress(m_host->addressText());
    // A text no URL can be made of loads nothing and says nothing, as a
    // browser does with an address it cannot parse.
    if (url.isValid())
        m_host->load(url);
    m_host->showBrowsing();
    if (!url.host().isEmpty())
        updatePageLoadingStatusWithString(localized("ledTextConnecting").arg(url.host()));
    validateGoButton();
}

void ZBNavigationState::buttonGoClick()
{
    addUrlToHistoryListWithHandWritedOption(true);
    goToURL();
}

void ZBNavigationState::leavePreview()
{
    m_host->reloadDownloadTree();
    m_host->setLedBackVisible(false);
    m_host->setSpinnerRunning(true);
    m_host->clearPreviewItem();
}

void ZBNavigationState::cellTextDidEndEditing()
{
    const int mode = m_host->contentMode();
    if (m_host->addressText() == m_currentURL && (mode == 0 || mode == 3))
        return;
    addUrlToHistoryListWithHandWritedOption(true);
    leavePreview();
    goToURL();
    m_host->focusDownloadTree();
}

void ZBNavigationState::addUrlToHistoryListWithHandWritedOption(bool handWrited)
{
    const QString text = m_host->addressText().trimmed();
    if (text.isEmpty())
        return;
    // A stored URL that begins with the text stands for it: typing the start
    // of a longer address refreshes that one instead of adding a second.
    const QList<ZBHistoryEntity> matches = m_history->getHistoryItemByName(text);
    if (matches.isEmpty())
        m_history->addHistoryItem(text, handWrited);
    else
        m_history->touchHistoryItem(matches.first());
    reloadRecentURLs();
}

void ZBNavigationState::validateGoButton()
{
    m_host->setGoEnabled(!m_host->addressText().trimmed().isEmpty());
}

void ZBNavigationState::buttonBackClick()
{
    if (!m_host->hasPreviewItem())
    {
        if (!m_URLHistory.isEmpty())
            m_URLHistory.removeLast();
    }
    else
        buttonLEDBackClick();
    // Leaving a preview thus drops one entry but asks for the page twice,
    // once from the inner Back and once here; the second request is the one
    // that ends up shown, and both leave the stack the same.
    m_host->setLedBackVisible(false);
    if (!m_URLHistory.isEmpty())
        m_host->setAddressText(m_URLHistory.last());
    goToURL();
    if (m_URLHistory.size() < 2)
    {
        m_webViewGoingBack = true;
        m_host->setBackEnabled(false);
    }
    m_host->validatePreviewButton();
}

void ZBNavigationState::buttonLEDBackClick()
{
    leavePreview();
    buttonBackClick();
}

void ZBNavigationState::reloadCurrentPage()
{
    if (normalizedURL(m_host->mainFrameURL()) != normalizedURL(startPageURL()))
        m_host->reload();
}

void ZBNavigationState::gotoURLfromHistoryMenu(const QString &url)
{
    m_host->setAddressText(url);
    goToURL();
}

void ZBNavigationState::clearHistoryMenu()
{
    m_history->clearHistory();
    m_recentURLs.clear();
    m_host->historyMenuChanged();
    m_host->recentURLsChanged();
    m_host->setBackEnabled(false);
}

QString ZBNavigationState::addressFromSchemeURL(const QString &eventURL)
{
    const qsizetype at = eventURL.indexOf(SchemePrefix, 0, Qt::CaseInsensitive);
    const QString rest = eventURL.mid(at < 0 ? 0 : SchemePrefix.size());
    return QUrl::fromPercentEncoding(rest.toUtf8());
}

void ZBNavigationState::handleGetURLEvent(const QString &eventURL)
{
    m_host->setAddressText(addressFromSchemeURL(eventURL));
    addUrlToHistoryListWithHandWritedOption(false);
    leavePreview();
    goToURL();
    m_host->focusDownloadTree();
}

bool ZBNavigationState::decidePolicyForNewWindowAction(const QString &url)
{
    if (isAboutBlank(url))
        return false;
    m_host->setAddressText(url);
    goToURL();
    return true;
}

QString ZBNavigationState::firstURLMatchingPrefix(const QString &text) const
{
    const QList<ZBHistoryEntity> matches = m_history->getHistoryItemByName(text);
    return matches.isEmpty() ? text : matches.first().HistoryItem;
}

QStringList ZBNavigationState::recentURLs() const
{
    QStringList urls;
    for (const ZBHistoryEntity &record : m_recentURLs)
        urls << record.HistoryItem;
    return urls;
}

QList<ZBHistoryEntity> ZBNavigationState::historyMenuItems() const
{
    return m_history->historyMenuItems();
}

void ZBNavigationState::reloadRecentURLs()
{
    m_recentURLs = m_history->getAllHistoryItems();
    m_host->recentURLsChanged();
}

void ZBNavigationState::resetResourceCounters()
{
    m_resourceCount = 0;
    m_resourceCompletedCount = 0;
    m_resourceFailedCount = 0;
}

void ZBNavigationState::webViewDidStartProvisionalLoad(bool mainFrame, const QString &url)
{
    resetResourceCounters();
    if (mainFrame)
    {
        if (m_host->hasPreviewItem())
        {
            m_webFrameTitle = m_host->previewItemTitle();
            m_host->expandPreviewItem();
            m_shouldBypassReceiveURLs = false;
        }
        else
        {
            // Until the page commits there is no page root to hang captured
            // resources on.
            m_shouldBypassReceiveURLs = true;
        }

        if (m_pageLoadError)
            m_pageLoadError = false;
        else
        {
            const bool repeated =
                !m_URLHistory.isEmpty() && m_URLHistory.last().compare(url, Qt::CaseInsensitive) == 0;
            if (!repeated && !isAboutBlank(url))
                m_URLHistory.append(url);
            if (!isAboutBlank(url) && !isErrorPage(url))
                m_host->setAddressText(url);
        }
        m_host->setSpinnerRunning(true);
        m_currentURL = m_host->addressText();
    }
    if (!m_URLHistory.isEmpty())
    {
        // Back emptied the stack down to this page: the load it started must
        // not offer Back again.
        if (m_webViewGoingBack)
            m_webViewGoingBack = false;
        else
            m_host->setBackEnabled(true);
    }
}

QString ZBNavigationState::webViewDidCommitLoad(bool mainFrame, const QString &url)
{
    if (!mainFrame || m_host->contentMode() == 3)
        return QString();
    m_shouldBypassReceiveURLs = false;
    if (url.isEmpty() || isBuiltInPage(url) || isAboutBlank(url))
        return QString();
    m_webFrameTitle = url;
    return url;
}

ZBNavigationState::PageTitleChange ZBNavigationState::webViewDidReceiveTitle(bool mainFrame, const QString &title,
                                                                             const QString &url)
{
    PageTitleChange change;
    if (!mainFrame || url.isEmpty() || isBuiltInPage(url))
        return change;
    m_host->setAddressText(url);
    change.valid = true;
    change.previousTitle = m_webFrameTitle;
    change.title = title;
    m_webFrameTitle = title;
    if (!title.isEmpty())
    {
        m_history->addHistoryItemWithURL(url, title);
        reloadRecentURLs();
    }
    m_host->historyMenuChanged();
    return change;
}

void ZBNavigationState::webViewDidFailProvisionalLoad(bool mainFrame)
{
    if (!mainFrame)
        return;
    if (!m_currentURL.isEmpty())
    {
        m_history->addHistoryItemWithURL(m_currentURL, localized("history404message"));
        reloadRecentURLs();
    }
    m_host->historyMenuChanged();
    resetResourceCounters();
    updatePageLoadingStatus(QStringLiteral("ledStatusReady"));
    m_host->setSpinnerRunning(false);
    m_pageLoadError = true;
    m_host->load(QUrl(errorPageURL()));
}

void ZBNavigationState::webViewDidFinishLoad(bool mainFrame)
{
    resetResourceCounters();
    updatePageLoadingStatus(QStringLiteral("ledStatusReady"));
    if (mainFrame)
        m_host->setSpinnerRunning(false);
}

int ZBNavigationState::identifierForInitialRequest()
{
    return m_resourceCount++;
}

void ZBNavigationState::resourceWillSendRequest()
{
    updateResourceStatus();
}

void ZBNavigationState::resourceDidFinishLoading()
{
    ++m_resourceCompletedCount;
    updateResourceStatus();
}

void ZBNavigationState::resourceDidFailLoading()
{
    ++m_resourceFailedCount;
    updateResourceStatus();
}

void ZBNavigationState::updatePageLoadingStatus(const QString &key)
{
    m_host->setPageStatus(ZBLocalizer::localizedStringForKey(key));
}

void ZBNavigationState::updatePageLoadingStatusWithString(const QString &text)
{
    m_host->setPageStatus(text);
}

void ZBNavigationState::updateResourceStatus()
{
    // A failed resource never counts as completed, so after a failure the
    // progress stays until the page's own finish says "ledStatusReady".
    if (m_resourceCount > m_resourceCompletedCount)
        updatePageLoadingStatusWithString(
            localized("ledResourcesLoadProgress").arg(m_resourceCompletedCount).arg(m_resourceCount));
    else
        updatePageLoadingStatus(QStringLiteral("Ready"));
}

QString ZBNavigationState::builtInPageURL(const QString &format, const QString &path) const
{
    // Only blanks are escaped: the page reads the rest of the query as typed.
    return format.arg(path, m_host->addressText()).split(QLatin1Char(' ')).join(QStringLiteral("%20"));
}

QString ZBNavigationState::startPageURL() const
{
    return builtInPageURL(QStringLiteral("file://%1?%2"), m_startPagePath);
}

QString ZBNavigationState::errorPageURL() const
{
    return builtInPageURL(QStringLiteral("file://localhost%1?%2"), m_errorPagePath);
}

bool ZBNavigationState::isErrorPage(const QString &url) const
{
    if (m_errorPagePath.isEmpty())
        return false;
    const QUrl parsed(url);
    return url.contains(QString(m_errorPagePath).replace(QLatin1Char(' '), QStringLiteral("%20")))
           || (parsed.isLocalFile() && parsed.toLocalFile() == m_errorPagePath);
}

bool ZBNavigationState::isBuiltInPage(const QString &url) const
{
    const QString normalized = normalizedURL(url);
    return normalized == normalizedURL(startPageURL()) || normalized == normalizedURL(errorPageURL())
           || isErrorPage(url);
}

QString ZBNavigationState::pageAddressForCapture(const QString &url)
{
    static const QString Http = QStringLiteral("http://");
    qsizetype from = url.indexOf(Http, 0, Qt::CaseInsensitive);
    if (from >= 0)
        from += Http.size();
    else
    {
        // Pages served over https (or any other scheme) lose their scheme too.
        const qsizetype separator = url.indexOf(QStringLiteral("://"));
        from = separator < 0 ? 0 : separator + 3;
    }
    const qsizetype second = url.indexOf(Http, from, Qt::CaseInsensitive);
    return second < 0 ? url.mid(from) : url.mid(from, second - from);
}
