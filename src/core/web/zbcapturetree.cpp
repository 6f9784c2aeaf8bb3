#include "web/zbcapturetree.h"

#include <QLoggingCategory>
#include <QUrl>

#include "localization/zblocalizer.h"
#include "playback/zbmediatypes.h"
#include "web/zbdownloaditem.h"

Q_LOGGING_CATEGORY(lcCapture, "norvik.web.capture")

namespace
{
const QLatin1String HttpPrefix("http://");
const QLatin1String HttpsPrefix("https://");

// What the page plainly loads for itself. Anything else may be a stream
// behind a script's name, so its server is asked what it is.
bool isPageMaterial(const QString &type)
{
    static const QStringList types{
        QStringLiteral("html"), QStringLiteral("htm"),  QStringLiteral("css"),  QStringLiteral("js"),
        QStringLiteral("mjs"),  QStringLiteral("json"), QStringLiteral("map"),  QStringLiteral("png"),
        QStringLiteral("jpg"),  QStringLiteral("jpeg"), QStringLiteral("gif"),  QStringLiteral("webp"),
        QStringLiteral("svg"),  QStringLiteral("ico"),  QStringLiteral("bmp"),  QStringLiteral("avif"),
        QStringLiteral("woff"), QStringLiteral("woff2"), QStringLiteral("ttf"), QStringLiteral("otf"),
        QStringLiteral("eot"),  QStringLiteral("xml"),  QStringLiteral("txt"),  QStringLiteral("wasm")};
    return types.contains(type);
}

// The last component of a path the way file names are taken from URLs:
// trailing slashes do not count.
QString lastPathComponent(QString path)
{
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    return path.mid(path.lastIndexOf(u'/') + 1);
}
} // namespace

ZBCaptureTree::ZBCaptureTree(QObject *parent)
    : QObject(parent)
    , m_currentFilter(ZBDownloadItem::FilterMedia)
{
}

ZBCaptureTree::~ZBCaptureTree()
{
    if (m_probe)
    {
        for (auto it = m_probing.cbegin(); it != m_probing.cend(); ++it)
            m_probe->cancel(it.key());
    }
    qDeleteAll(m_pages);
    qDeleteAll(m_unlistedPages);
}

int ZBCaptureTree::indexOfPage(const ZBDownloadItem *page) const
{
    return int(m_pages.indexOf(const_cast<ZBDownloadItem *>(page)));
}

ZBDownloadItem *ZBCaptureTree::getPageByTitle(const QString &title) const
{
    for (ZBDownloadItem *page : m_pages)
    {
        if (page->resourceTitle() == title)
            return page;
    }
    return nullptr;
}

ZBDownloadItem *ZBCaptureTree::getPageByURL(const QString &url) const
{
    for (ZBDownloadItem *page : m_pages)
    {
        if (page->resourceUrl() == url)
            return page;
    }
    return nullptr;
}

ZBDownloadItem *ZBCaptureTree::commitPage(const QString &url)
{
    m_bypass = false;
    m_webFrameTitle = url;
    if (ZBDownloadItem *existing = getPageByURL(url))
        return existing;
    auto *page = new ZBDownloadItem(url);
    page->setResourceTitle(url);
    page->setResourceType(ZBLocalizer::localizedStringForKey(QStringLiteral("tableWebPage")));
    if (m_previewItem)
    {
        m_unlistedPages.append(page);
    }
    else
    {
        m_pages.append(page);
        Q_EMIT childrenAppended(nullptr);
    }
    // The page's own document is one of its resources; a second address
    // inside it (a redirector's) is not part of it.
    QString own = capturedUrl(url);
    const qsizetype second = own.indexOf(HttpPrefix);
    if (second >= 0)
        own.truncate(second);
    receivingUrl(own, UnknownLength);
    return page;
}

ZBDownloadItem *ZBCaptureTree::receivePageTitle(const QString &title)
{
    ZBDownloadItem *page = getPageByTitle(m_webFrameTitle);
    m_webFrameTitle = title;
    if (!page)
        page = getPageByTitle(title);
    if (!page)
        return nullptr;
    page->setResourceTitle(title);
    Q_EMIT itemChanged(page);
    Q_EMIT expandRequested(page);
    return page;
}

