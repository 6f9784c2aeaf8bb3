#include "ui/web/zbwebcontroller.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFileInfo>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QToolButton>
#include <QTreeView>

#include "app/zbcommandvalidation.h"
#include "app/zbmediamodule.h"
#include "app/zbmediamoduleloader.h"
#include "library/zblibrarycontroller.h"
#include "localization/zblocalizer.h"
#include "settings/zbsettings.h"
#include "ui/app/zbfilemanager.h"
#include "ui/app/zbmainwindowlayout.h"
#include "ui/web/zbdownloadtreemodel.h"
#include "ui/web/zbled.h"
#include "ui/web/zbnotificationcenter.h"
#include "web/zbcapturetree.h"
#include "web/zbdownloaditem.h"
#include "web/zbdownloadmanager.h"
#include "web/zbhistory.h"
#include "web/zbnavigationstate.h"
#include "web/zbresourceprobe.h"
#include "web/zbwebrequest.h"

namespace
{
QString text(const char *key)
{
    return ZBLocalizer::localizedStringForKey(QLatin1String(key));
}

// The navigation rules name the built-in pages by paths of their own; the
// view shows them from its resources.
const QString StartPagePath = QStringLiteral("/norvikplayer/default.html");
const QString ErrorPagePath = QStringLiteral("/norvikplayer/404.html");
} // namespace

