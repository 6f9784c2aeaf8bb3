#include "support/stringtablefixture.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QXmlStreamWriter>

namespace nvktest
{
StringTableFixture::StringTableFixture()
{
    Q_ASSERT(m_dir.isValid());
}

bool StringTableFixture::canCompile()
{
    const QString lrelease = qEnvironmentVariable("NVK_LRELEASE");
    return !lrelease.isEmpty() && QFile::exists(lrelease);
}

QString StringTableFixture::sourcePath(const QString &language, const QString &table) const
{
    return QDir(m_dir.path()).filePath(language + QLatin1Char('/') + table + QStringLiteral(".ts"));
}

bool StringTableFixture::addRawSource(const QString &language, const QString &table, const QByteArray &content)
{
    QDir(m_dir.path()).mkpath(language);
    QFile file(sourcePath(language, table));
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
    QDir(m_dir.path()).mkpath(language);
    const QString path = sourcePath(language, table);
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
        {
            m_error = file.errorString();
            return false;
        }
        QXmlStreamWriter xml(&file);
        xml.setAutoFormatting(true);
        xml.writeStartDocument();
        xml.writeDTD(QStringLiteral("<!DOCTYPE TS>"));
        xml.writeStartElement(QStringLiteral("TS"));
        xml.writeAttribute(QStringLiteral("version"), QStringLiteral("2.1"));
        xml.writeStartElement(QStringLiteral("context"));
        xml.writeTextElement(QStringLiteral("name"), table);
        for (const auto &[key, text] : messages)
        {
            xml.writeStartElement(QStringLiteral("message"));
            xml.writeTextElement(QStringLiteral("source"), key);
            xml.writeStartElement(QStringLiteral("translation"));
            if (unfinishedKeys.contains(key))
                xml.writeAttribute(QStringLiteral("type"), QStringLiteral("unfinished"));
            xml.writeCharacters(text);
            xml.writeEndElement();
            xml.writeEndElement();
        }
        xml.writeEndElement();
        xml.writeEndElement();
        xml.writeEndDocument();
    }

    if (language == QLatin1String("English"))
        return true;

    if (!canCompile())
    {
        m_error = QStringLiteral("NVK_LRELEASE does not name the lrelease program");
        return false;
    }
    QProcess lrelease;
    const QString qm = QDir(m_dir.path()).filePath(language + QLatin1Char('/') + table + QStringLiteral(".qm"));
    lrelease.start(qEnvironmentVariable("NVK_LRELEASE"),
                   {QStringLiteral("-silent"), QStringLiteral("-nounfinished"), path, QStringLiteral("-qm"), qm});
    if (!lrelease.waitForFinished(60000) || lrelease.exitStatus() != QProcess::NormalExit || lrelease.exitCode() != 0)
    {
        m_error = QStringLiteral("lrelease failed: %1").arg(QString::fromLocal8Bit(lrelease.readAllStandardError()));
        return false;
    }
    return true;
}
} // namespace nvktest
