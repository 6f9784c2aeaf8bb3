// What capture costs the browser.
//
// 1. Page load: a page of ordinary size (HTML, 30 images, 8 scripts, 2 style
//    sheets, 3 media files) from load() to the main frame's finish, with
//    capture on (every request into the capture tree, sizes probed, the
//    download tree shown) against the same view with capture off, runs
//    alternating. Every run loads its own addresses, so the engine's cache
//    never serves one run what the last one fetched.
// 2. A busy page whose script fetches 2,000 distinct media files: all of them
//    must reach the download tree, and the window must keep turning its event
//    loop (longest and 99th percentile gap between turns, from load() until
//    the last row and the last size are in), against the same page with
//    capture off.
//
// Runs headless: QT_QPA_PLATFORM defaults to offscreen. The site runs on a
// thread of its own so that serving never takes turns from the window.
//
// Options: --load or --busy runs one part only; --varying-row-heights leaves
// the tree view's row heights to Qt's default; --no-probe captures without
// asking servers for sizes. With NVK_BENCH_TRACE set, every turn of the event
// loop over 30 ms is told on stderr with the events that took its time (wall
// and thread CPU time).
#include <QApplication>
#include <QBuffer>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QImage>
#include <QRandomGenerator>
#include <QSplitter>
#include <QThread>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <functional>

#include "engines/flash/zbflashview.h"
#include "support/mediafactory.h"
#include "support/testsite.h"
#include "ui/web/zbbrowserview.h"
#include "ui/web/zbdownloadtreemodel.h"
#include "web/zbcapturetree.h"
#include "web/zbdownloaditem.h"
#include "web/zbresourceprobe.h"

namespace
{
// With NVK_BENCH_TRACE set, every turn of the event loop longer than this
// says which events took its time.
constexpr double TraceTurnMs = 30;

// Keeps, per turn of the event loop, the time spent per receiver class and
// event type (outermost deliveries only), for NVK_BENCH_TRACE.
class TracingApplication : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        // Other threads (the site's, the network's) deliver through here too.
        if (!tracing || QThread::currentThread() != thread())
            return QApplication::notify(receiver, event);
        if (depth > 0)
        {
            ++depth;
            const bool result = QApplication::notify(receiver, event);
            --depth;
            return result;
        }
        QByteArray key = receiver->metaObject()->className();
        key += '/';
        key += QByteArray::number(int(event->type()));
        if (event->type() == QEvent::MetaCall)
            key += " (queued call)";
        QElapsedTimer clock;
        clock.start();
        const double cpuBefore = threadCpuMs();
        ++depth;
        const bool result = QApplication::notify(receiver, event);
        --depth;
        auto &entry = turn[key];
        entry.wall += clock.nsecsElapsed() / 1e6;
        entry.cpu += threadCpuMs() - cpuBefore;
        ++entry.count;
        return result;
    }

    void reportTurn(double gapMs)
    {
        if (gapMs > TraceTurnMs)
        {
            QList<std::pair<Cost, QByteArray>> parts;
            for (auto it = turn.cbegin(); it != turn.cend(); ++it)
                parts.append({*it, it.key()});
            std::sort(parts.begin(), parts.end(), [](auto &a, auto &b) { return a.first.wall > b.first.wall; });
            std::fprintf(stderr, "turn of %.1f ms:", gapMs);
            for (qsizetype i = 0; i < qMin<qsizetype>(4, parts.size()); ++i)
                std::fprintf(stderr, " %s x%d %.1f ms (cpu %.1f);", parts.at(i).second.constData(),
                             parts.at(i).first.count, parts.at(i).first.wall, parts.at(i).first.cpu);
            std::fprintf(stderr, "\n");
        }
        turn.clear();
    }

    bool tracing = qEnvironmentVariableIsSet("NVK_BENCH_TRACE");
    int depth = 0;
    struct Cost
    {
        double wall = 0, cpu = 0;
        int count = 0;
    };
    QHash<QByteArray, Cost> turn;

private:
    static double threadCpuMs()
    {
        timespec now{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
    }
};

constexpr int LoadRuns = 15;
constexpr double LoadGoal = 1.05;
constexpr int Images = 30;
constexpr int Scripts = 8;
constexpr int StyleSheets = 2;
constexpr int BusyRequests = 2000;
constexpr int BusyRuns = 3;
constexpr double StallGoalMs = 50;

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values.at(values.size() / 2);
}

