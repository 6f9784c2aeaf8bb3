#include <QTest>

#include "localization/zblocalizer.h"
#include "support/testsupport.h"
#include "web/zbbrowserhost.h"
#include "web/zbhistory.h"
#include "web/zbnavigationstate.h"

// Records what the rules ask of the window, one line per call that changes it.
class RecordingHost : public ZBBrowserHost
{
public:
    QString address;
    int mode = 1;
    bool preview = false;
    QString frameURL;
    QStringList log;
    QStringList loads;
    QString status;
    bool back = false;
    bool go = false;

    QString addressText() const override { return address; }
    void setAddressText(const QString &text) override { address = text; }
    void setGoEnabled(bool enabled) override { go = enabled; }
    void setBackEnabled(bool enabled) override { back = enabled; }
    void recentURLsChanged() override {}
    void historyMenuChanged() override {}
    void load(const QUrl &url) override { loads << url.toString(QUrl::FullyEncoded); }
    void reload() override { log << "reload"; }
    QString mainFrameURL() const override { return frameURL; }
    void setPageStatus(const QString &text) override { status = text; }
    void setSpinnerRunning(bool running) override { log << (running ? "spin" : "stop"); }
    void setLedBackVisible(bool) override {}
    int contentMode() const override { return mode; }
    void showBrowsing() override { mode = 0; }
    void reloadDownloadTree() override {}
    void focusDownloadTree() override { log << "focus"; }
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
    // "preview" (a resource is being previewed), "type:<text>" then Return.
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
            else if (step.startsWith("type:"))
            {
                m_host.address = step.mid(5);
                m_nav->cellTextDidEndEditing();
            }
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
        QTest::addColumn<QString>("status");
        QTest::newRow("bare host") << "example.com" << "http://example.com" << "Connecting to example.com…";
        QTest::newRow("blanks and line ends around") << " \texample.com/a\n" << "http://example.com/a"
                                                     << "Connecting to example.com…";
        QTest::newRow("blank only") << "   " << "" << "";
        QTest::newRow("scheme kept") << "https://x.org/p?q=1" << "https://x.org/p?q=1" << "Connecting to x.org…";
        QTest::newRow("host and port") << "localhost:8080/x" << "http://localhost:8080/x" << "Connecting to localhost…";
        QTest::newRow("blank in the path") << "example.com/my file" << "http://example.com/my%20file"
                                           << "Connecting to example.com…";
        QTest::newRow("non-ASCII host") << "bücher.de/ä" << "http://xn--bcher-kva.de/%C3%A4" << "Connecting to bücher.de…";
        QTest::newRow("no host, no status") << "about:blank" << "about:blank" << "";
    }
    void typedAddress()
    {
        QFETCH(QString, typed);
        QFETCH(QString, loaded);
        m_host.address = typed;
        m_nav->cellTextDidEndEditing();
        QCOMPARE(m_host.loads, loaded.isEmpty() ? QStringList() : QStringList{loaded});
        QTEST(m_host.status, "status");
        QCOMPARE(m_host.go, !loaded.isEmpty());
        const QList<ZBHistoryEntity> stored = m_history->getAllHandWritedURLs();
        QCOMPARE(stored.size(), loaded.isEmpty() ? 0 : 1);
        if (!loaded.isEmpty())
            QCOMPARE(m_nav->recentURLs(), QStringList{typed.trimmed()});
    }

    void returnOnTheShownAddress_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("loads");
        QTest::newRow("browsing: nothing") << 0 << false;
        QTest::newRow("preview: nothing") << 3 << false;
        QTest::newRow("library: goes to the page") << 1 << true;
    }
    void returnOnTheShownAddress()
    {
        QFETCH(int, mode);
        play("start:http://a.com/");
        m_host.mode = mode;
        play("type:http://a.com/");
        QTEST(!m_host.loads.isEmpty(), "loads");
    }

    void backStack_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QStringList>("stack");
        QTest::addColumn<QStringList>("lastLoads");
        QTest::addColumn<bool>("backEnabled");
        QTest::newRow("same URL twice is pushed once")
            << "start:http://a.com start:HTTP://A.COM start:about:blank" << QStringList{"http://a.com"}
            << QStringList{} << true;
        QTest::newRow("back to one entry disables Back")
            << "start:http://a.com start:http://b.com back" << QStringList{"http://a.com"}
            << QStringList{"http://a.com"} << false;
        QTest::newRow("the load Back started keeps it disabled")
            << "start:http://a.com start:http://b.com back start:http://a.com" << QStringList{"http://a.com"}
            << QStringList{} << false;
        QTest::newRow("a later load enables it again")
            << "start:http://a.com start:http://b.com back start:http://a.com start:http://c.com"
            << QStringList{"http://a.com", "http://c.com"} << QStringList{} << true;
        QTest::newRow("leaving a preview drops one entry and asks twice")
            << "start:http://a.com start:http://b.com start:http://c.com preview back"
            << QStringList{"http://a.com", "http://b.com"} << QStringList{"http://b.com", "http://b.com"} << true;
    }
    void backStack()
    {
        QFETCH(QString, steps);
        play(steps);
        QTEST(m_nav->URLHistory(), "stack");
        QTEST(m_host.loads, "lastLoads");
        QTEST(m_host.back, "backEnabled");
        QVERIFY(!m_host.preview);
    }

    void resourceStatus_data()
    {
        QTest::addColumn<QString>("events");
        QTest::addColumn<QString>("status");
        QTest::newRow("in progress") << "req req done" << "Loading resources: 1 of 2";
        QTest::newRow("all done") << "req req done done" << "Ready";
        QTest::newRow("a failure keeps the progress") << "req req done fail" << "Loading resources: 1 of 2";
        QTest::newRow("the page's finish ends it") << "req fail finish" << "Ready";
        QTest::newRow("a new page starts counting afresh") << "req req start req" << "Loading resources: 0 of 1";
    }
    void resourceStatus()
    {
        QFETCH(QString, events);
        for (const QString &e : events.split(' '))
        {
            if (e == "req")
            {
                m_nav->identifierForInitialRequest();
                m_nav->resourceWillSendRequest();
            }
            else if (e == "done")
                m_nav->resourceDidFinishLoading();
            else if (e == "fail")
                m_nav->resourceDidFailLoading();
            else if (e == "finish")
                m_nav->webViewDidFinishLoad(true);
            else
                m_nav->webViewDidStartProvisionalLoad(true, "http://n.com");
        }
        QTEST(m_host.status, "status");
    }

    void failedLoadShowsTheErrorPage()
    {
        play("type:nowhere.invalid start:http://nowhere.invalid/");
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
        QVERIFY(!m_host.log.contains("reload"));
    }

    void typedPrefixTakesTheLoadedURL()
    {
        m_history->addHistoryItem("http://site.org/videos", false);
        m_host.address = "http://site.org";
        m_nav->buttonGoClick();
        QCOMPARE(m_nav->recentURLs(), QStringList{"http://site.org/videos"});
        m_nav->webViewDidStartProvisionalLoad(true, "http://site.org/");
        QCOMPARE(m_nav->webViewDidCommitLoad(true, "http://site.org/"), "http://site.org/");
        QVERIFY(!m_nav->shouldBypassReceiveURLs());
        const auto change = m_nav->webViewDidReceiveTitle(true, "Site", "http://site.org/");
        QVERIFY(change.valid);
        QCOMPARE(change.previousTitle, "http://site.org/");
        QCOMPARE(m_nav->webFrameTitle(), "Site");
        QCOMPARE(m_nav->recentURLs(), QStringList{"http://site.org/"});
        QCOMPARE(m_history->historyMenuItems().value(0).PageTitle, "Site");
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
        // Only addresses typed or handed over are remembered, never as typed.
        QCOMPARE(m_history->getAllHistoryItems().size(), int(url.startsWith("norvikplayer:")));
        QVERIFY(m_history->getAllHandWritedURLs().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestZBNavigationState)
#include "tst_zbnavigationstate.moc"