void ZBCaptureTree::removePage(ZBDownloadItem *page)
{
    const int index = indexOfPage(page);
    if (index < 0)
        return;
    Q_EMIT pageAboutToBeRemoved(index);
    m_pages.removeAt(index);
    forgetSubtree(page);
    Q_EMIT pageRemoved(index);
    delete page;
}

void ZBCaptureTree::removeAllPages()
{
    Q_EMIT pagesAboutToBeCleared();
    const QList<ZBDownloadItem *> pages = std::exchange(m_pages, {});
    for (ZBDownloadItem *page : pages)
        forgetSubtree(page);
    Q_EMIT pagesCleared();
    qDeleteAll(pages);
}

void ZBCaptureTree::forgetSubtree(ZBDownloadItem *page)
{
    for (auto it = m_probing.begin(); it != m_probing.end();)
    {
        if (it.value()->isInSubtreeOf(page))
        {
            if (m_probe)
                m_probe->cancel(it.key());
            it = m_probing.erase(it);
        }
        else
        {
            ++it;
        }
    }
    if (m_previewItem && m_previewItem->isInSubtreeOf(page))
    {
        m_previewItem = nullptr;
        m_previewing = false;
    }
}

QString ZBCaptureTree::capturedUrl(const QString &fullUrl)
{
    const qsizetype at = fullUrl.indexOf(HttpPrefix);
    return at < 0 ? fullUrl : fullUrl.mid(at + HttpPrefix.size());
}

QString ZBCaptureTree::requestUrl(const QString &capturedUrl)
{
    if (capturedUrl.startsWith(HttpsPrefix, Qt::CaseInsensitive) ||
        capturedUrl.startsWith(HttpPrefix, Qt::CaseInsensitive))
        return capturedUrl;
    return HttpPrefix + capturedUrl;
}

ZBDownloadItem *ZBCaptureTree::receiveRequest(const QString &fullUrl, qint64 expectedLength)
{
    if (m_bypass)
        return nullptr;
    return receivingUrl(capturedUrl(fullUrl), expectedLength);
}

ZBDownloadItem *ZBCaptureTree::receivingUrl(const QString &url, qint64 expectedLength)
{
    if (m_previewItem && m_previewItem->resourceUrl() == url)
        return nullptr;

    auto *item = new ZBDownloadItem(url);
    // Captured URLs have lost "http://" but an https address keeps its scheme.
    QString hostAndPath = url;
    if (hostAndPath.startsWith(HttpsPrefix, Qt::CaseInsensitive))
        hostAndPath.remove(0, HttpsPrefix.size());
    const QUrl parsed(HttpPrefix + hostAndPath, QUrl::TolerantMode);
    const QString path = parsed.isValid() ? parsed.path() : QString();
    QString title;
    QString type;
    if (path.isEmpty() || path == QLatin1String("/"))
    {
        title = QStringLiteral("index.html");
        type = QStringLiteral("html");
    }
    else if (url.contains(QLatin1String("videoplayback?")) || url.contains(QLatin1String("stream.php?playlist=")))
    {
        title = QStringLiteral("video.flv");
        type = QStringLiteral("flv");
    }
    else
    {
        QString cut = hostAndPath.section(u'?', 0, 0);
        cut = cut.section(u';', 0, 0);
        title = lastPathComponent(cut);
        type = ZBMediaTypes::pathExtension(title);
        static const QStringList flashVideo{QStringLiteral("on2"), QStringLiteral("h264"), QStringLiteral("iflv")};
        if (flashVideo.contains(type, Qt::CaseInsensitive))
        {
            title = QStringLiteral("video.flv");
            type = QStringLiteral("flv");
        }
        if (title.isEmpty())
            title = QStringLiteral("index.html");
    }
    if (type.isEmpty())
        type = QStringLiteral("unknown");
    item->setResourceTitle(title);
    item->setResourceType(type);
    item->setFileMustBeAddedToLibrary(ZBMediaTypes::isRegisteredType(type));
    item->setAvailableAction(ZBDownloadItem::DownloadAction);
    item->setExpectedBytesLength(expectedLength >= 0 ? expectedLength : 0);
    item->setReceivedBytesLength(0);

    ZBDownloadItem *owner =
        m_previewing && m_previewItem ? m_previewItem : getPageByTitle(m_webFrameTitle);
    if (!owner || owner->getResourceByURL(url))
    {
        delete item;
        return nullptr;
    }
    item->setParent(owner);
    if (item->resourceTitle() == QLatin1String("video.flv"))
        item->setResourceTitle(QStringLiteral("%1.flv").arg(owner->resourceTitle()));
    // Expanded once, when its first row shows; the user may fold it again.
    const bool hadNoRows = owner->numberOfChildrenWithFilter(m_currentFilter) == 0;
    owner->addResource(item);
    classify(owner, item);
    Q_EMIT childrenAppended(owner);
    if (hadNoRows && owner->numberOfChildrenWithFilter(m_currentFilter) == 1)
        Q_EMIT expandRequested(owner);
    if (expectedLength < 0 && isWorthProbing(item))
        probeItem(item);
    return item;
}

