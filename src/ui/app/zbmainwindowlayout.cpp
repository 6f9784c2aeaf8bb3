#include "ui/app/zbmainwindowlayout.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QStyle>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include "app/zbcontentlayout.h"
#include "localization/zblocalizer.h"
#include "ui/playback/zbplayerpanel.h"
#include "ui/widgets/zbglyphicon.h"

namespace
{
QString text(const char *key)
{
    return ZBLocalizer::localizedStringForKey(QLatin1String(key));
}
} // namespace

ZBMainWindowLayout::ZBMainWindowLayout(QMainWindow *window, ZBPlayerPanel *player, QTreeView *sourceList,
                                       QLineEdit *searchField, QWidget *trackTable, QObject *parent)
    : QObject(parent)
    , m_topBar(new QHBoxLayout)
    , m_main(new QSplitter(Qt::Horizontal))
    , m_column(new QSplitter(Qt::Vertical))
    , m_tree(sourceList)
    , m_urlPane(new QWidget)
    , m_urlField(new QComboBox)
    , m_go(new QPushButton(text("buttonGo")))
    , m_back(new QToolButton)
    , m_spinner(new QProgressBar)
    , m_filter(new QComboBox)
    , m_viewStack(new QStackedWidget)
    , m_playerPane(player)
    , m_webPlaceholder(new QLabel)
    , m_listStack(new QStackedWidget)
    , m_trackPane(trackTable)
    , m_downloads(new QTreeView)
{
    // Top bar: the transport on the left, the search field on the right;
    // the status panel goes between them.
    player->transportBar()->show();
    m_topBar->setContentsMargins(6, 4, 6, 4);
    m_topBar->addWidget(player->transportBar(), 3);
    searchField->setMaximumWidth(220);
    searchField->setMinimumWidth(140);
    m_topBar->addWidget(searchField, 1);

    // The address pane: what the browser will load.
    m_urlField->setEditable(true);
    m_urlField->setObjectName(QStringLiteral("urlField"));
    m_urlField->lineEdit()->setPlaceholderText(text("urlFieldPlaceholder"));
    m_urlField->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_back->setIcon(ZBGlyphIcon::icon(ZBGlyphIcon::Back));
    m_back->setObjectName(QStringLiteral("backButton"));
    m_back->setEnabled(false);
    m_back->setAutoRaise(true);
    auto *spinner = static_cast<QProgressBar *>(m_spinner);
    spinner->setRange(0, 0);
    spinner->setMaximumSize(48, 10);
    spinner->setTextVisible(false);
    spinner->hide();
    m_filter->setObjectName(QStringLiteral("downloadsFilter"));
    m_filter->setToolTip(text("tooltipFilterBar"));
    for (const char *key : {"prefShowAll", "prefShowFlashOnly", "prefShowVideoOnly", "prefShowMediaOnly"})
        m_filter->addItem(text(key));
    auto *urlLayout = new QHBoxLayout(m_urlPane);
    urlLayout->setContentsMargins(4, 2, 4, 2);
    urlLayout->addWidget(m_back);
    urlLayout->addWidget(m_urlField);
    urlLayout->addWidget(m_spinner);
    urlLayout->addWidget(m_go);
    urlLayout->addSpacing(8);
    urlLayout->addWidget(m_filter);
    m_urlPane->setMaximumHeight(m_urlPane->sizeHint().height());

    auto *placeholder = static_cast<QLabel *>(m_webPlaceholder);
    placeholder->setObjectName(QStringLiteral("webView"));
    placeholder->setAlignment(Qt::AlignCenter);
    placeholder->setText(text("ledNoFilesForDownload"));
    m_viewStack->addWidget(m_playerPane);
    m_viewStack->addWidget(m_webPlaceholder);

    m_downloads->setObjectName(QStringLiteral("downloadsTable"));
    m_downloads->setRootIsDecorated(true);
    m_downloads->setAlternatingRowColors(true);
    m_listStack->addWidget(m_trackPane);
    m_listStack->addWidget(m_downloads);

    m_column->setObjectName(QStringLiteral("ColumnSplitter"));
    m_column->setChildrenCollapsible(false);
    m_column->addWidget(m_urlPane);
    m_column->addWidget(m_viewStack);
    m_column->addWidget(m_listStack);
    m_column->setStretchFactor(0, 0);
    m_column->setStretchFactor(1, 3);
    m_column->setStretchFactor(2, 2);

    m_main->setObjectName(QStringLiteral("MainSplitter"));
    m_main->addWidget(sourceList);
    m_main->addWidget(m_column);
    m_main->setStretchFactor(0, 0);
    m_main->setStretchFactor(1, 1);
    m_main->setSizes({200, 824});

    // Bottom bar: the panes' show/hide buttons, then the modes.
    m_treeButton = barButton(QStringLiteral("☰"), QStringLiteral("tooltipCollapseTree"));
    m_listButton = barButton(QStringLiteral("▤"), QStringLiteral("tooltipCollapsePlaylist"));
    m_urlButton = barButton(QStringLiteral("URL"), QStringLiteral("tooltipCollapseURL"));
    m_switchMode = barButton(QStringLiteral("⇄"), QString());
    // Fonts rarely carry a character for these two.
    m_detach = barButton(QString(), QStringLiteral("tooltipButtonDetach"));
    m_detach->setIcon(ZBGlyphIcon::icon(ZBGlyphIcon::Detach));
    m_fullscreen = barButton(QString(), QStringLiteral("tooltipButtonFullscreen"));
    m_fullscreen->setIcon(ZBGlyphIcon::icon(ZBGlyphIcon::Fullscreen));
    m_hud = barButton(QStringLiteral("HUD"), QStringLiteral("tooltipButtonHUD"));
    m_onTop = barButton(QStringLiteral("⤒"), QStringLiteral("tooltipButtonOnTop"));
    for (QToolButton *button : {m_treeButton, m_listButton, m_urlButton, m_detach, m_hud, m_onTop})
        button->setCheckable(true);
    m_switchMode->setObjectName(QStringLiteral("switchModeButton"));
    m_detach->setObjectName(QStringLiteral("detachButton"));
    m_fullscreen->setObjectName(QStringLiteral("fullscreenButton"));
    m_hud->setObjectName(QStringLiteral("hudButton"));
    m_onTop->setObjectName(QStringLiteral("onTopButton"));
    auto *bottomBar = new QHBoxLayout;
    bottomBar->setContentsMargins(6, 2, 6, 4);
    for (QToolButton *button : {m_treeButton, m_urlButton, m_listButton})
        bottomBar->addWidget(button);
    bottomBar->addSpacing(12);
    bottomBar->addWidget(m_switchMode);
    bottomBar->addStretch();
    for (QToolButton *button : {m_detach, m_fullscreen, m_hud, m_onTop})
        bottomBar->addWidget(button);

    connect(m_treeButton, &QToolButton::clicked, this, [this]() { toggle(TreePane); });
    connect(m_urlButton, &QToolButton::clicked, this, [this]() { toggle(UrlPane); });
    connect(m_listButton, &QToolButton::clicked, this, [this]() { toggle(ListPane); });

    auto *central = new QWidget;
    auto *layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(m_topBar);
    layout->addWidget(m_main, 1);
    layout->addLayout(bottomBar);
    window->setCentralWidget(central);
    for (Pane pane : {TreePane, UrlPane, ListPane})
        paneButton(pane)->setChecked(true);
}

