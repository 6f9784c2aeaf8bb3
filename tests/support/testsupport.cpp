#include "support/testsupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>

namespace nvktest
{
DataDir::DataDir()
{
    Q_ASSERT(m_dir.isValid());
}

QString binaryPath(const QString &name)
{
    const QString testBin = qEnvironmentVariable("NVK_TEST_BIN_DIR");
    if (!testBin.isEmpty() && QFileInfo::exists(QDir(testBin).filePath(name)))
        return QDir(testBin).filePath(name);
    const QString bin = qEnvironmentVariable("NVK_BIN_DIR");
    if (!bin.isEmpty())
        return QDir(bin).filePath(name);
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

CtlResult runCtl(const QString &dataDir, const QStringList &arguments, int timeoutMs)
{
    QProcess process;
    process.start(binaryPath(QStringLiteral("norvikctl")), QStringList{QStringLiteral("--data-dir"), dataDir} + arguments);
    if (!process.waitForFinished(timeoutMs))
    {
        process.kill();
        process.waitForFinished(5000);
        return {-1, {}, QStringLiteral("timed out")};
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}
QString ctlOutput(const QString &dataDir, const QStringList &arguments)
{
    const CtlResult result = runCtl(dataDir, arguments);
    if (result.code != 0)
        qWarning() << arguments << result.err;
    return result.code == 0 ? result.out.trimmed() : QString();
}
} // namespace nvktest
