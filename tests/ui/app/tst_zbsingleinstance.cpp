#include <algorithm>
#include <csignal>
#include <cstdio>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QProcess>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "ui/app/zbsingleinstance.h"

namespace
{
// Set for a child this test starts: it then behaves as the program's start
// does (hand over or become the player) instead of running the tests.
constexpr char ChildServerNameVariable[] = "NVK_TEST_SINGLE_INSTANCE_NAME";
constexpr char PrimaryLine[] = "primary";

void printLine(const QByteArray &line)
{
    std::printf("%s\n", line.constData());
    std::fflush(stdout);
}

// What main() does: exit 0 when another player took the arguments,
// otherwise say so, listen and print every hand-over as a JSON array.
int runAsPlayerStart(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    ZBSingleInstance instance(qEnvironmentVariable(ChildServerNameVariable));
    if (instance.tryToHandOver(app.arguments().mid(1)))
        return 0;
    printLine(PrimaryLine);
    QObject::connect(&instance, &ZBSingleInstance::argumentsReceived,
                     [](const QStringList &arguments) {
                         printLine(QJsonDocument(QJsonArray::fromStringList(arguments)).toJson(QJsonDocument::Compact));
                     });
    instance.listen();
    return app.exec();
}

QStringList parseList(const QByteArray &line)
{
    return QJsonDocument::fromJson(line).toVariant().toStringList();
}
} // namespace

// Two starts of the player by one user: the second hands its files and URLs
// to the first, even when the first has not finished starting, and a socket
// left by a crashed player does not stop the next one.
class TestZBSingleInstance : public QObject
{
    Q_OBJECT

private:
    QString socketName() const { return m_dir->filePath(QStringLiteral("player.socket")); }

    // A start of the player in a process of its own, in `workingDirectory`.
    std::unique_ptr<QProcess> startPlayer(const QStringList &arguments, const QString &workingDirectory = QString())
    {
        auto process = std::make_unique<QProcess>();
        process->setEnvironment(QProcess::systemEnvironment()
                                << QLatin1String(ChildServerNameVariable) + u'=' + socketName());
        process->setWorkingDirectory(workingDirectory.isEmpty() ? m_dir->path() : workingDirectory);
        process->start(QCoreApplication::applicationFilePath(), arguments);
        return process;
    }

    // Turns the event loop while the child runs: this process may be the
    // player it talks to. Shorter than the sender's wait for an answer, so a
    // child that gave up waiting does not pass for one that was answered.
    static bool handsOver(const std::unique_ptr<QProcess> &process)
    {
        QDeadlineTimer deadline(5000);
        while (process->state() != QProcess::NotRunning && !deadline.hasExpired())
            QTest::qWait(10);
        return process->state() == QProcess::NotRunning && process->exitStatus() == QProcess::NormalExit &&
               process->exitCode() == 0;
    }

    static QByteArray nextLine(QProcess &process)
    {
        QDeadlineTimer deadline(10000);
        while (!process.canReadLine() && !deadline.hasExpired())
            process.waitForReadyRead(100);
        return process.readLine().trimmed();
    }

    std::unique_ptr<QTemporaryDir> m_dir;

private Q_SLOTS:
    void init() { m_dir = std::make_unique<QTemporaryDir>(); }

