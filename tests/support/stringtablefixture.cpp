#include "support/stringtablefixture.h"

#include <QDir>
#include <QFile>
#include <QProcess>

namespace nvktest
{
bool StringTableFixture::canCompile()
{
    const QString lrelease = qEnvironmentVariable("NVK_LRELEASE");
    return !lrelease.isEmpty() && QFile::exists(lrelease);
}

QString StringTableFixture::path(const QString &language, const QString &table, const char *suffix) const
{
    QDir(m_dir.path()).mkpath(language);
    return QDir(m_dir.path()).filePath(language + QLatin1Char('/') + table + QLatin1String(suffix));
}

bool StringTableFixture::addRawSource(const QString &language, const QString &table, const QByteArray &content)
{
    QFile file(path(language, table, ".ts"));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
    {
        m_error = file.errorString();
        return false;
    }
    return true;
}

bool StringTableFixture::addTable(const QString &language, const QString &table, const Messages &messages,
                                  const QStringList &unfinishedKeys)
{
    QString source = QStringLiteral("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<!DOCTYPE TS>\n"
                                    "<TS version=\"2.1\"><context><name>%1</name>\n")
                         .arg(table.toHtmlEscaped());
    for (const auto &[key, text] : messages)
        source +=
            QStringLiteral("<message><source>%1</source><translation%2>%3</translation></message>\n")
                .arg(key.toHtmlEscaped(), QLatin1String(unfinishedKeys.contains(key) ? " type=\"unfinished\"" : ""),
                     text.toHtmlEscaped());
    source += QStringLiteral("</context></TS>\n");
    if (!addRawSource(language, table, source.toUtf8()) || language == QLatin1String("English"))
        return m_error.isEmpty();

    if (!canCompile())
    {
        m_error = QStringLiteral("NVK_LRELEASE does not name the lrelease program");
        return false;
    }
    QProcess lrelease;
    lrelease.start(qEnvironmentVariable("NVK_LRELEASE"),
                   {QStringLiteral("-silent"), QStringLiteral("-nounfinished"), path(language, table, ".ts"),
                    QStringLiteral("-qm"), path(language, table, ".qm")});
    if (!lrelease.waitForFinished(60000) || lrelease.exitStatus() != QProcess::NormalExit || lrelease.exitCode() != 0)
    {
        m_error = QStringLiteral("lrelease failed: %1").arg(QString::fromLocal8Bit(lrelease.readAllStandardError()));
        return false;
    }
    return true;
}
} // namespace nvktest
