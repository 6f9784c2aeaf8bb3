// Start-up: from process start to the main window's first painted frame,
// for the player with an empty library, 100,000 and 1,000,000 tracks, against an
// empty Qt main window started alternately in the same run (bare_window), and
// beside a window of the same kinds of widgets with no program behind them
// (bare_window --widgets): what Qt itself spends on such a window.
// Each start gets fresh data, settings and runtime folders. The programs
// report their first paint when NVK_REPORT_FIRST_PAINT holds the
// CLOCK_MONOTONIC time at which they were started, which stamp_exec puts
// there just before it execs them. Prints medians of 9 starts
// and the ratios.
//
// Needs a display: run it under `xvfb-run -a -s "-screen 0 1280x1024x24"`;
// `scripts/dev bench` does.
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>

#include "library/zblibrarycontroller.h"
#include "util/zbadditionalmethods.h"

namespace
{
constexpr int Runs = 9;
constexpr unsigned long SettleMs = 400;
const QString LibraryFolder = QStringLiteral("Quillon Software/Norvik Player");

const char *const Words[] = {"Summer", "Night", "Café", "Robot", "River", "Ocean", "Dragon", "Space"};
const char *const Types[] = {"mp4", "mkv", "avi", "mov", "swf", "flv", "wmv", "rm"};

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values.at(values.size() / 2);
}

// A library the way the program's own core writes it, in one transaction.
void populate(const QString &folder, int tracks)
{
    ZBLibraryController library;
    library.openStore(folder);
    library.initLibrary();
    QRandomGenerator random(20261124);
    ZBObjectContext *context = library.managedObjectContext();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (int i = 0; i < tracks; ++i)
    {
        const QString name =
            QStringLiteral("%1 %2 %3").arg(QString::fromUtf8(Words[random.bounded(8)]), Words[random.bounded(8)]).arg(i);
        const QString type = QString::fromLatin1(Types[random.bounded(8)]);
        ZBItem *item = context->insertItem();
        item->setItemUUID(ZBAdditionalMethods::generateUUID());
        item->setName(name);
        item->setPath(QStringLiteral("/home/user/Videos/%1/%2.%3").arg(i % 97).arg(name, type));
        item->setType(type);
        item->setLengthValue(random.bounded(7200));
        item->setAdded(now.addSecs(-random.bounded(90 * 86400)));
    }
    library.save();
}

// Milliseconds from the start to the first paint, or -1.
double timeStart(const QString &program, const QString &libraryTemplate, const QStringList &arguments = {})
{
    QTemporaryDir home;
    for (const char *sub : {"data", "config", "cache", "run"})
        QDir(home.path()).mkpath(QString::fromLatin1(sub));
    QFile::setPermissions(home.filePath(QStringLiteral("run")), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (!libraryTemplate.isEmpty())
    {
        const QString target = home.filePath(QStringLiteral("data/") + LibraryFolder);
        QDir().mkpath(target);
        for (const QString &name : QDir(libraryTemplate).entryList(QDir::Files))
            QFile::copy(QDir(libraryTemplate).filePath(name), QDir(target).filePath(name));
    }
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    env.insert(QStringLiteral("XDG_CACHE_HOME"), home.filePath(QStringLiteral("cache")));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.filePath(QStringLiteral("run")));
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setReadChannel(QProcess::StandardError);
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(NVK_STAMP_EXEC_PATH), QStringList{program} + arguments);
    double ms = -1;
    QByteArray seen;
    while (ms < 0 && process.waitForReadyRead(20000))
    {
        seen += process.readAllStandardError();
        const qsizetype at = seen.indexOf("nvk-first-paint-ms ");
        if (at >= 0 && seen.indexOf('\n', at) > at)
            ms = seen.mid(at + 19, seen.indexOf('\n', at) - at - 19).toDouble();
    }
    // With NVK_STARTUP_MARKS set, both programs mark their steps: one line
    // per start.
    if (qEnvironmentVariableIsSet("NVK_STARTUP_MARKS"))
        std::printf("%s\n", seen.replace('\n', ' ').constData());
    // The player quits on SIGTERM the way its Quit command does.
    process.terminate();
    if (!process.waitForFinished(10000))
    {
        process.kill();
        process.waitForFinished();
    }
    // The display server goes on tearing the last window down for a while
    // after its program has gone: a start right behind it was slowed by
    // that, and the bare window most, which flattered the ratios.
    QThread::msleep(SettleMs);
    return ms;
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
    {
        std::printf("bench_startup needs a display: run it under xvfb-run\n");
        return 1;
    }
    // NVK_BENCH_PLAYER names another build of the player, to compare.
    const QString player = qEnvironmentVariable("NVK_BENCH_PLAYER", QStringLiteral(NVK_PLAYER_PATH));
    const QString bare = QStringLiteral(NVK_BARE_WINDOW_PATH);
    QTemporaryDir templates;
    struct Case
    {
        const char *name;
        int tracks;
        double target;
    };
    // A first argument caps the library size (`bench_startup 100000` skips
    // the million, whose library takes a minute or two to write).
    const int largest = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 1000000;
    const Case allCases[] = {
        {"empty library", 0, 1.5}, {"100,000 tracks", 100000, 1.5}, {"1,000,000 tracks", 1000000, 2.0}};
    QList<Case> cases;
    for (const Case &c : allCases)
    {
        if (c.tracks <= largest)
            cases << c;
    }
    std::printf("%-16s %10s %10s %7s %7s %-7s %10s %8s\n", "case", "player ms", "bare ms", "ratio", "target", "",
                "widgets ms", "ratio");
    bool allMet = true;
    for (const Case &c : cases)
    {
        QString libraryTemplate;
        if (c.tracks > 0)
        {
            libraryTemplate = templates.filePath(QString::number(c.tracks));
            populate(libraryTemplate, c.tracks);
        }
        QList<double> playerMs;
        QList<double> bareMs;
        QList<double> widgetsMs;
        for (int i = 0; i < Runs; ++i)
        {
            bareMs << timeStart(bare, QString());
            playerMs << timeStart(player, libraryTemplate);
            widgetsMs << timeStart(bare, QString(), {QStringLiteral("--widgets")});
        }
        if (playerMs.contains(-1) || bareMs.contains(-1) || widgetsMs.contains(-1))
        {
            std::printf("%-16s a start did not report its first paint\n", c.name);
            allMet = false;
            continue;
        }
        const double ratio = median(playerMs) / median(bareMs);
        allMet = allMet && ratio <= c.target;
        std::printf("%-16s %10.1f %10.1f %6.2fx %6.1fx %-7s %10.1f %7.2fx\n", c.name, median(playerMs),
                    median(bareMs), ratio, c.target, ratio <= c.target ? "met" : "NOT MET", median(widgetsMs),
                    median(widgetsMs) / median(bareMs));
    }
    // A missed target is printed, not an error: the other benchmarks still run.
    std::printf(allMet ? "all targets met\n" : "some targets not met\n");
    return 0;
}
