// Download speed and memory: one large file from the local test site over
// loopback, fetched by ZBDownloadTask and by "curl -o" in the same run.
// Goals: at least 0.9x curl's speed, resident memory growth under 64 MB.
//
//   build/bench/bench_download [MEGABYTES [ROUNDS]]     (default 1024 MB, 3 rounds)

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

#include "support/testsite.h"
#include "web/zbdownloadtask.h"

namespace
{
// A field of /proc/self/status in kB.
qint64 statusKb(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n'))
    {
        if (line.startsWith(field))
            return line.mid(qstrlen(field) + 1).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

double mbPerSecond(qint64 bytes, qint64 ms)
{
    return ms > 0 ? bytes / 1048576.0 / (ms / 1000.0) : 0;
}


// One fetch by the task; its time in ms, -1 on failure.
qint64 fetchWithTask(QCoreApplication &app, const QUrl &url, const QString &target, qint64 size)
{
    ZBDownloadTask task(url, target);
    QString reason;
    QObject::connect(&task, &ZBDownloadTask::finished, &app, &QCoreApplication::quit);
    QObject::connect(&task, &ZBDownloadTask::failed, &app, [&](const QString &why) {
        reason = why;
        app.quit();
    });
    QElapsedTimer clock;
    clock.start();
    task.start();
    app.exec();
    const qint64 ms = clock.elapsed();
    const bool ok = reason.isEmpty() && QFileInfo(target).size() == size;
    if (!ok)
        std::fprintf(stderr, "download failed: %s\n", qPrintable(reason));
    QFile::remove(target);
    return ok ? ms : -1;
}

qint64 fetchWithCurl(const QString &curl, const QUrl &url, const QString &target)
{
    QProcess process;
    QElapsedTimer clock;
    clock.start();
    process.start(curl, {QStringLiteral("-s"), QStringLiteral("-o"), target, url.toString()});
    const bool ok = process.waitForFinished(-1) && process.exitCode() == 0;
    const qint64 ms = clock.elapsed();
    QFile::remove(target);
    return ok ? ms : -1;
}

qint64 median(QList<qint64> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}
} // namespace

// Rounds alternate between the two clients, so that the page cache and the
// other load of the machine treat them alike; the medians are compared.
int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const qint64 size = (argc > 1 ? QByteArray(argv[1]).toLongLong() : 1024) * 1048576;
    const int rounds = argc > 2 ? qMax(1, QByteArray(argv[2]).toInt()) : 3;
    QTemporaryDir folder;
    nvktest::TestSite site(true); // its own thread, so the server does not share the client's loop
    nvktest::TestSite::Route route;
    route.generatedSize = size;
    site.addRoute("/big.bin", route);
    const QUrl url = site.url(QStringLiteral("/big.bin"));
    const QString curl = QStandardPaths::findExecutable(QStringLiteral("curl"));

    const qint64 rssBefore = statusKb("VmRSS:");
    const qint64 hwmBefore = statusKb("VmHWM:");
    QList<qint64> taskMs;
    QList<qint64> curlMs;
    for (int round = 0; round < rounds; ++round)
    {
        taskMs << fetchWithTask(app, url, folder.filePath(QStringLiteral("task.bin")), size);
        if (!curl.isEmpty())
            curlMs << fetchWithCurl(curl, url, folder.filePath(QStringLiteral("curl.bin")));
        if (taskMs.last() < 0 || (!curlMs.isEmpty() && curlMs.last() < 0))
            return 1;
    }
    const qint64 rssAfter = statusKb("VmRSS:");
    const qint64 hwmAfter = statusKb("VmHWM:");
    const double taskSpeed = mbPerSecond(size, median(taskMs));
    std::printf("file                  %lld MB over loopback, %d rounds, medians\n", size / 1048576, rounds);
    std::printf("ZBDownloadTask        %8.1f MB/s  (%lld ms)\n", taskSpeed, median(taskMs));
    std::printf("VmRSS growth          %8.1f MB   (goal < 64)\n", (rssAfter - rssBefore) / 1024.0);
    std::printf("VmHWM growth          %8.1f MB   (peak %.1f MB)\n", (hwmAfter - hwmBefore) / 1024.0,
                hwmAfter / 1024.0);
    if (curl.isEmpty())
    {
        std::printf("curl                  not installed, comparison skipped\n");
        return 0;
    }
    const double curlSpeed = mbPerSecond(size, median(curlMs));
    std::printf("curl -o               %8.1f MB/s  (%lld ms)\n", curlSpeed, median(curlMs));
    std::printf("ratio task / curl     %8.2f      (goal >= 0.9)\n", taskSpeed / curlSpeed);
    return 0;
}
