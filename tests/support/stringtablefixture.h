#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace nvktest
{
// A throw-away set of string tables laid out like the program's resources
// (<root>/<Language>/<Table>.ts, plus the compiled .qm for languages other
// than English), for pointing ZBLocalizer::setResourceRoot() at.
class StringTableFixture
{
public:
    using Messages = QList<QPair<QString, QString>>;

    QString root() const { return m_dir.path(); }

    // Writes the table; messages whose key is listed in unfinishedKeys are
    // marked unfinished, as Linguist does for drafts. Tables of languages
    // other than English are compiled like the build compiles them, with
    // lrelease (found through the NVK_LRELEASE environment variable) leaving
    // drafts out. False with errorString() set when the table could not be
    // written or compiled.
    bool addTable(const QString &language, const QString &table, const Messages &messages,
                  const QStringList &unfinishedKeys = {});
    // Writes arbitrary bytes as the table's source, for unreadable tables.
    bool addRawSource(const QString &language, const QString &table, const QByteArray &content);

    QString errorString() const { return m_error; }

    static bool canCompile();

private:
    // The table's file with the given suffix; makes the language's folder.
    QString path(const QString &language, const QString &table, const char *suffix) const;

    QTemporaryDir m_dir;
    QString m_error;
};
} // namespace nvktest