void ZBCaptureTree::classify(ZBDownloadItem *owner, ZBDownloadItem *item)
{
    const QString type = item->resourceType();
    if (!ZBMediaTypes::isRegisteredType(type))
        return;
    if (ZBDownloadItem::isFlashType(type))
    {
        owner->addSwfResource(item);
    }
    else
    {
        // A previewed player whose streams show up becomes a video source of
        // its page itself.
        ZBDownloadItem *grandParent = owner->parent();
        if (grandParent && !grandParent->videoResources().contains(owner))
        {
            grandParent->addVideoResource(owner);
            Q_EMIT childrenAppended(grandParent);
        }
        owner->addVideoResource(item);
    }
    owner->addMediaResource(item);
}

void ZBCaptureTree::beginPreview(ZBDownloadItem *item)
{
    m_previewItem = item;
    m_previewing = item != nullptr;
    if (!item)
        return;
    item->setSaved(false);
    item->setAvailableAction(ZBDownloadItem::DownloadAction);
    item->setExpectedResourcesCount(0);
    item->setReceivedResourcesCount(0);
    Q_EMIT itemChanged(item);
}

void ZBCaptureTree::setCurrentFilter(int filter)
{
    if (filter == m_currentFilter)
        return;
    m_currentFilter = filter;
    Q_EMIT filterChanged(filter);
}

bool ZBCaptureTree::isPreviewAvailable(const ZBDownloadItem *selected) const
{
    return selected && selected != m_previewItem && selected->parent() &&
           ZBDownloadItem::isFlashType(selected->resourceType());
}

bool ZBCaptureTree::rootDownloadItemExistInSelection(const QList<ZBDownloadItem *> &selection)
{
    return std::any_of(selection.crbegin(), selection.crend(),
                       [](const ZBDownloadItem *item) { return item && !item->parent(); });
}

bool ZBCaptureTree::availableForDownloadItemExistsInSelection(const QList<ZBDownloadItem *> &selection)
{
    return std::any_of(selection.crbegin(), selection.crend(),
                       [](const ZBDownloadItem *item)
                       { return item && item->availableAction() == ZBDownloadItem::DownloadAction; });
}

QString ZBCaptureTree::copyURLText(const QList<ZBDownloadItem *> &selection)
{
    QString text;
    for (const ZBDownloadItem *item : selection)
    {
        if (item)
            text += item->resourceUrl() + u'\n';
    }
    return text;
}

