#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

#include "localization/zblocalizer.h"
#include "ui/web/zbdownloadtreemodel.h"
#include "web/zbcapturetree.h"
#include "web/zbdownloaditem.h"

class TestZBDownloadTreeModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { ZBLocalizer::setLanguage(QStringLiteral("English")); }

    // A busy page, followed row by row by Qt's model checker.
    void busyPageInsertsRows()
    {
        ZBCaptureTree tree;
        ZBDownloadTreeModel model(tree);
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        QSignalSpy inserts(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy expands(&model, &ZBDownloadTreeModel::expandRequested);
        ZBDownloadItem *page = tree.commitPage(QStringLiteral("http://page.test/"));
        model.flushPendingRows();
        QCOMPARE(model.rowCount(), 1);
        const QModelIndex pageIndex = model.index(0, 0);
        QVERIFY(!pageIndex.data(ZBDownloadTreeModel::ActionEnabledRole).toBool()); // only its own html so far
        QCOMPARE(model.rowCount(pageIndex), 0);
        for (int i = 0; i < 2000; ++i)
        {
            tree.receivingUrl(QStringLiteral("h.test/%1.%2").arg(i).arg(i % 4 ? "png" : "flv"), 2048);
            if (i % 250 == 0)
                QCoreApplication::processEvents();
        }
        QTRY_COMPARE(model.rowCount(pageIndex), 500);
        QCOMPARE(resets.size(), 0);
        QVERIFY(inserts.size() < 100);
        QCOMPARE(expands.size(), 1);
        QVERIFY(pageIndex.data(ZBDownloadTreeModel::ActionEnabledRole).toBool());
        const QModelIndex last = model.index(499, 0, pageIndex);
        QCOMPARE(last.data().toString(), QStringLiteral("1996"));
        QCOMPARE(last.siblingAtColumn(ZBDownloadTreeModel::SizeColumn).data().toString(), QStringLiteral("2 KB"));

        // Typed by its server, an extension-less stream joins the media rows.
        ZBDownloadItem *stream = tree.receivingUrl(QStringLiteral("h.test/watch"));
        tree.applyContentType(stream, QStringLiteral("video/mp4"));
        model.flushPendingRows();
        const QModelIndex streamIndex = model.index(500, 0, pageIndex);
        QCOMPARE(model.itemAt(streamIndex), stream);
        QCOMPARE(streamIndex.siblingAtColumn(ZBDownloadTreeModel::SizeColumn).data().toString(), QStringLiteral("n/a"));

        tree.setCurrentFilter(ZBDownloadItem::FilterAll);
        QCOMPARE(model.rowCount(model.index(0, 0)), 2002);
        tree.commitPage(QStringLiteral("http://second.test/"));
        tree.removePage(page);
        QTRY_COMPARE(model.rowCount(), 1);
        QCOMPARE(model.itemAt(model.index(0, 0)), tree.pages().constFirst());
    }

    void columns_data()
    {
        QTest::addColumn<qint64>("expected");
        QTest::addColumn<qint64>("received");
        QTest::addColumn<int>("expectedResources");
        QTest::addColumn<int>("receivedResources");
        QTest::addColumn<QString>("progress");
        QTest::addColumn<QString>("size");
        QTest::newRow("nothing known") << qint64(0) << qint64(0) << 0 << 0 << "" << "n/a";
        QTest::newRow("half the bytes") << qint64(4096) << qint64(2048) << 0 << 0 << "50%" << "4 KB";
        QTest::newRow("beyond 2 GiB") << qint64(3) * 1024 * 1024 * 1024 << qint64(1) << 0 << 0 << "0%" << "3072 MB";
        QTest::newRow("resources count first") << qint64(100) << qint64(100) << 4 << 1 << "25%" << "100 B";
        QTest::newRow("resource count as size") << qint64(0) << qint64(0) << 3 << 0 << "" << "3";
    }
    void columns()
    {
        QFETCH(qint64, expected);
        QFETCH(qint64, received);
        QFETCH(int, expectedResources);
        QFETCH(int, receivedResources);
        ZBDownloadItem page;
        ZBDownloadItem item;
        item.setParent(&page);
        item.setExpectedBytesLength(expected);
        item.setReceivedBytesLength(received);
        item.setExpectedResourcesCount(expectedResources);
        item.setReceivedResourcesCount(receivedResources);
        QTEST(ZBDownloadTreeModel::progressText(&item), "progress");
        QTEST(ZBDownloadTreeModel::sizeText(&item), "size");
    }
};

QTEST_MAIN(TestZBDownloadTreeModel)
#include "tst_zbdownloadtreemodel.moc"
