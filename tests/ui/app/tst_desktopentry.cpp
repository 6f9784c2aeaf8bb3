#include <algorithm>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QMimeDatabase>
#include <QRegularExpression>
#include <QTest>

#include "playback/zbmediatypes.h"
#include "ui/app/zbmprisrootadaptor.h"

namespace
{
QString desktopDir()
{
    QString source = qEnvironmentVariable("NVK_SOURCE_DIR");
    if (source.isEmpty())
        source = QFileInfo(QStringLiteral(__FILE__)).absoluteDir().absoluteFilePath(QStringLiteral("../../.."));
    return QDir(source).absoluteFilePath(QStringLiteral("resources/desktop"));
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
        QFile file(desktopDir() + QStringLiteral("/norvikplayer.desktop"));
        QVERIFY2(file.open(QIODevice::ReadOnly | QIODevice::Text), qPrintable(file.fileName()));
        for (const QString &line : QString::fromUtf8(file.readAll()).split(u'\n'))
        {
            if (line.indexOf(u'=') > 0 && !line.startsWith(u'#'))
                m_entry.insert(line.section(u'=', 0, 0), line.section(u'=', 1));
        }
        m_types = m_entry.value(QStringLiteral("MimeType")).split(u';', Qt::SkipEmptyParts);
    }

    void registersEveryTypeThePlayerTakes()
    {
        const QMimeDatabase database;
        if (database.mimeTypeForFile(QStringLiteral("x.mp4"), QMimeDatabase::MatchExtension).isDefault())
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
            if (!std::any_of(names.begin(), names.end(),
                             [this](const QString &name) { return m_types.contains(name); }))
                missing << extension + QStringLiteral(" (") + type.name() + u')';
        }
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(QStringLiteral(", "))));
        // mp4, mkv, avi, mov, wmv, mpeg, flv, rm, swf at least are known everywhere.
        QVERIFY(known >= 9);
        QVERIFY(!m_types.contains(QStringLiteral("application/x-ms-dos-executable")));
    }

    // The desktop learns the same types and schemes over MPRIS.
    void mprisOffersWhatTheEntryRegisters()
    {
        QStringList offered = ZBMprisRootAdaptor::supportedMimeTypes();
        for (const QString &scheme : ZBMprisRootAdaptor::supportedUriSchemes())
            offered << (scheme == u"file" ? scheme : QStringLiteral("x-scheme-handler/") + scheme);
        QStringList registered = m_types + QStringList{QStringLiteral("file")};
        offered.sort();
        registered.sort();
        QCOMPARE(offered, registered);
    }

    void definesThePlaylistType()
    {
        QFile file(desktopDir() + QStringLiteral("/norvikplayer-mime.xml"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll());
        const QString type = QRegularExpression(QStringLiteral("<mime-type type=\"([^\"]+)\"")).match(text).captured(1);
        const QString glob = QRegularExpression(QStringLiteral("<glob pattern=\"([^\"]+)\"")).match(text).captured(1);
        QCOMPARE(type + u' ' + glob, QStringLiteral("application/x-norvikplayer-playlist *.nvp"));
        QVERIFY(m_types.contains(type));
    }

    // %U: file managers hand files over as file: URLs, and the scheme's
    // links arrive the same way; the software centre finds the entry by the
    // metadata's id, and the icon is the rounded tile, not a blank.
    void launchesWithUrlsAndIsFoundWithItsIcon()
    {
        QCOMPARE(m_entry.value(QStringLiteral("Exec")), QStringLiteral("norvikplayer %U"));
        const QStringList found = QDir(desktopDir()).entryList({QStringLiteral("*.metainfo.xml")});
        QCOMPARE(found.size(), 1);
        QFile file(desktopDir() + u'/' + found.first());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll());
        QVERIFY(text.contains(QStringLiteral("<id>") + found.first().chopped(13) + QStringLiteral("</id>")));
        QVERIFY(text.contains(QStringLiteral("<launchable type=\"desktop-id\">norvikplayer.desktop</launchable>")));
        QCOMPARE(m_entry.value(QStringLiteral("Icon")), QStringLiteral("norvikplayer"));
        QVERIFY(QFileInfo(desktopDir() + QStringLiteral("/norvikplayer.svg")).size() > 0);
        const QImage png(desktopDir() + QStringLiteral("/norvikplayer-256.png"));
        QCOMPARE(png.size(), QSize(256, 256));
        QCOMPARE(qAlpha(png.pixel(0, 0)), 0);
        QCOMPARE(qAlpha(png.pixel(128, 128)), 255);
    }
};

QTEST_GUILESS_MAIN(TestDesktopEntry)

#include "tst_desktopentry.moc"
