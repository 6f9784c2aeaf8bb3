#pragma once

#include <QString>
#include <QStringList>

// The kinds of file the player takes and the name helpers every part of the
// program uses to tell them apart. A track's type is its file name's
// extension as written (or "exe" for a projector); types compare without
// regard to case.
class ZBMediaTypes
{
public:
    // The types offered by open panels and accepted by drops, in menu order.
    // Every entry is a lower-case extension except "'APPL'", the classic Mac
    // file type of an application, written with its quotes.
    static QStringList getSupportedFileTypes();

    // The supported types plus "3g2": such files are taken when dropped or
    // imported through a folder, but open panels do not offer them.
    static bool isRegisteredType(const QString &extension);

    // The text after the last "."; empty for an empty input and for one that
    // ends in ".". An input without any "." gives the input minus its first
    // character: callers have always relied on that, so it stays.
    static QString getFileType(const QString &path);

    // The text after the last "/", the input itself without one, "unknown"
    // when nothing is left.
    static QString getFileNameFromPath(const QString &path);

    // The name without its last ".part"; a name without "." unchanged;
    // "unknown" when nothing is left (".mp4").
    static QString getFileNameWithoutExtension(const QString &name);

    // The extension of the path's file name as written, empty when there is
    // none. Unlike getFileType() there is no quirk here.
    static QString pathExtension(const QString &path);
};