    void normalizesTheCommandLine_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("paths") << QStringList{"./old/../new.mkv", "../films", "/srv//media/a.flv"}
                               << QStringList{"/home/ann/videos/new.mkv", "/home/ann/films", "/srv/media/a.flv"};
        QTest::newRow("file URL") << QStringList{"file:///srv/media/two%20words.swf"}
                                  << QStringList{"/srv/media/two words.swf"};
        // Kept as given, in order: URLs with a scheme; options go, and a
        // colon without slashes or a one-letter scheme is part of a name.
        QTest::newRow("mixed") << QStringList{"-platform", "https://example.com/a%20b.flv", "notes:part1.avi",
                                              "",          "norvikplayer://a?v=1&t=2",      "c://x.avi"}
                               << QStringList{"https://example.com/a%20b.flv", "/home/ann/videos/notes:part1.avi",
                                              "norvikplayer://a?v=1&t=2", "/home/ann/videos/c:/x.avi"};
        QTest::newRow("nothing") << QStringList() << QStringList();
    }

    void normalizesTheCommandLine()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QStringList, expected);
        QCOMPARE(ZBSingleInstance::normalizedArguments(arguments, QStringLiteral("/home/ann/videos")), expected);
    }

    void theUsersRuntimeFolderHoldsTheSocket()
    {
        const QByteArray saved = qgetenv("XDG_RUNTIME_DIR");
        const bool wasSet = qEnvironmentVariableIsSet("XDG_RUNTIME_DIR");
        const auto restore =
            qScopeGuard([&]() { wasSet ? qputenv("XDG_RUNTIME_DIR", saved) : qunsetenv("XDG_RUNTIME_DIR"); });
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_dir->path()));
        QCOMPARE(QFileInfo(ZBSingleInstance::defaultServerName()).absolutePath(),
                 QFileInfo(m_dir->path()).absoluteFilePath());
    }

    // Later starts hand their files and URLs to the first, also before it
    // listens; a plain start is handed over too, to bring the window forward.
    // Neither a second listener nor a stranger's connection takes the
    // hand-overs from a living player.
    void handsStartsToTheRunningPlayer()
    {
        const QString folder = m_dir->filePath(QStringLiteral("videos"));
        QVERIFY(QDir().mkpath(folder));
        {
            ZBSingleInstance player(socketName());
            QVERIFY(!player.tryToHandOver({QStringLiteral("a.mp4")}));
            QVERIFY(QFileInfo::exists(socketName()));
            QSignalSpy received(&player, &ZBSingleInstance::argumentsReceived);
            QVERIFY(handsOver(startPlayer({QStringLiteral("clip.mp4"), QStringLiteral("sub/../film.mkv"),
                                           QStringLiteral("norvikplayer://www.example.com/page"),
                                           QStringLiteral("/elsewhere/movie.swf"), QStringLiteral("--quiet")},
                                          folder)));
            QVERIFY(handsOver(startPlayer({}, folder)));
            QCOMPARE(received.count(), 0);
            player.listen();

            ZBSingleInstance intruder(socketName());
            QSignalSpy intruderReceived(&intruder, &ZBSingleInstance::argumentsReceived);
            intruder.listen();
            QVERIFY(!intruder.isListening());
            QLocalSocket stranger;
            stranger.connectToServer(socketName());
            QVERIFY(stranger.waitForConnected(1000));
            stranger.write(QByteArray("GET / HTTP/1.0\r\n\r\n"));
            stranger.flush();
            QTRY_COMPARE(stranger.state(), QLocalSocket::UnconnectedState);

            QVERIFY(handsOver(startPlayer({QStringLiteral("/b.avi")})));
            QCOMPARE(received, (QList<QVariantList>{{QStringList{folder + QStringLiteral("/clip.mp4"),
                                                                 folder + QStringLiteral("/film.mkv"),
                                                                 QStringLiteral("norvikplayer://www.example.com/page"),
                                                                 QStringLiteral("/elsewhere/movie.swf")}},
                                                    {QStringList()},
                                                    {QStringList{QStringLiteral("/b.avi")}}}));
            QCOMPARE(intruderReceived.count(), 0);
        }
        // A player that quits normally leaves nothing a later start must clear.
        QVERIFY(!QFileInfo::exists(socketName()));
    }

    void handsOverToAnotherProcessAndTakesOverAfterItCrashes()
    {
        auto first = startPlayer({});
        QCOMPARE(nextLine(*first), QByteArray(PrimaryLine));
        QVERIFY(ZBSingleInstance(socketName())
                    .tryToHandOver({QStringLiteral("relative.flv"), QStringLiteral("norvikplayer://x.example")}));
        QCOMPARE(parseList(nextLine(*first)), QStringList({QDir::currentPath() + QStringLiteral("/relative.flv"),
                                                           QStringLiteral("norvikplayer://x.example")}));
        ::kill(static_cast<pid_t>(first->processId()), SIGKILL);
        QVERIFY(first->waitForFinished(5000));

        ZBSingleInstance player(socketName());
        QVERIFY(!player.tryToHandOver({QStringLiteral("/mine.mp4")}));
        QSignalSpy received(&player, &ZBSingleInstance::argumentsReceived);
        player.listen();
        QVERIFY(handsOver(startPlayer({QStringLiteral("/theirs.mp4")})));
        QCOMPARE(received, QList<QVariantList>{{QStringList{QStringLiteral("/theirs.mp4")}}});
    }

    void startsTogetherMakeOnePlayer()
    {
        const QStringList files{QStringLiteral("/1.mp4"), QStringLiteral("/2.mp4"), QStringLiteral("/3.mp4"),
                                QStringLiteral("/4.mp4")};
        std::vector<std::unique_ptr<QProcess>> starts;
        for (const QString &file : files)
            starts.push_back(startPlayer({file}));

        // All but one hand over and end; the one left is the player.
        const auto running = [](const auto &start)
        {
            return start->state() != QProcess::NotRunning;
        };
        QTRY_COMPARE_WITH_TIMEOUT(std::count_if(starts.begin(), starts.end(), running), 1, 20000);
        QProcess *player = std::find_if(starts.begin(), starts.end(), running)->get();
        for (const auto &start : starts)
            QVERIFY(start.get() == player || handsOver(start));
        QCOMPARE(nextLine(*player), QByteArray(PrimaryLine));
        QStringList received;
        for (int i = 0; i < 3; ++i)
            received << parseList(nextLine(*player));
        player->kill();
        // Every file of the others reached the one player, its own excepted.
        QStringList expected = files;
        expected.removeOne(player->arguments().first());
        received.sort();
        QCOMPARE(received, expected);
    }
};

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsSet(ChildServerNameVariable))
        return runAsPlayerStart(argc, argv);
    QCoreApplication app(argc, argv);
    TestZBSingleInstance test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_zbsingleinstance.moc"
