#pragma once

#include <optional>

#include <QByteArray>
#include <QString>
#include <QVariant>

// XML property lists, the dictionary file format playlist files are written
// in, read and written without any platform library so that files pass
// between this program and other property-list readers unchanged.
//
// Values map to and from QVariant:
//   <dict>     QVariantMap (QVariantHash is written too)
//   <array>    QVariantList (QStringList is written too)
//   <string>   QString
//   <integer>  qlonglong, or qulonglong above its range
//   <real>     double
//   <true/>, <false/>  bool
//   <date>     QDateTime in UTC, whole seconds
//   <data>     QByteArray
// Anything else is refused with a message that says what and where, rather
// than being guessed at or dropped.
class ZBPropertyList
{
public:
    ZBPropertyList() = delete;

    // A hostile file must not exhaust the stack.
    static constexpr int MaximumDepth = 512;

    // The document's value; nothing when it is not a property list, with
    // `error` saying where ("line 4, column 9: ...") and why.
    static std::optional<QVariant> read(const QByteArray &document, QString *error = nullptr);
    // The same for a file; `error` then names the file as well.
    static std::optional<QVariant> readFile(const QString &path, QString *error = nullptr);

    // A complete document: XML declaration, the property list DOCTYPE and a
    // <plist version="1.0"> root. Nothing when some value has no property
    // list form (an unsupported type, an invalid date, text XML cannot carry),
    // with `error` naming the value's place, e.g. "at 3/Added".
    static std::optional<QByteArray> write(const QVariant &value, QString *error = nullptr);
    // Builds the whole document before the file is opened, so a value that
    // cannot be written leaves an existing file as it was.
    static bool writeFile(const QString &path, const QVariant &value, QString *error = nullptr);

    // The date element holds whole seconds: "2024-03-05T14:05:09Z".
    static QString dateText(const QDateTime &date);
    // Also the shortened forms other writers use, from "2024-03-05T14:05Z"
    // down to "2024Z"; invalid for anything else.
    static QDateTime dateFromText(QStringView text);
};