QToolButton *ZBMainWindowLayout::barButton(const QString &text, const QString &toolTipKey)
{
    auto *button = new QToolButton;
    button->setText(text);
    button->setAutoRaise(true);
    if (!toolTipKey.isEmpty())
        button->setToolTip(ZBLocalizer::localizedStringForKey(toolTipKey));
    return button;
}

QWidget *ZBMainWindowLayout::paneWidget(Pane pane) const
{
    switch (pane)
    {
    case TreePane:
        return m_tree;
    case UrlPane:
        return m_urlPane;
    case ListPane:
        return m_listStack;
    }
    return nullptr;
}

QToolButton *ZBMainWindowLayout::paneButton(Pane pane) const
{
    switch (pane)
    {
    case TreePane:
        return m_treeButton;
    case UrlPane:
        return m_urlButton;
    case ListPane:
        return m_listButton;
    }
    return nullptr;
}

bool ZBMainWindowLayout::isCollapsed(Pane pane) const
{
    return paneWidget(pane)->isHidden();
}

void ZBMainWindowLayout::setCollapsed(Pane pane, bool collapsed)
{
    paneButton(pane)->setChecked(!collapsed);
    if (isCollapsed(pane) == collapsed)
        return;
    paneWidget(pane)->setVisible(!collapsed);
    Q_EMIT paneToggled(pane, collapsed);
}

void ZBMainWindowLayout::applyContentLayout(const ZBContentLayout &layout)
{
    m_viewStack->setCurrentIndex(layout.showsBrowser ? 1 : 0);
    m_listStack->setCurrentIndex(layout.showsBrowser ? 1 : 0);
    if (layout.collapseUrlPane)
        setCollapsed(UrlPane, true);
    if (layout.expandUrlPane)
        setCollapsed(UrlPane, false);
    m_listButton->setToolTip(ZBLocalizer::localizedStringForKey(layout.listButtonToolTipKey));
    for (QToolButton *button : {m_detach, m_fullscreen, m_hud})
        button->setEnabled(layout.playerModeButtonsEnabled);
}

void ZBMainWindowLayout::setWebView(QWidget *view)
{
    const bool showing = m_viewStack->currentWidget() == m_webPlaceholder;
    m_viewStack->removeWidget(m_webPlaceholder);
    m_webPlaceholder->deleteLater();
    m_webPlaceholder = view;
    m_viewStack->insertWidget(1, view);
    if (showing)
        m_viewStack->setCurrentWidget(view);
}

QWidget *ZBMainWindowLayout::playerPane() const
{
    return m_viewStack;
}

bool ZBMainWindowLayout::showsBrowser() const
{
    return m_viewStack->currentIndex() == 1;
}
