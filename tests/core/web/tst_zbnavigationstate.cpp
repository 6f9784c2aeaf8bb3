#include <QTest>

#include "localization/zblocalizer.h"
#include "support/testsupport.h"
#include "web/zbbrowserhost.h"
#include "web/zbhistory.h"
#include "web/zbnavigationstate.h"

// Keeps what the rules set in the window; the calls that only repaint are ignored.
class RecordingHost : public ZBBrowserHost
{
public:
    QString address, frameURL, status;
    QStringList loads;
    int mode = 1, reloads = 0;
    bool preview = false, back = false, go = false;

    QString addressText() const override { return address; }
    void setAddressText(const QString &text) override { address = text; }
    void setGoEnabled(bool enabled) override { go = enabled; }
    void setBackEnabled(bool enabled) override { back = enabled; }
    void recentURLsChanged() override {}
    void historyMenuChanged() override {}
    void load(const QUrl &url) override { loads << url.toString(QUrl::FullyEncoded); }
    void reload() override { ++reloads; }
    QString mainFrameURL() const override { return frameURL; }
    void setPageStatus(const QString &text) override { status = text; }
    void setSpinnerRunning(bool) override {}
    void setLedBackVisible(bool) override {}
    int contentMode() const override { return mode; }
    void showBrowsing() override { mode = 0; }
    void reloadDownloadTree() override {}
    void focusDownloadTree() override {}
    bool hasPreviewItem() const override { return preview; }
    QString previewItemTitle() const override { return "clip.flv"; }
    void expandPreviewItem() override {}
    void clearPreviewItem() override { preview = false; }
    void validatePreviewButton() override {}
};

class TestZBNavigationState : public QObject
{
    Q_OBJECT

    nvktest::DataDir m_dir;
    RecordingHost m_host;
    std::unique_ptr<ZBHistory> m_history;
    std::unique_ptr<ZBNavigationState> m_nav;

    // Space-separated steps: "start:<url>" a main-frame load start, "back",
    // "preview" (a resource is being previewed), "mode:<content mode>",
    // "return" in the address field, and the page's resources:
    // "req" (a request sent), "done", "fail", "finish" (the page's own end).
    void play(const QString &steps)
    {
        for (const QString &step : steps.split(' ', Qt::SkipEmptyParts))
        {
            m_host.loads.clear();
            if (step.startsWith("start:"))
                m_nav->webViewDidStartProvisionalLoad(true, step.mid(6));
            else if (step == "back")
                m_nav->buttonBackClick();
            else if (step == "preview")
                m_host.preview = true;
            else if (step.startsWith("mode:"))
                m_host.mode = step.mid(5).toInt();
            else if (step == "return")
                m_nav->cellTextDidEndEditing();
            else if (step == "req" && m_nav->identifierForInitialRequest() >= 0)
                m_nav->resourceWillSendRequest();
            else if (step == "done")
                m_nav->resourceDidFinishLoading();
            else if (step == "fail")
                m_nav->resourceDidFailLoading();
            else if (step == "finish")
                m_nav->webViewDidFinishLoad(true);
        }
    }

private Q_SLOTS:
    void init()
    {
        ZBLocalizer::setLanguage("English");
        m_host = RecordingHost();
        m_history = std::make_unique<ZBHistory>(m_dir.path());
        m_history->clearHistory();
        m_nav = std::make_unique<ZBNavigationState>(&m_host, m_history.get(), "/app/default.html", "/app/404 page.html");
    }