ZBWebController::ZBWebController(ZBLibraryController *library, ZBSettings *settings, ZBMainWindowLayout *layout,
                                 ZBLed *led, ZBNotificationCenter *notifications, WindowHooks hooks,
                                 QObject *parent)
    : QObject(parent)
    , m_library(library)
    , m_settings(settings)
    , m_layout(layout)
    , m_led(led)
    , m_notifications(notifications)
    , m_hooks(std::move(hooks))
    , m_history(std::make_unique<ZBHistory>())
    , m_capture(std::make_unique<ZBCaptureTree>())
    , m_probe(std::make_unique<ZBResourceProbe>())
    , m_downloads(std::make_unique<ZBDownloadManager>(*m_capture, library))
    , m_navigation(std::make_unique<ZBNavigationState>(static_cast<ZBBrowserHost *>(this), m_history.get(),
                                                       StartPagePath, ErrorPagePath))
    , m_model(new ZBDownloadTreeModel(*m_capture, this))
{
    m_capture->setResourceProbe(m_probe.get());
    m_downloads->setDownloadsFolder(settings->option_pathForDownloads);

    QTreeView *tree = layout->downloadsTable();
    tree->setModel(m_model);
    tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    // Without it the view measures every row above the one it draws on each
    // change: a page of thousands of resources would stall the window.
    tree->setUniformRowHeights(true);
    tree->setContextMenuPolicy(Qt::CustomContextMenu);
    tree->header()->setStretchLastSection(false);
    tree->header()->setSectionResizeMode(ZBDownloadTreeModel::TitleColumn, QHeaderView::Stretch);
    connect(m_model, &ZBDownloadTreeModel::expandRequested, tree, &QTreeView::expand);
    connect(tree, &QTreeView::clicked, this, [this](const QModelIndex &index) {
        if (index.column() == ZBDownloadTreeModel::ActionColumn)
            actionClicked(index);
    });
    connect(tree->selectionModel(), &QItemSelectionModel::selectionChanged, this, &ZBWebController::stateChanged);
    connect(tree, &QTreeView::customContextMenuRequested, this, [this, tree](const QPoint &at) {
        // Outside any row: nothing selected and no menu; on an unselected
        // row, that row alone.
        const QModelIndex index = tree->indexAt(at);
        if (!index.isValid())
        {
            tree->clearSelection();
            return;
        }
        if (!tree->selectionModel()->isRowSelected(index.row(), index.parent()))
            tree->selectionModel()->select(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        const QList<ZBDownloadItem *> selection = selectedItems();
        QMenu menu;
        const auto add = [&menu, this](const char *key, void (ZBWebController::*slot)(), bool enabled) {
            menu.addAction(text(key), this, slot)->setEnabled(enabled);
        };
        add("menuDownloadsCopyUrl", &ZBWebController::copySelectedURLs, !selection.isEmpty());
        add("menuDownloadsDownloadSelected", &ZBWebController::downloadSelected,
            ZBCaptureTree::availableForDownloadItemExistsInSelection(selection));
        add("menuDownloadsClearDownloadsList", &ZBWebController::clearDownloadList, !m_capture->pages().isEmpty());
        add("menuDownloadsSelectAll", &ZBWebController::selectAll, !m_capture->pages().isEmpty());
        add("menuDownloadsRemoveSelected", &ZBWebController::removeSelected,
            ZBCaptureTree::rootDownloadItemExistInSelection(selection));
        add("menuDownloadShowFile", &ZBWebController::showDownloadedItemInFileManager,
            !selection.isEmpty() && selection.first()->saved());
        menu.exec(tree->viewport()->mapToGlobal(at));
    });

    // What the download commands may do follows what was captured.
    connect(m_capture.get(), &ZBCaptureTree::childrenAppended, this, &ZBWebController::stateChanged);
    connect(m_capture.get(), &ZBCaptureTree::pagesCleared, this, &ZBWebController::stateChanged);

    QComboBox *filter = layout->filterBox();
    filter->setCurrentIndex(m_capture->currentFilter());
    connect(filter, &QComboBox::currentIndexChanged, this, [this](int index) {
        m_capture->setCurrentFilter(index);
        Q_EMIT stateChanged();
    });

    QComboBox *address = layout->urlField();
    address->setInsertPolicy(QComboBox::NoInsert);
    connect(address->lineEdit(), &QLineEdit::returnPressed, this, [this]() {
        if (ensureStarted())
            m_navigation->cellTextDidEndEditing();
    });
    connect(address, &QComboBox::editTextChanged, this, [this]() { m_navigation->validateGoButton(); });
    connect(address, &QComboBox::activated, this, [this]() {
        if (ensureStarted())
            m_navigation->cellTextDidEndEditing();
    });
    connect(layout->goButton(), &QPushButton::clicked, this, [this]() {
        if (ensureStarted())
            m_navigation->buttonGoClick();
    });
    connect(layout->backButton(), &QToolButton::clicked, this, &ZBWebController::buttonBackClick);
    connect(led, &ZBLed::backFromPreviewRequested, this, [this]() { m_navigation->buttonLEDBackClick(); });
    connect(led, &ZBLed::cancelDownloadsRequested, m_downloads.get(), &ZBDownloadManager::cancelAll);

    connect(m_downloads.get(), &ZBDownloadManager::downloadingInfoChanged, this, &ZBWebController::downloadsChanged);
    connect(m_downloads.get(), &ZBDownloadManager::taskCompleted, this,
            [this](const QString &description, const QString &clickContext) {
                m_notifications->post(QLatin1String(ZBNotificationCenter::TaskCompleted), description, clickContext);
            });
    connect(m_downloads.get(), &ZBDownloadManager::libraryChanged, this, &ZBWebController::libraryChanged);
    m_navigation->validateGoButton();
    recentURLsChanged();
    downloadsChanged();
}

ZBWebController::~ZBWebController()
{
    // The model reads the tree, and the downloads write into it.
    m_layout->downloadsTable()->setModel(nullptr);
    m_downloads.reset();
}

void ZBWebController::setHistoryMenu(QMenu *menu)
{
    m_historyMenu = menu;
    if (m_history->isOpen())
        historyMenuChanged();
}

void ZBWebController::openHistory()
{
    // A URL handed over before the window was painted may have opened it.
    if (!m_history->isOpen())
    {
        const ZBHistory::OpenResult opened = m_history->openStore();
        if (!opened.message.isEmpty())
            qWarning().noquote() << opened.message;
    }
    historyMenuChanged();
}

bool ZBWebController::ensureStarted()
{
    if (m_view)
        return true;
    ZBMediaModule *module = ZBMediaModuleLoader::module();
    if (!module)
    {
        QMessageBox::warning(QApplication::activeWindow(), ZBLocalizer::localizedStringForKey(QStringLiteral("alertMediaModuleMissingTitle")),
                             ZBLocalizer::localizedStringForKey(QStringLiteral("alertMediaModuleMissingMessage"))
                                 .arg(ZBMediaModuleLoader::loadError()));
        return false;
    }
    m_view = module->createWebPane();
    m_layout->setWebView(m_view);
    m_probe->setCookieJar(m_view->cookieJar());
    m_downloads->setCookieJar(m_view->cookieJar());
    connectView();
    m_navigation->start();
    return true;
}

void ZBWebController::connectView()
{
    connect(m_view, &ZBWebPane::resourceRequested, this, &ZBWebController::resourceRequested);
    connect(m_view, &ZBWebPane::mainFrameLoadStarted, this, [this](const QUrl &url) {
        m_navigation->webViewDidStartProvisionalLoad(true, navigationURL(url));
        m_capture->setShouldBypassReceiveURLs(m_navigation->shouldBypassReceiveURLs());
    });
    connect(m_view, &ZBWebPane::mainFrameCommitted, this, [this](const QUrl &url) {
        const QString page = m_navigation->webViewDidCommitLoad(true, navigationURL(url));
        m_capture->setShouldBypassReceiveURLs(false);
        if (!page.isEmpty())
            m_capture->commitPage(page);
        Q_EMIT stateChanged();
    });
    connect(m_view, &ZBWebPane::titleReceived, this, [this](const QString &title, const QUrl &url) {
        const ZBNavigationState::PageTitleChange change =
            m_navigation->webViewDidReceiveTitle(true, title, navigationURL(url));
        if (!change.valid)
            return;
        if (ZBDownloadItem *root = m_capture->receivePageTitle(title))
        {
            const QModelIndex index = m_model->indexForItem(root);
            m_layout->downloadsTable()->scrollTo(index);
        }
    });
    connect(m_view, &ZBWebPane::mainFrameLoadFinished, this,
            [this]() { m_navigation->webViewDidFinishLoad(true); });
    connect(m_view, &ZBWebPane::mainFrameLoadFailed, this,
            [this](const QUrl &, ZBWebPane::FailureKind kind, int code, const QString &description) {
                m_failureKind = kind;
                m_failureCode = code;
                m_failureText = description;
                m_navigation->webViewDidFailProvisionalLoad(true);
            });
    connect(m_view, &ZBWebPane::busyChanged, this, &ZBWebController::setSpinnerRunning);
    connect(m_view, &ZBWebPane::backRequested, this, &ZBWebController::buttonBackClick);
    connect(m_view, &ZBWebPane::reloadRequested, this, &ZBWebController::reloadCurrentPage);
    connect(m_view, &ZBWebPane::newWindowLoaded, this, [this](const QUrl &url) {
        setAddressText(url.toString());
    });
}

void ZBWebController::resourceRequested(const ZBWebRequest &request)
{
    // No engine event says when a resource ends; what a page fetches after
    // it has finished loading (players, lazy images) is not counted, so the
    // status returns to ready and stays there.
    if (m_view && m_view->isBusy())
    {
        m_navigation->identifierForInitialRequest();
        m_navigation->resourceWillSendRequest();
    }
    // The page's own address was captured when it committed.
    if (request.resourceType == ZBWebRequest::MainFrame)
        return;
    m_capture->receiveRequest(request.url.toString());
}

QString ZBWebController::navigationURL(const QUrl &url) const
{
    if (ZBWebPane::isStartPage(url))
        return m_navigation->startPageURL();
    if (ZBWebPane::isErrorPage(url))
        return m_navigation->errorPageURL();
    return url.toString();
}

QString ZBWebController::addressText() const
{
    return m_layout->urlField()->currentText();
}

void ZBWebController::setAddressText(const QString &text)
{
    m_layout->urlField()->setEditText(text);
}

void ZBWebController::setGoEnabled(bool enabled)
{
    m_layout->goButton()->setEnabled(enabled);
}

void ZBWebController::setBackEnabled(bool enabled)
{
    m_layout->backButton()->setEnabled(enabled);
    if (m_view)
        m_view->setBackEnabled(enabled);
}

void ZBWebController::recentURLsChanged()
{
    QComboBox *address = m_layout->urlField();
    const QString typed = address->currentText();
    const QSignalBlocker blocker(address);
    address->clear();
    address->addItems(m_navigation->recentURLs());
    address->setEditText(typed);
}

void ZBWebController::historyMenuChanged()
{
    if (!m_historyMenu)
        return;
    // The first two items (Clear History and its separator) stay.
    const QList<QAction *> actions = m_historyMenu->actions();
    for (int i = 2; i < actions.size(); ++i)
        m_historyMenu->removeAction(actions.at(i));
    for (const ZBHistoryEntity &page : m_navigation->historyMenuItems())
    {
        QAction *action = m_historyMenu->addAction(page.PageTitle.isEmpty() ? page.HistoryItem : page.PageTitle);
        const QString url = page.HistoryItem;
        connect(action, &QAction::triggered, this, [this, url]() {
            if (ensureStarted())
                m_navigation->gotoURLfromHistoryMenu(url);
        });
    }
    Q_EMIT stateChanged();
}

void ZBWebController::load(const QUrl &url)
{
    if (!ensureStarted())
        return;
    const QString address = url.toString();
    if (address == m_navigation->startPageURL() || url.path() == StartPagePath)
        m_view->loadStartPage(addressText());
    else if (url.path() == ErrorPagePath)
        m_view->loadErrorPage(m_navigation->currentURL(), m_failureKind, m_failureCode, m_failureText);
    else
        m_view->load(url);
}

void ZBWebController::reload()
{
    if (m_view)
        m_view->reload();
}

QString ZBWebController::mainFrameURL() const
{
    return m_view ? navigationURL(m_view->url()) : QString();
}

void ZBWebController::setPageStatus(const QString &text)
{
    m_led->setPageStatus(text);
}

void ZBWebController::setSpinnerRunning(bool running)
{
    m_layout->spinner()->setVisible(running);
}

void ZBWebController::setLedBackVisible(bool visible)
{
    m_led->setBackFromPreviewVisible(visible);
}

int ZBWebController::contentMode() const
{
    return m_hooks.contentMode();
}

void ZBWebController::showBrowsing()
{
    m_hooks.showBrowsing();
}

void ZBWebController::reloadDownloadTree()
{
    m_model->flushPendingRows();
}

void ZBWebController::focusDownloadTree()
{
    m_layout->downloadsTable()->setFocus();
}

bool ZBWebController::hasPreviewItem() const
{
    return m_capture->previewItem() != nullptr;
}

QString ZBWebController::previewItemTitle() const
{
    return m_capture->previewItem() ? m_capture->previewItem()->resourceTitle() : QString();
}

void ZBWebController::expandPreviewItem()
{
    if (ZBDownloadItem *item = m_capture->previewItem())
        m_layout->downloadsTable()->expand(m_model->indexForItem(item));
}

void ZBWebController::clearPreviewItem()
{
    m_capture->setPreviewItem(nullptr);
    m_capture->setPreviewing(false);
    if (m_hooks.contentMode() == 3)
        m_hooks.setContentMode(0);
}

void ZBWebController::validatePreviewButton()
{
    Q_EMIT stateChanged();
}

void ZBWebController::handleGetURLEvent(const QString &url)
{
    if (ensureStarted())
        m_navigation->handleGetURLEvent(url);
}

void ZBWebController::buttonBackClick()
{
    if (m_view)
        m_navigation->buttonBackClick();
}

void ZBWebController::goHome()
{
    if (ensureStarted())
        m_view->loadStartPage(addressText());
}

void ZBWebController::reloadCurrentPage()
{
    if (m_view)
        m_navigation->reloadCurrentPage();
}

void ZBWebController::clearHistory()
{
    m_navigation->clearHistoryMenu();
}

QList<ZBDownloadItem *> ZBWebController::selectedItems() const
{
    return m_model->itemsAt(m_layout->downloadsTable()->selectionModel()->selectedRows());
}

void ZBWebController::downloadSelected()
{
    m_downloads->setDownloadsFolder(m_settings->option_pathForDownloads);
    m_downloads->downloadSelected(selectedItems());
}

void ZBWebController::downloadAll()
{
    m_downloads->setDownloadsFolder(m_settings->option_pathForDownloads);
    m_downloads->downloadAll();
}

void ZBWebController::previewSelected()
{
    const QList<ZBDownloadItem *> selection = selectedItems();
    ZBDownloadItem *item = selection.value(0);
    if (!item || !m_capture->isPreviewAvailable(item))
        return;
    if (!ensureStarted())
        return;
    m_capture->beginPreview(item);
    m_hooks.setContentMode(3);
    m_led->setBackFromPreviewVisible(true);
    m_view->previewSWF(QUrl(ZBCaptureTree::requestUrl(item->resourceUrl())));
}

void ZBWebController::clearDownloadList()
{
    if (!m_settings->option_DontAskMeAgainClearDownloadsList)
    {
        QMessageBox box(QMessageBox::Question, text("mainWindowTitle"), text("alertClearDownloadsMessage"),
                        QMessageBox::NoButton, m_layout->downloadsTable()->window());
        box.setInformativeText(text("alertClearDownloadsInfo"));
        QPushButton *yes = box.addButton(text("yesButtonTitle"), QMessageBox::YesRole);
        box.addButton(text("noButtonTitle"), QMessageBox::NoRole);
        box.setDefaultButton(yes);
        auto *never = new QCheckBox(text("NeverAskAgainTitle"));
        box.setCheckBox(never);
        box.exec();
        m_settings->option_DontAskMeAgainClearDownloadsList = never->isChecked();
        if (box.clickedButton() != yes)
            return;
    }
    m_downloads->cancelAll();
    if (m_capture->previewItem())
        m_navigation->buttonLEDBackClick();
    m_capture->removeAllPages();
    Q_EMIT stateChanged();
}

void ZBWebController::showDownloadedItemInFileManager()
{
    const ZBDownloadItem *item = selectedItems().value(0);
    if (!item)
        return;
    if (!item->parent())
        ZBFileManager::openFolder(item->resourceDownloadDir());
    else if (item->saved())
        ZBFileManager::revealFile(item->resourceDownloadPath());
}

void ZBWebController::copySelectedURLs()
{
    QApplication::clipboard()->setText(ZBCaptureTree::copyURLText(selectedItems()));
}

bool ZBWebController::ask(const char *messageKey, const char *infoKey, bool *neverAskAgain)
{
    QMessageBox box(QMessageBox::Question, text("mainWindowTitle"), text(messageKey), QMessageBox::NoButton,
                    m_layout->downloadsTable()->window());
    box.setInformativeText(text(infoKey));
    QPushButton *yes = box.addButton(text("yesButtonTitle"), QMessageBox::YesRole);
    QPushButton *no = box.addButton(text("noButtonTitle"), QMessageBox::NoRole);
    box.setDefaultButton(yes);
    box.setEscapeButton(no);
    QCheckBox *never = nullptr;
    if (neverAskAgain)
    {
        never = new QCheckBox(text("NeverAskAgainTitle"));
        box.setCheckBox(never);
    }
    box.exec();
    // Kept whichever button was pressed.
    if (neverAskAgain)
        *neverAskAgain = never->isChecked();
    return box.clickedButton() == yes;
}

void ZBWebController::actionClicked(const QModelIndex &index)
{
    ZBDownloadItem *item = m_model->itemAt(index);
    if (!item || !index.data(ZBDownloadTreeModel::ActionEnabledRole).toBool())
        return;
    const int action = item->availableAction();
    if ((action == ZBDownloadItem::PlayAction || action == ZBDownloadItem::ShowInFinderAction) && item->parent()
        && !QFileInfo::exists(item->resourceDownloadPath()))
    {
        // The saved file is gone: offer to fetch it again.
        if (!ask("alertReDownloadMessageText", "alertReDownloadInformativeText", nullptr))
            return;
        if (m_library && !item->resourceUUID().isEmpty())
            m_library->removeItemFromLibraryByUUID(item->resourceUUID());
        if (action == ZBDownloadItem::ShowInFinderAction)
            item->setExpectedResourcesCount(0);
        item->setReceivedResourcesCount(0);
        m_downloads->resetDownloadForItem(item);
        Q_EMIT libraryChanged();
        actionClicked(m_model->indexForItem(item, ZBDownloadTreeModel::ActionColumn));
        return;
    }
    switch (action)
    {
    case ZBDownloadItem::DownloadAction:
        m_downloads->setDownloadsFolder(m_settings->option_pathForDownloads);
        m_downloads->downloadItem(item);
        break;
    case ZBDownloadItem::CancelAction:
        if (m_settings->option_DontAskMeAgainCancelDownload
            || ask("alertCancelDownloadMessageText", "alertCancelDownloadInformativeText",
                   &m_settings->option_DontAskMeAgainCancelDownload))
            m_downloads->cancelDownloadOfItem(item);
        break;
    case ZBDownloadItem::PlayAction:
        Q_EMIT playRequested(item->resourceUUID());
        break;
    case ZBDownloadItem::ShowInFinderAction:
        if (item->parent())
            ZBFileManager::revealFile(item->resourceDownloadPath());
        else
            ZBFileManager::openFolder(item->resourceDownloadDir());
        break;
    default:
        break;
    }
    Q_EMIT stateChanged();
}

void ZBWebController::selectAll()
{
    m_layout->downloadsTable()->selectAll();
}

void ZBWebController::removeSelected()
{
    const QList<ZBDownloadItem *> selection = selectedItems();
    for (auto it = selection.crbegin(); it != selection.crend(); ++it)
    {
        ZBDownloadItem *page = *it;
        if (page->parent())
            continue;
        if (ZBDownloadItem *preview = m_capture->previewItem(); preview && preview->isInSubtreeOf(page))
            m_navigation->buttonLEDBackClick();
        m_capture->removePage(page);
    }
    Q_EMIT stateChanged();
}

void ZBWebController::downloadsChanged()
{
    const int started = m_downloads->totalNumberOfDownloads();
    const int finished = m_downloads->numberOfDownloads();
    const bool running = m_downloads->downloadInProgress();
    const QString info = text("ledDownloadingFles").arg(running ? started - finished : 0);
    m_led->setDownloadInfo(info);
    m_led->setDownloadsCounter(running ? info : text("ledNoFilesForDownload"));
    m_led->setDownloadProgress(running ? finished : 0, running ? std::max(1, started) : 1);
    m_led->setDownloadsRunning(running);
    Q_EMIT stateChanged();
}

void ZBWebController::fillCommandState(ZBCommandState &state) const
{
    const QList<ZBDownloadItem *> selection = selectedItems();
    const QModelIndex current = m_layout->downloadsTable()->currentIndex();
    state.selectedDownloadRow = selection.isEmpty() ? -1 : std::max(0, current.row());
    state.downloadRowCount = int(m_capture->pages().size());
    int downloadable = 0;
    for (const ZBDownloadItem *page : m_capture->pages())
        downloadable += page->numberOfChildrenWithFilter(m_capture->currentFilter());
    state.downloadableUrlCount = downloadable;
    state.downloadSelectionHasDownloadable = ZBCaptureTree::availableForDownloadItemExistsInSelection(selection);
    state.downloadSelectionHasRoot = ZBCaptureTree::rootDownloadItemExistInSelection(selection);
    state.selectedDownloadSaved = !selection.isEmpty() && selection.first()->saved();
    state.selectedDownloadType = selection.isEmpty() ? QString() : selection.first()->resourceType();
    state.browserOnStartPage = !m_view || ZBWebPane::isStartPage(m_view->url());
}
