#pragma once

#include <QObject>

class QComboBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QMainWindow;
class QPushButton;
class QSplitter;
class QStackedWidget;
class QToolButton;
class QTreeView;
class QWidget;
class ZBPlayerPanel;
struct ZBContentLayout;

// The main window's panes and buttons: the top bar (transport, status panel,
// search), the source tree beside a column of three panes — the address
// (URL) pane, the player pane, the list pane — and the bottom bar with the
// show/hide buttons of the panes and the mode buttons. It only arranges;
// what the buttons do is the window controller's.
class ZBMainWindowLayout : public QObject
{
    Q_OBJECT

public:
    enum Pane
    {
        TreePane,
        UrlPane,
        ListPane
    };

    ZBMainWindowLayout(QMainWindow *window, ZBPlayerPanel *player, QTreeView *sourceList, QLineEdit *searchField,
                       QWidget *trackTable, QObject *parent = nullptr);

    // Where the status panel goes, between the transport and the search.
    QHBoxLayout *topBar() const { return m_topBar; }
    QSplitter *columnSplitter() const { return m_column; }
    // The player's place (or the web page's, when browsing).
    QWidget *playerPane() const;
    QComboBox *urlField() const { return m_urlField; }
    QPushButton *goButton() const { return m_go; }
    QToolButton *backButton() const { return m_back; }
    // Turns while a page loads.
    QWidget *spinner() const { return m_spinner; }
    // All, Flash, Video, Media: what the download tree shows.
    QComboBox *filterBox() const { return m_filter; }
    // The web page takes the placeholder's place once the browser exists.
    void setWebView(QWidget *view);
    QTreeView *downloadsTable() const { return m_downloads; }
    QToolButton *paneButton(Pane pane) const;
    QToolButton *switchModeButton() const { return m_switchMode; }
    QToolButton *detachButton() const { return m_detach; }
    QToolButton *fullscreenButton() const { return m_fullscreen; }
    QToolButton *hudButton() const { return m_hud; }
    QToolButton *onTopButton() const { return m_onTop; }

    bool isCollapsed(Pane pane) const;
    void setCollapsed(Pane pane, bool collapsed);
    void toggle(Pane pane) { setCollapsed(pane, !isCollapsed(pane)); }

    // Shows the player or the web page, the tracks or the downloads.
    void applyContentLayout(const ZBContentLayout &layout);
    bool showsBrowser() const;

Q_SIGNALS:
    void paneToggled(Pane pane, bool collapsed);

private:
    QWidget *paneWidget(Pane pane) const;
    QToolButton *barButton(const QString &text, const QString &toolTipKey);

    QHBoxLayout *m_topBar;
    QSplitter *m_main;
    QSplitter *m_column;
    QWidget *m_tree;
    QWidget *m_urlPane;
    QComboBox *m_urlField;
    QPushButton *m_go;
    QToolButton *m_back;
    QWidget *m_spinner;
    QComboBox *m_filter;
    QStackedWidget *m_viewStack;
    QWidget *m_playerPane;
    QWidget *m_webPlaceholder;
    QStackedWidget *m_listStack;
    QWidget *m_trackPane;
    QTreeView *m_downloads;
    QToolButton *m_treeButton;
    QToolButton *m_urlButton;
    QToolButton *m_listButton;
    QToolButton *m_switchMode;
    QToolButton *m_detach;
    QToolButton *m_fullscreen;
    QToolButton *m_hud;
    QToolButton *m_onTop;
};
