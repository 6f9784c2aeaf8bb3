#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// Small helpers shared by the test executables.
namespace nvktest
{
// A throw-away folder that also serves as the application's data folder, so a
// test never touches the real library of the user running it.
class DataDir
{
public:
    DataDir();
    QString path() const { return m_dir.path(); }
    QString filePath(const QString &name) const { return m_dir.filePath(name); }

private:
    QTemporaryDir m_dir;
};

// Folder of the built executables (norvikctl, test helpers).
QString binaryPath(const QString &name);

// What a run of norvikctl left behind: its exit code (-1 when it crashed or
// timed out) and what it wrote to stdout and stderr.
struct CtlResult
{
    int code;
    QString out;
    QString err;
};

// Runs norvikctl on the library in `dataDir`, never the user's.
CtlResult runCtl(const QString &dataDir, const QStringList &arguments, int timeoutMs = 120000);
// What a run that must succeed printed, trimmed; empty (and the reason
// logged) when it failed, so the test's comparison fails with it.
QString ctlOutput(const QString &dataDir, const QStringList &arguments);
} // namespace nvktest
