#pragma once

#include <QObject>

class QWidget;

// Tells once when a window's first frame has been painted and handed to the
// display, so that work the window does not need can wait until the user
// sees it. A timer started after show() is not enough: it can run before the
// window is exposed and painted.
//
// With NVK_REPORT_FIRST_PAINT set, the moment is also written to standard
// error as "nvk-first-paint-ms <milliseconds since the process started>", for
// the start-up benchmark. The variable may hold the CLOCK_MONOTONIC time in
// nanoseconds at which the caller started the process (finer than the
// kernel's start time, which counts in ticks of 10 ms).
class ZBFirstPaint : public QObject
{
    Q_OBJECT

public:
    explicit ZBFirstPaint(QWidget *window, QObject *parent = nullptr);

    bool isPainted() const { return m_painted; }
    // Milliseconds since the process started, from the variable's stamp or
    // from the kernel's record of the process.
    static double millisecondsSinceProcessStart();
    // With NVK_STARTUP_MARKS set, writes "nvk-mark <milliseconds> <what>" to
    // standard error: where a start spends its time, step by step, the first
    // paint included.
    static void mark(const char *what);

Q_SIGNALS:
    // After the first frame has been painted and flushed; emitted once.
    void painted();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *m_window;
    bool m_painted = false;
};
