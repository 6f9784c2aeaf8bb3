#include "web/zbdownloadpaths.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>

#include "playback/zbmediatypes.h"

namespace
{
// An extension longer than this is rather part of a long name than a type.
constexpr int kMaxExtensionBytes = 16;

int utf8Length(QStringView text)
{
    return int(text.toUtf8().size());
}

// The longest start of `text` that takes at most `bytes` bytes of UTF-8,
// never splitting a surrogate pair.
QString leftUtf8(const QString &text, int bytes)
{
    int used = 0;
    qsizetype end = 0;
    while (end < text.size())
    {
        const qsizetype step = text.at(end).isHighSurrogate() && end + 1 < text.size() ? 2 : 1;
        const int size = utf8Length(QStringView(text).mid(end, step));
        if (used + size > bytes)
            break;
        used += size;
        end += step;
    }
    return text.left(end);
}

bool onlyDotsAndBlanks(const QString &name)
{
    for (const QChar c : name)
    {
        if (c != u'.' && !c.isSpace())
            return false;
    }
    return true;
}

// `name` cut to fit `bytes` with its extension kept whole.
QString fitName(const QString &name, int bytes)
{
    if (utf8Length(name) <= bytes)
        return name;
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot > 0)
    {
        const QString extension = name.mid(dot);
        const int extensionBytes = utf8Length(extension);
        if (extensionBytes <= kMaxExtensionBytes + 1)
            return leftUtf8(name.left(dot), bytes - extensionBytes) + extension;
    }
    return leftUtf8(name, bytes);
}

QString cleanComponentCharacters(const QString &name)
{
    QString result = ZBDownloadPaths::terminateIllegalSymbolsInFilePath(name);
    for (QChar &c : result)
    {
        if (c == u'\\' || c.category() == QChar::Other_Control)
            c = u' ';
    }
    return result;
}
} // namespace

QString ZBDownloadPaths::terminateIllegalSymbolsInFilePath(const QString &path)
{
    QString result = path;
    for (const QChar c : {u'\'', u'/', u'?', u':'})
        result.replace(c, u' ');
    return result;
}

QString ZBDownloadPaths::safeComponent(const QString &name, const QString &fallback)
{
    const QString cleaned = cleanComponentCharacters(name);
    if (onlyDotsAndBlanks(cleaned))
        return fallback;
    const QString fitted = fitName(cleaned, maxNameBytes());
    return onlyDotsAndBlanks(fitted) ? fallback : fitted;
}

QString ZBDownloadPaths::folderForTitles(const QString &downloadsFolder, const QStringList &titlesFromRoot)
{
    QString folder = downloadsFolder;
    for (const QString &title : titlesFromRoot)
        folder += u'/' + safeComponent(title);
    return QDir::cleanPath(folder);
}

QString ZBDownloadPaths::getFullURLPath(const QString &url)
{
    QString path = url.section(u'&', 0, 0).section(u'?', 0, 0);
    for (const QLatin1String scheme : {QLatin1String("http://"), QLatin1String("https://")})
    {
        const qsizetype at = path.indexOf(scheme);
        if (at >= 0)
            path = path.mid(at + scheme.size());
    }
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash < 0 ? path : path.left(slash);
}

QString ZBDownloadPaths::safeURLPath(const QString &url)
{
    QStringList kept;
    for (const QString &part : getFullURLPath(url).split(QRegularExpression(QStringLiteral("[/\\\\]"))))
    {
        if (part.isEmpty() || part == u".")
            continue;
        if (part == u"..")
        {
            if (!kept.isEmpty())
                kept.removeLast();
            continue;
        }
        kept << safeComponent(part, QStringLiteral("_"));
    }
    return kept.join(u'/');
}

QString ZBDownloadPaths::flashPackageFolder(const QString &folder, const QString &flashTitle, const QString &fileURL)
{
    const QString urlPath = safeURLPath(fileURL);
    QString result = folder + u'/' + safeComponent(flashTitle);
    if (!urlPath.isEmpty())
        result += u'/' + urlPath;
    return QDir::cleanPath(result);
}

QString ZBDownloadPaths::readmePath(const QString &packageFolder)
{
    return packageFolder + QStringLiteral("/readme.txt");
}

QByteArray ZBDownloadPaths::readmeText(const QStringList &savedPaths)
{
    QByteArray text;
    for (const QString &path : savedPaths)
        text += path.toUtf8() + '\n';
    return text;
}

bool ZBDownloadPaths::writeReadme(const QString &packageFolder, const QStringList &savedPaths, QString *error)
{
    QSaveFile file(readmePath(packageFolder));
    const QByteArray text = readmeText(savedPaths);
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit())
        return true;
    if (error)
        *error = file.errorString();
    return false;
}

QString ZBDownloadPaths::getFileNameFromURL(const QString &url, const QString &proposedTitle)
{
    static const QRegularExpression streamPattern(
        QStringLiteral("^(https?://)?([^/?]*\\.)?(googlevideo|youtube)\\.com/videoplayback\\?"),
        QRegularExpression::CaseInsensitiveOption);
    const QString flvName = proposedTitle + QStringLiteral(".flv");
    if (streamPattern.match(url).hasMatch())
        return flvName;

    QString name = url;
    for (const QChar stop : {u'\n', u' ', u'?', u';'})
        name = name.section(stop, 0, 0);
    name = name.mid(name.lastIndexOf(u'/') + 1);
    if (name.contains(QLatin1String("http://")))
        name = name.mid(8);
    if (name.isEmpty())
        return QStringLiteral("index.html");
    const QString type = ZBMediaTypes::getFileType(name);
    if (name.compare(QLatin1String("get_video"), Qt::CaseInsensitive) == 0 || type == u"on2" || type == u"h264" ||
        type == u"iflv")
        return flvName;
    return name;
}

QString ZBDownloadPaths::addSuffixForDownload(const QString &name, const QString &extension, const QString &folder,
                                              const QSet<QString> &reserved)
{
    const QString safeExtension = extension.isEmpty() ? QString() : safeComponent(extension, QString());
    const QString dotExtension = safeExtension.isEmpty() ? QString() : u'.' + safeExtension;
    // Room for the counter and for ".part" while the file is still arriving.
    const int room = maxNameBytes() - utf8Length(dotExtension) - utf8Length(partSuffix()) - 6;
    const QString base = leftUtf8(safeComponent(name), qMax(room, 1));
    const auto taken = [&reserved](const QString &path) {
        return reserved.contains(path) || QFileInfo(path).isSymLink() || QFileInfo::exists(path);
    };
    // Plain joins: a name may itself hold "%1" and the like.
    QString path = folder + u'/' + base + dotExtension;
    for (int counter = 2; taken(path); ++counter)
        path = folder + u'/' + base + QString::number(counter) + dotExtension;
    return path;
}

bool ZBDownloadPaths::isInside(const QString &folder, const QString &path)
{
    const QString base = QDir::cleanPath(QDir(folder).absolutePath());
    const QString target = QDir::cleanPath(QDir(folder).absoluteFilePath(path));
    return target.startsWith(base + u'/') && target.size() > base.size() + 1;
}
