#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

// Where downloaded files go. Every folder and file name made from a page
// title, a resource title or a URL passes through here, and whatever those
// contain (".." components, slashes of either kind, control characters, NUL,
// names longer than the file system takes, nothing at all), the result stays
// inside the downloads folder it was planned under.
//
// Layout below the downloads folder: one folder per captured page (its
// cleaned title), nested for pages found inside pages; a Flash movie with
// resources of its own gets a folder named after it in which the movie and
// everything it loaded keep the site's own directory layout ("host/dir/...")
// so that the movie finds its relative resources when played from disk, and
// a "readme.txt" beside them lists every saved file.
class ZBDownloadPaths
{
public:
    ZBDownloadPaths() = delete;

    // Every "'", "/", "?" and ":" becomes a blank, in that order; nothing
    // else changes ("a/b:c?" gives "a b c ", trailing blank included).
    static QString terminateIllegalSymbolsInFilePath(const QString &path);

    // One safe path component: terminateIllegalSymbolsInFilePath() and
    // besides every backslash and control character (NUL included) becomes
    // a blank; a name of dots and blanks only (".", "..") and an empty one
    // give `fallback`; at most maxNameBytes() bytes of UTF-8, cut on a
    // character boundary with the extension (a last ".xyz" of up to 16
    // bytes) kept.
    static QString safeComponent(const QString &name, const QString &fallback = QStringLiteral("untitled"));

    // The folder of a resource: the downloads folder plus the cleaned titles
    // of its ancestors from the topmost page root down to its direct parent
    // (for a page root, its own title alone). Not created.
    static QString folderForTitles(const QString &downloadsFolder, const QStringList &titlesFromRoot);

    // The host and directory part of a URL: cut at the first "&", then at the
    // first "?", "http://" and "https://" dropped, the part before the last
    // "/" kept (all of it when there is none).
    static QString getFullURLPath(const QString &url);
    // The same as a relative path that cannot leave its base: every component
    // made safe, "." dropped, ".." taking back the component before it and
    // never more.
    static QString safeURLPath(const QString &url);

    // Where a Flash movie with resources and each of those resources go:
    // folder / cleaned movie title / safeURLPath(url of the file itself).
    static QString flashPackageFolder(const QString &folder, const QString &flashTitle, const QString &fileURL);
    // "readme.txt" in a Flash package folder and its text: every saved path,
    // one per line.
    static QString readmePath(const QString &packageFolder);
    static QByteArray readmeText(const QStringList &savedPaths);
    // Writes the readme atomically; false with the reason in *error.
    static bool writeReadme(const QString &packageFolder, const QStringList &savedPaths, QString *error);

    // The file name for a download: a stream of a video-sharing service
    // ("videoplayback?" on googlevideo.com or youtube.com) is "<title>.flv";
    // otherwise the URL is cut at the first line end, blank, "?" and ";" in
    // turn and the part after the last "/" kept; when that still holds
    // "http://" its first 8 characters go; nothing left gives "index.html";
    // "get_video" and the types "on2", "h264" and "iflv" become
    // "<title>.flv". Not yet made safe: pass it through safeComponent().
    static QString getFileNameFromURL(const QString &url, const QString &proposedTitle);

    // The first free path for a file: "folder/name.ext", then
    // "folder/name2.ext", "name3.ext" and so on. A path counts as taken when
    // a file exists there or it is in `reserved` (the targets of downloads
    // still running). The name is made safe and shortened so that the whole
    // file name plus the ".part" of a running download fits the file system.
    // An empty extension gives names without a dot.
    static QString addSuffixForDownload(const QString &name, const QString &extension, const QString &folder,
                                        const QSet<QString> &reserved = {});

    // The longest file name the file systems in use take, in bytes.
    static constexpr int maxNameBytes() { return 255; }
    // What a running download adds to the name of its file.
    static QString partSuffix() { return QStringLiteral(".part"); }

    // True when `path` lies strictly inside `folder` once both are cleaned.
    static bool isInside(const QString &folder, const QString &path);
};
