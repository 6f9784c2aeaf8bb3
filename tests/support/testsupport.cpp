#include "support/testsupport.h"

#include <QCoreApplication>
#include <QDir>

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
} // namespace nvktest