double percentile(QList<double> values, double p)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    const qsizetype at = qBound<qsizetype>(0, qsizetype(std::ceil(p * values.size())) - 1, values.size() - 1);
    return values.at(at);
}

// Runs the event loop (without spinning: the engine needs both cores) until
// `done` or the time is up.
bool waitUntil(const std::function<bool()> &done, int milliseconds = 30000)
{
    if (done())
        return true;
    QEventLoop loop;
    QTimer poll;
    poll.setInterval(5);
    QObject::connect(&poll, &QTimer::timeout, &loop, [&]() {
        if (done())
            loop.quit();
    });
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    poll.start();
    loop.exec();
    return done();
}

void settle(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

// Incompressible pixels, so the images weigh what photos of their size do.
QByteArray noisePng(int width, int height, quint32 seed)
{
    QImage image(width, height, QImage::Format_RGB32);
    QRandomGenerator random(seed);
    for (int y = 0; y < height; ++y)
    {
        auto *line = reinterpret_cast<quint32 *>(image.scanLine(y));
        for (int x = 0; x < width; ++x)
            line[x] = 0xff000000u | (random.generate() & 0xffffffu);
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

QByteArray script(int index)
{
    QByteArray text = "(function () {\n";
    for (int i = 0; i < 400; ++i)
        text += "  function f" + QByteArray::number(index) + '_' + QByteArray::number(i) +
                "(a, b) { return a.map(function (x) { return x * " + QByteArray::number(i) + " + b; }); }\n";
    text += "  window.loaded" + QByteArray::number(index) + " = true;\n})();\n";
    return text;
}

QByteArray styleSheet(int index)
{
    QByteArray text;
    for (int i = 0; i < 300; ++i)
        text += ".c" + QByteArray::number(index) + '_' + QByteArray::number(i) +
                " { margin: 2px; padding: 4px; color: #333; border: 1px solid #ccc; }\n";
    return text;
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

struct MediaFile
{
    QByteArray path;
    QByteArray contentType;
    QByteArray tag;
};

// The site both parts load from. Routes ignore the query, which makes every
// run's addresses new to the engine while the bytes stay the same.
class BenchSite
{
public:
    BenchSite()
        : site(true)
    {
        for (int i = 0; i < Images; ++i)
        {
            nvktest::TestSite::Route route;
            route.body = noisePng(120 + 8 * (i % 5), 90 + 6 * (i % 4), quint32(i + 1));
            route.contentType = "image/png";
            site.addRoute("/img/photo" + QByteArray::number(i) + ".png", route);
        }
        for (int i = 0; i < Scripts; ++i)
        {
            nvktest::TestSite::Route route;
            route.body = script(i);
            route.contentType = "application/javascript";
            site.addRoute("/js/part" + QByteArray::number(i) + ".js", route);
        }
        for (int i = 0; i < StyleSheets; ++i)
        {
            nvktest::TestSite::Route route;
            route.body = styleSheet(i);
            route.contentType = "text/css";
            site.addRoute("/css/site" + QByteArray::number(i) + ".css", route);
        }
        // Real clips where ffmpeg can make them, so the engine reads them as
        // it would any site's.
        const struct
        {
            const char *extension, *contentType, *tag;
        } media[] = {{"mp4", "video/mp4", "video"}, {"webm", "video/webm", "video"}, {"flv", "video/x-flv", "video"}};
        for (const auto &m : media)
        {
            nvktest::TestSite::Route route;
            route.contentType = m.contentType;
            if (nvktest::MediaFactory::isAvailable())
            {
                nvktest::MediaFactory::Clip clip;
                clip.extension = QString::fromLatin1(m.extension);
                clip.seconds = 4;
                clip.size = QSize(320, 240);
                route.body = fileBytes(nvktest::MediaFactory::clip(clip));
            }
            if (route.body.isEmpty())
                route.generatedSize = 256 * 1024;
            const QByteArray path = QByteArray("/media/clip.") + m.extension;
            site.addRoute(path, route);
            mediaFiles.append({path, m.contentType, m.tag});
        }
        nvktest::TestSite::Route busyMedia;
        busyMedia.generatedSize = 4096;
        busyMedia.contentType = "video/mp4";
        for (int i = 0; i < BusyRequests; ++i)
            site.addRoute("/busy/clip" + QByteArray::number(i) + ".mp4", busyMedia);
    }

    // An ordinary page, its subresources carrying `run` in their query.
    QUrl page(int run)
    {
        const QByteArray query = "?run=" + QByteArray::number(run);
        QByteArray html = "<!DOCTYPE html><html><head><meta charset='utf-8'><title>Bench page " +
                          QByteArray::number(run) + "</title>\n";
        for (int i = 0; i < StyleSheets; ++i)
            html += "<link rel='stylesheet' href='/css/site" + QByteArray::number(i) + ".css" + query + "'>\n";
        for (int i = 0; i < Scripts / 2; ++i)
            html += "<script src='/js/part" + QByteArray::number(i) + ".js" + query + "'></script>\n";
        html += "</head><body><h1>Bench page</h1>\n";
        for (const MediaFile &m : std::as_const(mediaFiles))
            html += '<' + m.tag + " controls preload='metadata' width='320' height='240' src='" + m.path + query +
                    "'></" + m.tag + ">\n";
        for (int i = 0; i < Images; ++i)
        {
            html += "<p class='c0_" + QByteArray::number(i) + "'>";
            for (int w = 0; w < 40; ++w)
                html += "Lorem ipsum dolor sit amet, consectetur adipiscing elit. ";
            html += "</p>\n<img alt='' width='120' height='90' src='/img/photo" + QByteArray::number(i) + ".png" +
                    query + "'>\n";
        }
        for (int i = Scripts / 2; i < Scripts; ++i)
            html += "<script src='/js/part" + QByteArray::number(i) + ".js" + query + "'></script>\n";
        html += "</body></html>\n";
        pageBytes = html.size();
        const QByteArray path = "/page" + QByteArray::number(run) + ".html";
        nvktest::TestSite::Route route;
        route.body = html;
        route.contentType = "text/html; charset=utf-8";
        site.addRoute(path, route);
        return site.url(QString::fromLatin1(path + query));
    }

    // Fetches BusyRequests media files, then names itself "done".
    QUrl busyPage(int run)
    {
        const QByteArray runText = QByteArray::number(run);
        const QByteArray html =
            "<!DOCTYPE html><html><head><title>Busy page " + runText +
            "</title></head><body><h1>Busy page</h1><script>\n"
            "const all = [];\n"
            "for (let i = 0; i < " + QByteArray::number(BusyRequests) + "; ++i)\n"
            "  all.push(fetch('/busy/clip' + i + '.mp4?run=" + runText +
            "').then(r => r.arrayBuffer()).catch(() => null));\n"
            "Promise.all(all).then(() => { document.title = 'Busy page " + runText + " done'; });\n"
            "</script></body></html>\n";
        const QByteArray path = "/busy" + runText + ".html";
        nvktest::TestSite::Route route;
        route.body = html;
        route.contentType = "text/html; charset=utf-8";
        site.addRoute(path, route);
        return site.url(QString::fromLatin1(path + "?run=" + runText));
    }

    nvktest::TestSite site;
    QList<MediaFile> mediaFiles;
    qsizetype pageBytes = 0;
};

// The browser pane as the player lays it out: the page above, the download
// tree below, both shown.
struct Browser
{
    Browser(bool uniformRows, bool probing)
        : model(tree)
    {
        splitter.setOrientation(Qt::Vertical);
        view = new ZBBrowserView;
        treeView = new QTreeView;
        splitter.addWidget(view);
        splitter.addWidget(treeView);
        splitter.resize(1024, 900);
        splitter.setSizes({600, 300});
        // Every row of the tree is one line in the same fonts. Told so, the
        // view computes one row's height; left to find out, it lays out the
        // text of every row above the one it draws or updates, again after
        // each batch of new rows and for each row whose size arrives
        // (--varying-row-heights shows what that costs).
        treeView->setUniformRowHeights(uniformRows);
        treeView->setModel(&model);
        QObject::connect(&model, &ZBDownloadTreeModel::expandRequested, treeView, &QTreeView::expand);
        probe.setCookieJar(view->cookieJar());
        if (probing)
            tree.setResourceProbe(&probe);
        splitter.show();
    }

    void setCapture(bool on)
    {
        for (const QMetaObject::Connection &c : std::as_const(connections))
            QObject::disconnect(c);
        connections.clear();
        if (!on)
            return;
        connections << QObject::connect(view, &ZBBrowserView::mainFrameLoadStarted, &tree,
                                        [this]() { tree.setShouldBypassReceiveURLs(true); });
        connections << QObject::connect(view, &ZBBrowserView::mainFrameCommitted, &tree,
                                        [this](const QUrl &url) { tree.commitPage(url.toString()); });
        connections << QObject::connect(view, &ZBBrowserView::titleReceived, &tree,
                                        [this](const QString &title) { tree.receivePageTitle(title); });
        connections << QObject::connect(view, &ZBBrowserView::resourceRequested, &tree,
                                        [this](const ZBWebRequest &r) { tree.receiveRequest(r.url.toString()); });
    }

    // The page root captured for `url`, none when there is none.
    ZBDownloadItem *pageFor(const QUrl &url) const
    {
        return tree.getPageByURL(url.toString());
    }

    // Milliseconds from load() to the main frame's finish; -1 when it failed.
    double load(const QUrl &url)
    {
        double finishedAt = -1;
        bool failed = false;
        QElapsedTimer clock;
        const QMetaObject::Connection finished = QObject::connect(
            view, &ZBBrowserView::mainFrameLoadFinished, view, [&]() { finishedAt = clock.nsecsElapsed() / 1e6; });
        const QMetaObject::Connection failure =
            QObject::connect(view, &ZBBrowserView::mainFrameLoadFailed, view, [&]() { failed = true; });
        clock.start();
        view->load(url);
        waitUntil([&]() { return finishedAt >= 0 || failed; });
        QObject::disconnect(finished);
        QObject::disconnect(failure);
        return failed ? -1 : finishedAt;
    }

    QSplitter splitter;
    ZBBrowserView *view;
    QTreeView *treeView;
    ZBCaptureTree tree;
    ZBResourceProbe probe;
    ZBDownloadTreeModel model;
    QList<QMetaObject::Connection> connections;
};

// Records the gaps between turns of the event loop: a 1 ms timer runs
// whenever the loop gets round to it.
class GapMeter
{
public:
    GapMeter()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(1);
        QObject::connect(&m_timer, &QTimer::timeout, [this]() {
            const qint64 now = m_clock.nsecsElapsed();
            gaps.append((now - m_last) / 1e6);
            m_last = now;
            static_cast<TracingApplication *>(qApp)->reportTurn(gaps.last());
        });
    }
    void start()
    {
        gaps.clear();
        static_cast<TracingApplication *>(qApp)->turn.clear();
        m_clock.start();
        m_last = 0;
        m_timer.start();
    }
    void stop()
    {
        m_timer.stop();
        const qint64 now = m_clock.nsecsElapsed();
        gaps.append((now - m_last) / 1e6);
    }
    double longest() const { return gaps.isEmpty() ? 0 : *std::max_element(gaps.cbegin(), gaps.cend()); }
    qsizetype over(double ms) const { return std::count_if(gaps.cbegin(), gaps.cend(), [ms](double g) { return g > ms; }); }

    QList<double> gaps;

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_last = 0;
};

int rowsUnder(const ZBDownloadTreeModel &model, const ZBDownloadItem *page)
{
    const QModelIndex index = model.indexForItem(page);
    return index.isValid() ? model.rowCount(index) : 0;
}

bool pageLoads(Browser &browser, BenchSite &site)
{
    site.page(0);
    std::printf("1. Page load, load() to main frame finished: HTML %d KB, %d images, %d scripts, %d style sheets, "
                "%lld media files\n\n",
                int(site.pageBytes / 1024), Images, Scripts, StyleSheets,
                static_cast<long long>(site.mediaFiles.size()));
    int run = 0;
    // Warm the engine's processes and the site's connections first.
    for (int i = 0; i < 2; ++i)
    {
        browser.setCapture(i % 2 == 0);
        browser.load(site.page(run++));
        waitUntil([&]() { return browser.probe.pendingCount() == 0; });
        settle(200);
    }

    QList<double> on, off;
    int capturedRows = -1, mediaRows = -1;
    bool captureFailed = false;
    for (int i = 0; i < 2 * LoadRuns; ++i)
    {
        // Alternating, and starting each pair with the other one, so a slow
        // spell of the machine falls on both alike.
        const bool capture = (i % 2 == 0) == ((i / 2) % 2 == 0);
        browser.setCapture(capture);
        const QUrl url = site.page(run++);
        const double ms = browser.load(url);
        if (ms < 0)
        {
            std::fprintf(stderr, "the page did not load\n");
            return false;
        }
        (capture ? on : off) << ms;
        if (capture)
        {
            // Everything the page requested is in the tree: document, style
            // sheets, scripts, images and media.
            const int expected = 1 + StyleSheets + Scripts + Images + int(site.mediaFiles.size());
            ZBDownloadItem *page = browser.pageFor(url);
            waitUntil([&]() { return page && page->resources().size() >= expected; }, 10000);
            capturedRows = page ? int(page->resources().size()) : 0;
            captureFailed = captureFailed || capturedRows < expected;
            browser.model.flushPendingRows();
            mediaRows = rowsUnder(browser.model, page);
        }
        // Probes of the media files end before the next run starts.
        waitUntil([&]() { return browser.probe.pendingCount() == 0; });
        settle(200);
    }
    const double ratio = median(on) / median(off);
    // Each pair ran back to back, so its own ratio shrugs off slow spells
    // that last longer than a pair.
    QList<double> pairRatios;
    for (qsizetype i = 0; i < qMin(on.size(), off.size()); ++i)
        pairRatios << on.at(i) / off.at(i);
    std::printf("%-12s %10s %10s %10s\n", "capture", "median ms", "min ms", "max ms");
    std::printf("%-12s %10.1f %10.1f %10.1f\n", "off", median(off), *std::min_element(off.cbegin(), off.cend()),
                *std::max_element(off.cbegin(), off.cend()));
    std::printf("%-12s %10.1f %10.1f %10.1f\n", "on", median(on), *std::min_element(on.cbegin(), on.cend()),
                *std::max_element(on.cbegin(), on.cend()));
    std::printf("\nmedians of %d alternating loads each; on / off = %.3fx; goal at most %.2fx: %s\n", LoadRuns, ratio,
                LoadGoal, ratio <= LoadGoal ? "met" : "NOT met");
    std::printf("median of the %lld back-to-back pairs' own ratios: %.3fx\n",
                static_cast<long long>(pairRatios.size()), median(pairRatios));
    std::printf("last captured page: %d resources, %d media rows shown%s\n\n", capturedRows, mediaRows,
                captureFailed ? " (some run captured fewer than the page requested)" : "");
    return true;
}

struct BusyResult
{
    double longest = 0;
    double p99 = 0;
    qsizetype over = 0;
    double lastRowMs = -1; // capture on: the BusyRequests-th media row shown
    double doneMs = -1;    // the page's script saw every fetch answered
    double sizesMs = -1;   // capture on: every size probed
    int requests = 0;      // media fetches the view reported
    int mediaRows = 0, allRows = 0;
};

BusyResult busyLoad(Browser &browser, BenchSite &site, int run, bool capture)
{
    BusyResult result;
    browser.setCapture(capture);
    const QUrl url = site.busyPage(run);
    const QString doneTitle = QStringLiteral("Busy page %1 done").arg(run);
    QElapsedTimer clock;
    const QMetaObject::Connection counter =
        QObject::connect(browser.view, &ZBBrowserView::resourceRequested, browser.view, [&](const ZBWebRequest &r) {
            if (r.resourceType == ZBWebRequest::Xhr && r.url.path().startsWith(QLatin1String("/busy/")) &&
                r.url.query() == QStringLiteral("run=%1").arg(run))
                ++result.requests;
        });
    const QMetaObject::Connection titles =
        QObject::connect(browser.view, &ZBBrowserView::titleReceived, browser.view, [&](const QString &title) {
            if (title == doneTitle && result.doneMs < 0)
                result.doneMs = clock.nsecsElapsed() / 1e6;
        });

    GapMeter meter;
    meter.start();
    clock.start();
    browser.view->load(url);
    ZBDownloadItem *page = nullptr;
    waitUntil(
        [&]() {
            if (capture)
            {
                if (!page)
                    page = browser.pageFor(url);
                if (result.lastRowMs < 0 && rowsUnder(browser.model, page) >= BusyRequests)
                    result.lastRowMs = clock.nsecsElapsed() / 1e6;
                if (result.sizesMs < 0 && result.lastRowMs >= 0 && browser.probe.pendingCount() == 0)
                    result.sizesMs = clock.nsecsElapsed() / 1e6;
                return result.doneMs >= 0 && result.sizesMs >= 0;
            }
            return result.doneMs >= 0;
        },
        180000);
    meter.stop();
    QObject::disconnect(counter);
    QObject::disconnect(titles);

    result.longest = meter.longest();
    result.p99 = percentile(meter.gaps, 0.99);
    result.over = meter.over(StallGoalMs);
    if (capture && page)
    {
        result.mediaRows = rowsUnder(browser.model, page);
        browser.tree.setCurrentFilter(ZBDownloadItem::FilterAll);
        browser.model.rowCount(QModelIndex());
        // Rows under a page are counted when the view asks; the view asks
        // once it lays the page out again.
        result.allRows = browser.model.rowCount(browser.model.indexForItem(page));
        browser.tree.setCurrentFilter(ZBDownloadItem::FilterMedia);
        browser.treeView->expandAll();
    }
    waitUntil([&]() { return browser.probe.pendingCount() == 0; });
    settle(300);
    return result;
}

bool busyPages(Browser &browser, BenchSite &site)
{
    std::printf("2. A page that fetches %d media files, download tree shown: gaps between event-loop turns from "
                "load() until the last row and the last size are in (capture off: until the page's script has "
                "every answer)\n\n",
                BusyRequests);
    std::printf("%-8s %4s %9s %9s %6s %9s %9s %9s %9s %10s %9s\n", "capture", "run", "longest", "p99", ">50ms",
                "fetched", "rows", "all rows", "page ms", "last row", "sizes ms");
    QList<BusyResult> on, off;
    bool counted = true;
    int run = 1000;
    for (int i = 0; i < 2 * BusyRuns; ++i)
    {
        const bool capture = i % 2 == 1;
        const BusyResult r = busyLoad(browser, site, run++, capture);
        (capture ? on : off) << r;
        if (r.doneMs < 0 || (capture && r.lastRowMs < 0))
            counted = false;
        if (r.requests != BusyRequests || (capture && (r.mediaRows != BusyRequests || r.allRows < BusyRequests + 1)))
            counted = false;
        std::printf("%-8s %4d %7.1fms %7.1fms %6lld %9d %9d %9d %9.0f %10.0f %9.0f\n", capture ? "on" : "off",
                    i / 2 + 1, r.longest, r.p99, static_cast<long long>(r.over), r.requests, r.mediaRows, r.allRows,
                    r.doneMs, r.lastRowMs, r.sizesMs);
    }
    auto worst = [](const QList<BusyResult> &results) {
        return std::max_element(results.cbegin(), results.cend(),
                                [](const BusyResult &a, const BusyResult &b) { return a.longest < b.longest; })
            ->longest;
    };
    auto medianOf = [](const QList<BusyResult> &results, double BusyResult::*field) {
        QList<double> values;
        for (const BusyResult &r : results)
            values << r.*field;
        return median(values);
    };
    const double worstOn = worst(on), worstOff = worst(off);
    std::printf("\nlongest gap, median of %d runs: on %.1f ms, off %.1f ms (on / off %.2fx); worst on %.1f ms, "
                "worst off %.1f ms\n",
                BusyRuns, medianOf(on, &BusyResult::longest), medianOf(off, &BusyResult::longest),
                medianOf(on, &BusyResult::longest) / medianOf(off, &BusyResult::longest), worstOn, worstOff);
    std::printf("99th percentile gap, median: on %.2f ms, off %.2f ms\n", medianOf(on, &BusyResult::p99),
                medianOf(off, &BusyResult::p99));
    std::printf("page's own fetches done, median: on %.0f ms, off %.0f ms (on / off %.2fx)\n",
                medianOf(on, &BusyResult::doneMs), medianOf(off, &BusyResult::doneMs),
                medianOf(on, &BusyResult::doneMs) / medianOf(off, &BusyResult::doneMs));
    std::printf("every request reported and shown (%d media rows, at least %d with filter \"all\"): %s\n",
                BusyRequests, BusyRequests + 1, counted ? "yes" : "NO");
    std::printf("goal: no stall over %.0f ms with capture on: %s\n\n", StallGoalMs,
                worstOn <= StallGoalMs ? "met" : "NOT met");
    return true;
}
} // namespace

int main(int argc, char *argv[])
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    ZBFlashView::prepareApplication();
    TracingApplication app(argc, argv);

    BenchSite site;
    if (!site.site.isListening())
    {
        std::fprintf(stderr, "the test site is not listening\n");
        return 1;
    }
    const QStringList args = app.arguments();
    const bool uniformRows = !args.contains(QStringLiteral("--varying-row-heights"));
    // --no-probe: what capture costs without asking servers for sizes.
    Browser browser(uniformRows, !args.contains(QStringLiteral("--no-probe")));
    std::printf("download tree: %s row heights\n\n", uniformRows ? "uniform" : "varying (Qt's default)");
    const bool onlyBusy = args.contains(QStringLiteral("--busy"));
    const bool onlyLoad = args.contains(QStringLiteral("--load"));
    if (!onlyBusy && !pageLoads(browser, site))
        return 1;
    if (!onlyLoad && !busyPages(browser, site))
        return 1;
    return 0;
}
