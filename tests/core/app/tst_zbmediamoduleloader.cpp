#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <thread>
#include <vector>

#include "app/zbmediamoduleloader.h"

class TestZBMediaModuleLoader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void unusableFilesGiveTheReason_data();
    void unusableFilesGiveTheReason();
    void firstCallersShareOneModule();
};

void TestZBMediaModuleLoader::unusableFilesGiveTheReason_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("expected");
    // No content: the file is not written at all.
    QTest::newRow("missing") << QByteArray() << QStringLiteral("No such file");
    QTest::newRow("no library") << QByteArray(4096, 'x') << QStringLiteral("ELF");
}

void TestZBMediaModuleLoader::unusableFilesGiveTheReason()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, expected);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("libnorvikmedia.so"));
    if (!content.isEmpty())
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    const ZBMediaModuleLoader::Result result = ZBMediaModuleLoader::loadFrom(path);
    QCOMPARE(result.module, nullptr);
    QVERIFY2(result.error.contains(path) && result.error.contains(expected), qPrintable(result.error));
}

void TestZBMediaModuleLoader::firstCallersShareOneModule()
{
    // This program does not link the module: it comes from beside the core
    // library, as in the player, however many threads ask first.
    std::vector<ZBMediaModule *> seen(4, nullptr);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < seen.size(); ++i)
        threads.emplace_back([&seen, i]() { seen[i] = ZBMediaModuleLoader::module(); });
    for (std::thread &thread : threads)
        thread.join();
    QVERIFY2(seen.front(), qPrintable(ZBMediaModuleLoader::loadError()));
    for (ZBMediaModule *module : seen)
        QCOMPARE(module, seen.front());
    // A library that is no module of ours says so.
    const ZBMediaModuleLoader::Result other = ZBMediaModuleLoader::loadFrom(QStringLiteral("libz.so.1"));
    QCOMPARE(other.module, nullptr);
    QVERIFY2(other.error.contains(QLatin1String(ZBMediaModuleLoader::EntryPointName)), qPrintable(other.error));
}

QTEST_GUILESS_MAIN(TestZBMediaModuleLoader)
#include "tst_zbmediamoduleloader.moc"