    void typedAddress_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("loaded");
        QTest::addColumn<QString>("host");
        QTest::newRow("bare host") << "example.com" << "http://example.com" << "example.com";
        QTest::newRow("blanks and line ends around") << " \texample.com/a\n" << "http://example.com/a" << "example.com";
        QTest::newRow("blank only") << "   " << "" << "";
        QTest::newRow("scheme kept") << "https://x.org/p?q=1" << "https://x.org/p?q=1" << "x.org";
        QTest::newRow("host and port") << "localhost:8080/x" << "http://localhost:8080/x" << "localhost";
        QTest::newRow("blank in the path") << "example.com/my file" << "http://example.com/my%20file" << "example.com";
        QTest::newRow("non-ASCII host") << "bücher.de/ä" << "http://xn--bcher-kva.de/%C3%A4" << "bücher.de";
        QTest::newRow("no host, no status") << "about:blank" << "about:blank" << "";
    }
    void typedAddress()
    {
        QFETCH(QString, typed);
        QFETCH(QString, loaded);
        QFETCH(QString, host);
        m_host.address = typed;
        m_nav->cellTextDidEndEditing();
        QCOMPARE(m_host.loads, loaded.isEmpty() ? QStringList() : QStringList{loaded});
        QCOMPARE(m_host.status, host.isEmpty() ? QString() : "Connecting to " + host + "…");
        QCOMPARE(m_host.go, !loaded.isEmpty());
        QCOMPARE(m_nav->recentURLs(), loaded.isEmpty() ? QStringList() : QStringList{typed.trimmed()});
        QCOMPARE(m_history->getAllHandWritedURLs().size(), m_nav->recentURLs().size());
    }

    void backStack_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QStringList>("stack");
        QTest::addColumn<QStringList>("lastLoads");
        QTest::addColumn<bool>("backEnabled");
        const QString a = "http://a", b = "http://b", c = "http://c";
        QTest::newRow("same URL twice is pushed once")
            << "start:http://a start:HTTP://A start:about:blank" << QStringList{a} << QStringList{} << true;
        QTest::newRow("back to one entry disables Back") << "start:http://a start:http://b back" << QStringList{a}
                                                         << QStringList{a} << false;
        QTest::newRow("the load Back started keeps it disabled")
            << "start:http://a start:http://b back start:http://a" << QStringList{a} << QStringList{} << false;
        QTest::newRow("a later load enables it again") << "start:http://a start:http://b back start:http://a start:http://c"
                                                       << QStringList{a, c} << QStringList{} << true;
        QTest::newRow("leaving a preview drops one entry and asks twice")
            << "start:http://a start:http://b start:http://c preview back" << QStringList{a, b} << QStringList{b, b}
            << true;
        QTest::newRow("Return on the shown page while browsing does nothing")
            << "start:http://a mode:0 return" << QStringList{a} << QStringList{} << true;
        QTest::newRow("nor while previewing") << "start:http://a mode:3 return" << QStringList{a} << QStringList{} << true;
        QTest::newRow("from the library it goes to the page")
            << "start:http://a mode:1 return" << QStringList{a} << QStringList{a} << true;
    }
    void backStack()
    {
        QFETCH(QString, steps);
        play(steps);
        QTEST(m_nav->URLHistory(), "stack");
        QTEST(m_host.loads, "lastLoads");
        QTEST(m_host.back, "backEnabled");
    }

    void resourceStatus_data()
    {
        QTest::addColumn<QString>("events");
        QTest::addColumn<QString>("status");
        QTest::newRow("in progress") << "req req done" << "Loading resources: 1 of 2";
        QTest::newRow("all done") << "req req done done" << "Ready";
        QTest::newRow("a failure keeps the progress") << "req req done fail" << "Loading resources: 1 of 2";
        QTest::newRow("the page's finish ends it") << "req fail finish" << "Ready";
        QTest::newRow("a new page starts counting afresh") << "req req start:http://n.com req" << "Loading resources: 0 of 1";
    }
    void resourceStatus()
    {
        QFETCH(QString, events);
        play(events);
        QTEST(m_host.status, "status");
    }

    void failedLoadShowsTheErrorPage()
    {
        m_host.address = "nowhere.invalid";
        m_nav->buttonGoClick();
        play("start:http://nowhere.invalid/");
        QVERIFY(m_nav->shouldBypassReceiveURLs());
        m_nav->webViewDidFailProvisionalLoad(true);
        QCOMPARE(m_host.loads, QStringList{"file://localhost/app/404%20page.html?http://nowhere.invalid/"});
        QCOMPARE(m_history->historyMenuItems().value(0).PageTitle, "Page not found");
        // The error page's own load neither enters the stack nor the field,
        // and makes no page root.
        m_nav->webViewDidStartProvisionalLoad(true, m_host.loads.first());
        QVERIFY(!m_nav->pageLoadError());
        QCOMPARE(m_nav->URLHistory(), QStringList{"http://nowhere.invalid/"});
        QCOMPARE(m_host.address, "http://nowhere.invalid/");
        QCOMPARE(m_nav->webViewDidCommitLoad(true, "file:///app/404%20page.html?http://nowhere.invalid/"), "");
        m_host.frameURL = m_nav->startPageURL();
        m_nav->reloadCurrentPage();
        QCOMPARE(m_host.reloads, 0);
    }

    void typedPrefixRefreshesTheLongerRecord()
    {
        m_history->addHistoryItem("http://site.org/videos", false);
        m_history->addHistoryItem("http://other.org", false);
        m_host.address = "http://site.org";
        m_nav->buttonGoClick();
        QCOMPARE(m_nav->recentURLs(), (QStringList{"http://site.org/videos", "http://other.org"}));
        play("start:http://site.org/");
        QCOMPARE(m_nav->webViewDidCommitLoad(true, "http://site.org/"), "http://site.org/");
        QVERIFY(!m_nav->shouldBypassReceiveURLs());
        const auto change = m_nav->webViewDidReceiveTitle(true, "Site", "http://site.org/");
        QCOMPARE(change.previousTitle + " > " + change.title, "http://site.org/ > Site");
        QCOMPARE(m_nav->recentURLs().value(0), "http://site.org/");
    }

    void openedFromOutside_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("loaded");
        QTest::newRow("scheme URL") << "norvikplayer://http%3A%2F%2Fx.com%2Fa%20b" << "http://x.com/a%20b";
        QTest::newRow("pop-up window") << "http://pop.com/" << "http://pop.com/";
        QTest::newRow("blank pop-up ignored") << "about:blank" << "";
    }
    void openedFromOutside()
    {
        QFETCH(QString, url);
        QFETCH(QString, loaded);
        if (url.startsWith("norvikplayer:"))
            m_nav->handleGetURLEvent(url);
        else
            QCOMPARE(m_nav->decidePolicyForNewWindowAction(url), !loaded.isEmpty());
        QCOMPARE(m_host.loads, loaded.isEmpty() ? QStringList() : QStringList{loaded});
        QCOMPARE(m_history->getAllHistoryItems().size(), int(url.startsWith("norvikplayer:")));
        QVERIFY(m_history->getAllHandWritedURLs().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestZBNavigationState)
#include "tst_zbnavigationstate.moc"
