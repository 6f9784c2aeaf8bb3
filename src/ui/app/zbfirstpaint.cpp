#include "ui/app/zbfirstpaint.h"

#include <QEvent>
#include <QFile>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <ctime>
#include <unistd.h>

namespace
{
double nowMs(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

// Field 22 of /proc/self/stat, in clock ticks since boot; the command name
// before it may hold spaces, so counting starts after its closing bracket.
double kernelStartMs()
{
    QFile stat(QStringLiteral("/proc/self/stat"));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = stat.readAll();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 20)
        return -1;
    return fields.at(19).toDouble() * 1e3 / double(sysconf(_SC_CLK_TCK));
}
} // namespace

ZBFirstPaint::ZBFirstPaint(QWidget *window, QObject *parent)
    : QObject(parent)
    , m_window(window)
{
    m_window->installEventFilter(this);
}

double ZBFirstPaint::millisecondsSinceProcessStart()
{
    bool stamped = false;
    const qint64 startNs = qEnvironmentVariable("NVK_REPORT_FIRST_PAINT").toLongLong(&stamped);
    if (stamped && startNs > 1)
        return nowMs(CLOCK_MONOTONIC) - double(startNs) / 1e6;
    const double start = kernelStartMs();
    return start < 0 ? -1 : nowMs(CLOCK_BOOTTIME) - start;
}

bool ZBFirstPaint::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window && event->type() == QEvent::Paint && !m_painted)
    {
        m_painted = true;
        m_window->removeEventFilter(this);
        // The window paints before its children and the frame is flushed
        // after all of them: a zero timer runs once that frame is out.
        QTimer::singleShot(0, this, [this]() {
            mark("first paint");
            if (qEnvironmentVariableIsSet("NVK_REPORT_FIRST_PAINT"))
            {
                std::fprintf(stderr, "nvk-first-paint-ms %.1f\n", millisecondsSinceProcessStart());
                std::fflush(stderr);
            }
            Q_EMIT painted();
        });
    }
    return QObject::eventFilter(watched, event);
}

void ZBFirstPaint::mark(const char *what)
{
    static const bool on = qEnvironmentVariableIsSet("NVK_STARTUP_MARKS");
    if (on)
        std::fprintf(stderr, "nvk-mark %6.1f %s\n", millisecondsSinceProcessStart(), what);
}