QString ZBCaptureTree::typeForContentType(const QString &contentType)
{
    static const QHash<QString, QString> types{
        {QStringLiteral("video/mp4"), QStringLiteral("mp4")},
        {QStringLiteral("video/x-m4v"), QStringLiteral("m4v")},
        {QStringLiteral("video/x-flv"), QStringLiteral("flv")},
        {QStringLiteral("video/flv"), QStringLiteral("flv")},
        {QStringLiteral("video/x-f4v"), QStringLiteral("f4v")},
        {QStringLiteral("application/x-shockwave-flash"), QStringLiteral("swf")},
        {QStringLiteral("application/vnd.adobe.flash.movie"), QStringLiteral("swf")},
        {QStringLiteral("video/quicktime"), QStringLiteral("mov")},
        {QStringLiteral("video/x-msvideo"), QStringLiteral("avi")},
        {QStringLiteral("video/avi"), QStringLiteral("avi")},
        {QStringLiteral("video/divx"), QStringLiteral("divx")},
        {QStringLiteral("video/mpeg"), QStringLiteral("mpg")},
        {QStringLiteral("video/3gpp"), QStringLiteral("3gp")},
        {QStringLiteral("video/3gpp2"), QStringLiteral("3g2")},
        {QStringLiteral("video/x-matroska"), QStringLiteral("mkv")},
        {QStringLiteral("video/x-ms-wmv"), QStringLiteral("wmv")},
        {QStringLiteral("video/x-dv"), QStringLiteral("dv")},
        {QStringLiteral("application/vnd.rn-realmedia"), QStringLiteral("rm")},
        {QStringLiteral("application/vnd.rn-realmedia-vbr"), QStringLiteral("rmvb")},
        {QStringLiteral("video/vnd.rn-realvideo"), QStringLiteral("rv")},
        {QStringLiteral("application/x-silverlight-app"), QStringLiteral("xap")},
    };
    const QString key = contentType.section(u';', 0, 0).trimmed().toLower();
    if (key == QLatin1String("video/webm"))
    {
        // WebM is Matroska; until the player lists "webm" itself, the
        // Matroska name is the one it plays and files.
        const QString webm = QStringLiteral("webm");
        return ZBMediaTypes::isRegisteredType(webm) ? webm : QStringLiteral("mkv");
    }
    return types.value(key);
}

bool ZBCaptureTree::applyContentType(ZBDownloadItem *item, const QString &contentType)
{
    if (!item)
        return false;
    item->setContentType(contentType);
    if (ZBMediaTypes::isRegisteredType(item->resourceType()))
        return false;
    const QString type = typeForContentType(contentType);
    if (type.isEmpty())
        return false;
    item->setResourceType(type);
    item->setFileMustBeAddedToLibrary(true);
    if (ZBDownloadItem *owner = item->parent())
    {
        const bool hadNoRows = owner->numberOfChildrenWithFilter(m_currentFilter) == 0;
        classify(owner, item);
        Q_EMIT childrenAppended(owner);
        if (hadNoRows && owner->numberOfChildrenWithFilter(m_currentFilter) == 1)
            Q_EMIT expandRequested(owner);
    }
    Q_EMIT itemChanged(item);
    return true;
}

void ZBCaptureTree::setResourceProbe(ZBResourceProbe *probe)
{
    if (m_probe)
        disconnect(m_probe, nullptr, this, nullptr);
    m_probe = probe;
    m_probing.clear();
    if (m_probe)
        connect(m_probe, &ZBResourceProbe::probed, this, &ZBCaptureTree::probeAnswered);
}

bool ZBCaptureTree::isWorthProbing(const ZBDownloadItem *item) const
{
    return item->parent() && !isPageMaterial(item->resourceType());
}

void ZBCaptureTree::probeItem(ZBDownloadItem *item)
{
    if (!m_probe || !item)
        return;
    const QUrl url(requestUrl(item->resourceUrl()));
    const QUrl referrer(requestUrl(item->pageRoot()->resourceUrl()));
    m_probing.insert(m_probe->probe(url, referrer), item);
}

void ZBCaptureTree::probeAnswered(quint64 id, const ZBResourceProbe::Answer &answer)
{
    ZBDownloadItem *item = m_probing.take(id);
    if (!item)
        return;
    if (!answer.ok)
    {
        qCDebug(lcCapture) << "size of" << item->resourceUrl() << "unknown:" << answer.errorString;
        return;
    }
    // A transfer that started meanwhile knows better.
    if (answer.totalBytes >= 0 && item->expectedBytesLength() <= 0)
        item->setExpectedBytesLength(answer.totalBytes);
    if (!applyContentType(item, answer.contentType))
        Q_EMIT itemChanged(item);
}
