#include <algorithm>
#include <csignal>
#include <cstdio>
#include <memory>
#include <vector>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>
#include <QLocalSocket>
#include <QProcess>
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
    std::fputs(line.constData(), stdout);
    std::fputc('\n', stdout);
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
    QStringList list;
    for (const QJsonValue &value : QJsonDocument::fromJson(line).array())
        list << value.toString();
    return list;
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
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QLatin1String(ChildServerNameVariable), socketName());
        process->setProcessEnvironment(environment);
        process->setWorkingDirectory(workingDirectory.isEmpty() ? m_dir->path() : workingDirectory);
        process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process->start(QCoreApplication::applicationFilePath(), arguments);
        return process;
    }

    // Turns the event loop while the child runs: this process may be the
    // player it talks to. Shorter than the sender's wait for an answer, so a
    // child that gave up waiting does not pass for one that was answered.
    static bool finishesWithoutHelp(QProcess &process)
    {
        QDeadlineTimer deadline(5000);
        while (process.state() != QProcess::NotRunning && !deadline.hasExpired())
            QTest::qWait(10);
        return process.state() == QProcess::NotRunning && process.exitStatus() == QProcess::NormalExit;
    }

    static QByteArray nextLine(QProcess &process)
    {
        QDeadlineTimer deadline(10000);
        while (!process.canReadLine() && !deadline.hasExpired())
            process.waitForReadyRead(100);
        return process.readLine().trimmed();
    }

    static void stop(QProcess &process)
    {
        process.kill();
        process.waitForFinished(5000);
    }

    std::unique_ptr<QTemporaryDir> m_dir;

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

    void normalizesTheCommandLine_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("expected");
        const auto list = [](std::initializer_list<const char *> items)
        {
            QStringList result;
            for (const char *item : items)
                result << QString::fromUtf8(item);
            return result;
        };
        QTest::newRow("relative, dots") << list({"./old/../new.mkv"}) << list({"/home/ann/videos/new.mkv"});
        QTest::newRow("parent folder") << list({"../films"}) << list({"/home/ann/films"});
        QTest::newRow("absolute path") << list({"/srv//media/a.flv"}) << list({"/srv/media/a.flv"});
        QTest::newRow("file URL") << list({"file:///srv/media/two%20words.swf"}) << list({"/srv/media/two words.swf"});
        // Kept as given, in order: URLs with a scheme; options go, and a
        // colon without slashes or a one-letter scheme is part of a name.
        QTest::newRow("mixed") << list({"-platform", "https://example.com/a%20b.flv", "notes:part1.avi", "",
                                        "norvikplayer://a?v=1&t=2", "c://x.avi"})
                               << list({"https://example.com/a%20b.flv", "/home/ann/videos/notes:part1.avi",
                                        "norvikplayer://a?v=1&t=2", "/home/ann/videos/c:/x.avi"});
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
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_dir->path()));
        const QString name = ZBSingleInstance::defaultServerName();
        if (wasSet)
            qputenv("XDG_RUNTIME_DIR", saved);
        else
            qunsetenv("XDG_RUNTIME_DIR");
        QCOMPARE(QFileInfo(name).absolutePath(), QFileInfo(m_dir->path()).absoluteFilePath());
    }

    // Later starts hand their files and URLs to the first, also before it
    // listens; a plain start is handed over too, to bring the window forward.
    void handsStartsToTheRunningPlayer()
    {
        const QString folder = m_dir->filePath(QStringLiteral("videos"));
        QVERIFY(QDir().mkpath(folder));
        {
            ZBSingleInstance player(socketName());
            QVERIFY(!player.tryToHandOver({QStringLiteral("a.mp4")}));
            QVERIFY(player.isListening());
            QVERIFY(QFileInfo::exists(socketName()));
            QSignalSpy received(&player, &ZBSingleInstance::argumentsReceived);

            const QList<QStringList> starts{{QStringLiteral("clip.mp4"), QStringLiteral("sub/../film.mkv"),
                                             QStringLiteral("norvikplayer://www.example.com/page"),
                                             QStringLiteral("/elsewhere/movie.swf"), QStringLiteral("--quiet")},
                                            {},
                                            {QStringLiteral("/b.avi")}};
            for (int i = 0; i < int(starts.size()); ++i)
            {
                auto second = startPlayer(starts.at(i), folder);
                QVERIFY(finishesWithoutHelp(*second));
                QCOMPARE(second->exitCode(), 0);
                QCOMPARE(second->readAllStandardOutput(), QByteArray());
                if (i == 1)
                {
                    QCOMPARE(received.count(), 0);
                    player.listen();
                }
            }
            QCOMPARE(received.count(), 3);
            QCOMPARE(received.at(0).first().toStringList(),
                     QStringList({folder + QStringLiteral("/clip.mp4"), folder + QStringLiteral("/film.mkv"),
                                  QStringLiteral("norvikplayer://www.example.com/page"),
                                  QStringLiteral("/elsewhere/movie.swf")}));
            QCOMPARE(received.at(1).first().toStringList(), QStringList());
            QCOMPARE(received.at(2).first().toStringList(), QStringList{QStringLiteral("/b.avi")});
        }
        // A player that quits normally leaves nothing a later start must clear.
        QVERIFY(!QFileInfo::exists(socketName()));
    }

    void handsOverToAPlayerInAnotherProcess()
    {
        auto player = startPlayer({});
        QCOMPARE(nextLine(*player), QByteArray(PrimaryLine));

        ZBSingleInstance second(socketName());
        QVERIFY(second.tryToHandOver({QStringLiteral("relative.flv"), QStringLiteral("norvikplayer://x.example")}));
        QVERIFY(!second.isListening());
        QCOMPARE(parseList(nextLine(*player)), QStringList({QDir::currentPath() + QStringLiteral("/relative.flv"),
                                                            QStringLiteral("norvikplayer://x.example")}));
        stop(*player);
    }

    void takesOverTheSocketOfACrashedPlayer()
    {
        auto crashed = startPlayer({});
        QCOMPARE(nextLine(*crashed), QByteArray(PrimaryLine));
        ::kill(static_cast<pid_t>(crashed->processId()), SIGKILL);
        QVERIFY(crashed->waitForFinished(5000));
        // The crash left the socket behind, and nobody answers on it.
        QVERIFY(QFileInfo::exists(socketName()));
        QLocalSocket probe;
        probe.connectToServer(socketName());
        QVERIFY(!probe.waitForConnected(1000));

        ZBSingleInstance player(socketName());
        QVERIFY(!player.tryToHandOver({QStringLiteral("/mine.mp4")}));
        QVERIFY(player.isListening());
        QSignalSpy received(&player, &ZBSingleInstance::argumentsReceived);
        player.listen();
        auto second = startPlayer({QStringLiteral("/theirs.mp4")});
        QVERIFY(finishesWithoutHelp(*second));
        QCOMPARE(second->exitCode(), 0);
        QCOMPARE(received.count(), 1);
        QCOMPARE(received.first().first().toStringList(), QStringList{QStringLiteral("/theirs.mp4")});
    }

    // Neither a second listener nor a stranger's connection takes the
    // hand-overs from a living player.
    void aLivingPlayerKeepsItsName()
    {
        ZBSingleInstance player(socketName());
        QVERIFY(!player.tryToHandOver({}));
        QSignalSpy received(&player, &ZBSingleInstance::argumentsReceived);
        player.listen();

        ZBSingleInstance intruder(socketName());
        QSignalSpy intruderReceived(&intruder, &ZBSingleInstance::argumentsReceived);
        intruder.listen();
        QVERIFY(!intruder.isListening());
        QVERIFY(player.isListening());

        QLocalSocket stranger;
        stranger.connectToServer(socketName());
        QVERIFY(stranger.waitForConnected(1000));
        stranger.write(QByteArray("GET / HTTP/1.0\r\n\r\n"));
        stranger.flush();
        QTRY_COMPARE(stranger.state(), QLocalSocket::UnconnectedState);
        QCOMPARE(received.count(), 0);

        auto second = startPlayer({QStringLiteral("/c.mov")});
        QVERIFY(finishesWithoutHelp(*second));
        QCOMPARE(second->exitCode(), 0);
        QCOMPARE(received.count(), 1);
        QCOMPARE(intruderReceived.count(), 0);
    }

    void startsTogetherMakeOnePlayer()
    {
        std::vector<std::unique_ptr<QProcess>> starts;
        for (const char *file : {"/1.mp4", "/2.mp4", "/3.mp4", "/4.mp4"})
            starts.push_back(startPlayer({QString::fromLatin1(file)}));

        QProcess *player = nullptr;
        QDeadlineTimer deadline(20000);
        while (!deadline.hasExpired())
        {
            int finished = 0;
            for (const auto &start : starts)
            {
                if (start->state() == QProcess::NotRunning)
                    ++finished;
                else if (start->canReadLine() || start->waitForReadyRead(10))
                    player = start.get();
            }
            if (player && finished == int(starts.size()) - 1)
                break;
        }
        QVERIFY(player);
        for (const auto &start : starts)
        {
            if (start.get() != player)
            {
                QCOMPARE(start->exitStatus(), QProcess::NormalExit);
                QCOMPARE(start->exitCode(), 0);
            }
        }
        QCOMPARE(nextLine(*player), QByteArray(PrimaryLine));
        QStringList files;
        for (int i = 0; i < 3; ++i)
            files << parseList(nextLine(*player));
        stop(*player);
        // Every file of the others reached the one player, its own excepted.
        const int ownIndex = int(
            std::find_if(starts.begin(), starts.end(), [player](const auto &start) { return start.get() == player; }) -
            starts.begin());
        QStringList expected{QStringLiteral("/1.mp4"), QStringLiteral("/2.mp4"), QStringLiteral("/3.mp4"),
                             QStringLiteral("/4.mp4")};
        expected.removeAt(ownIndex);
        files.sort();
        QCOMPARE(files, expected);
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
