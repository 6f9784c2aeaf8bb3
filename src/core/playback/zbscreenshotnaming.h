#pragma once

#include <QString>

// Where screenshots go: one folder per track below the screenshot folder,
// "<track Name> screenshots", holding "screenshot.tiff", "screenshot2.tiff",
// ... in the user's language. A shot never replaces an existing file.
class ZBScreenshotNaming
{
public:
    ZBScreenshotNaming() = delete;

    // "tiff" whatever image format the settings choose: existing folders of
    // shots keep one naming.
    static QString fileExtension();

    // The first of "<folder>/<name>.<extension>", "<folder>/<name>2.<extension>",
    // "<folder>/<name>3.<extension>", ... that does not exist yet.
    static QString addSuffixForFileName(const QString &name, const QString &extension, const QString &folder);

    // A track Name made fit to be one file name: path separators, control
    // characters and the characters FAT, NTFS and SMB shares refuse
    // (\ : * ? " < > |) become "_", surrounding blanks go, and the result is
    // cut to a length every file system takes. A name left empty (or "." or
    // "..") becomes the localised "screenshot".
    static QString safeFileName(const QString &name);

    // "<screenshotFolder>/<safe track Name> <localised "screenshots">".
    static QString trackFolder(const QString &screenshotFolder, const QString &trackName);
    // The free path for the next shot of a track, in its track folder.
    static QString nextShotPath(const QString &screenshotFolder, const QString &trackName);
};
