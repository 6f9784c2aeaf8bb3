#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include "engines/zbcomponentversions.h"

class TestZBComponentVersions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyComponentReportsAVersion()
    {
        // Debian spells FFmpeg's release "5.1.6-0+deb12u1": digits and dots first.
        static const QRegularExpression looksLikeVersion(QStringLiteral("^\\d+(\\.\\d+)+"));
        const QList<ZBComponentVersions::Component> components = ZBComponentVersions::components();
        QCOMPARE(components.size(), 5);
        for (const ZBComponentVersions::Component &component : components)
            QVERIFY2(looksLikeVersion.match(component.version).hasMatch(),
                     qPrintable(component.name + QStringLiteral(": \"") + component.version + u'"'));
        QVERIFY(!ZBComponentVersions::mpvVersion().isEmpty());
    }

    void ruffleVersionOnlyFromItsPackage_data()
    {
        QTest::addColumn<QByteArray>("packageJson");
        QTest::addColumn<QString>("expected");
        QTest::newRow("installed") << QByteArray("{\"name\": \"@ruffle-rs/ruffle\", \"version\": \"0.6.0\"}") << "0.6.0";
        QTest::newRow("missing") << QByteArray() << "";
        QTest::newRow("damaged") << QByteArray("{\"version\": \"0.6") << "";
        QTest::newRow("no version field") << QByteArray("{\"name\": \"ruffle\"}") << "";
    }
    void ruffleVersionOnlyFromItsPackage()
    {
        QFETCH(QByteArray, packageJson);
        QFETCH(QString, expected);
        QTemporaryDir assets;
        QVERIFY(QDir(assets.path()).mkdir(QStringLiteral("ruffle")));
        if (!packageJson.isEmpty())
        {
            QFile file(assets.filePath(QStringLiteral("ruffle/package.json")));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(packageJson);
        }
        QCOMPARE(ZBComponentVersions::ruffleVersion(assets.path()), expected);
    }
};

QTEST_GUILESS_MAIN(TestZBComponentVersions)
#include "tst_zbcomponentversions.moc"
