#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QMimeDatabase>
#include <QTest>
#include <QXmlStreamReader>

#include <algorithm>

#include "playback/zbmediatypes.h"

namespace
{
QString desktopDir()
{
    QString source = qEnvironmentVariable("NVK_SOURCE_DIR");
    if (source.isEmpty())
        source = QFileInfo(QStringLiteral(__FILE__)).absoluteDir().absoluteFilePath(QStringLiteral("../../.."));
    return QDir(source).absoluteFilePath(QStringLiteral("resources/desktop"));
}

// The [Desktop Entry] group as key and value.
QHash<QString, QString> readDesktopEntry()
{
    QHash<QString, QString> keys;
    QFile file(desktopDir() + QStringLiteral("/norvikplayer.desktop"));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return keys;
    for (const QString &line : QString::fromUtf8(file.readAll()).split(u'\n'))
    {
        const qsizetype equals = line.indexOf(u'=');
        if (equals > 0 && !line.startsWith(u'#'))
            keys.insert(line.left(equals), line.mid(equals + 1));
    }
    return keys;
}
} // namespace

// The files that introduce the player to the desktop agree with each other
// and with the types the player takes.
class TestDesktopEntry : public QObject
{
    Q_OBJECT

private:
    QHash<QString, QString> m_entry;
    QStringList m_types;

private Q_SLOTS:
    void initTestCase()
    {
        m_entry = readDesktopEntry();
        QVERIFY2(!m_entry.isEmpty(), qPrintable(desktopDir()));
        m_types = m_entry.value(QStringLiteral("MimeType")).split(u';', Qt::SkipEmptyParts);
    }

    void startsThePlayerWithUrls()
    {
        QCOMPARE(m_entry.value(QStringLiteral("Type")), QStringLiteral("Application"));
        // %U: file managers hand files over as file: URLs, and the scheme's
        // links arrive the same way.
        QCOMPARE(m_entry.value(QStringLiteral("Exec")), QStringLiteral("norvikplayer %U"));
        QVERIFY(m_types.contains(QStringLiteral("x-scheme-handler/norvikplayer")));
    }

    void registersEveryTypeThePlayerTakes()
    {
        const QMimeDatabase database;
        if (!database.mimeTypeForFile(QStringLiteral("x.mp4"), QMimeDatabase::MatchExtension).isValid() ||
            database.mimeTypeForFile(QStringLiteral("x.mp4"), QMimeDatabase::MatchExtension).isDefault())
            QSKIP("No MIME database here to map extensions to types");

        QStringList extensions = ZBMediaTypes::getSupportedFileTypes();
        extensions << QStringLiteral("3g2");
        QStringList missing;
        int known = 0;
        for (const QString &extension : extensions)
        {
            // Projectors are programs: the player must not claim every .exe.
            if (extension == QLatin1String("exe") || extension == QLatin1String("'APPL'"))
                continue;
            const QMimeType type =
                database.mimeTypeForFile(QStringLiteral("x.") + extension, QMimeDatabase::MatchExtension);
            if (type.isDefault())
                continue;
            ++known;
            const QStringList names = QStringList{type.name()} + type.aliases();
            const bool listed =
                std::any_of(names.begin(), names.end(), [this](const QString &name) { return m_types.contains(name); });
            if (!listed)
                missing << extension + QStringLiteral(" (") + type.name() + u')';
        }
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(QStringLiteral(", "))));
        // mp4, mkv, avi, mov, wmv, mpeg, flv, rm, swf at least are known everywhere.
        QVERIFY(known >= 9);
        QVERIFY(!m_types.contains(QStringLiteral("application/x-ms-dos-executable")));
    }

    void definesThePlaylistType()
    {
        QFile file(desktopDir() + QStringLiteral("/norvikplayer-mime.xml"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QXmlStreamReader xml(&file);
        QString currentType;
        QHash<QString, QStringList> globs;
        while (!xml.atEnd())
        {
            if (xml.readNext() != QXmlStreamReader::StartElement)
                continue;
            if (xml.name() == QLatin1String("mime-type"))
                currentType = xml.attributes().value(QLatin1String("type")).toString();
            else if (xml.name() == QLatin1String("glob"))
                globs[currentType] << xml.attributes().value(QLatin1String("pattern")).toString();
        }
        QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
        QCOMPARE(globs.value(QStringLiteral("application/x-norvikplayer-playlist")),
                 QStringList{QStringLiteral("*.nvp")});
        QVERIFY(m_types.contains(QStringLiteral("application/x-norvikplayer-playlist")));
    }

    void theIconExistsInBothForms()
    {
        QCOMPARE(m_entry.value(QStringLiteral("Icon")), QStringLiteral("norvikplayer"));
        QFile svg(desktopDir() + QStringLiteral("/norvikplayer.svg"));
        QVERIFY(svg.open(QIODevice::ReadOnly));
        QVERIFY(svg.readAll().contains("<svg"));
        const QImage png(desktopDir() + QStringLiteral("/norvikplayer-256.png"));
        QCOMPARE(png.size(), QSize(256, 256));
        // Transparent corners, an opaque middle: the rounded tile, not a blank.
        QCOMPARE(qAlpha(png.pixel(0, 0)), 0);
        QCOMPARE(qAlpha(png.pixel(128, 128)), 255);
    }

    void theSoftwareCentreFindsTheEntry()
    {
        QDir dir(desktopDir());
        const QStringList metainfo = dir.entryList({QStringLiteral("*.metainfo.xml")});
        QCOMPARE(metainfo.size(), 1);
        QFile file(dir.filePath(metainfo.first()));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QXmlStreamReader xml(&file);
        QString id;
        QString launchable;
        while (!xml.atEnd())
        {
            if (xml.readNext() != QXmlStreamReader::StartElement)
                continue;
            if (xml.name() == QLatin1String("id"))
                id = xml.readElementText();
            else if (xml.name() == QLatin1String("launchable"))
                launchable = xml.readElementText();
        }
        QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
        QCOMPARE(metainfo.first(), id + QStringLiteral(".metainfo.xml"));
        QCOMPARE(launchable, QStringLiteral("norvikplayer.desktop"));
    }
};

QTEST_GUILESS_MAIN(TestDesktopEntry)

#include "tst_desktopentry.moc"
