#pragma once

#include <QByteArray>
#include <QHash>
#include <QMutex>
#include <QString>
#include <QUrl>
#include <QWebEngineUrlRequestJob>
#include <QWebEngineUrlSchemeHandler>

// The private URL scheme the Flash engine's page lives in. One handler
// serves three things:
//
//   nvkflash://player/app/...    the host page, its script, the engine's
//                                files and our own host movies, from the
//                                engine's asset folder
//   nvkflash://player/fs/<path>  files of the file system, so that a movie's
//                                relative loads resolve among the files
//                                beside it
//   prepared entries             bytes the engine made for one address (a
//                                movie with frame control, a wrapper, a
//                                movie taken out of a projector), served in
//                                place of the file there
//
// With local security on, a movie may read only inside its own folder (its
// base); with it off, any file this user can read.
class ZBFlashSchemeHandler : public QWebEngineUrlSchemeHandler
{
    Q_OBJECT

public:
    static constexpr const char *SchemeName = "nvkflash";
    static constexpr const char *Host = "player";

    // Must run before the QApplication is constructed.
    static void registerScheme();

    // The folder with host.html, host.js, ruffle/ and the host movies:
    // NVK_FLASH_DIR when set, then the installed share folder next to the
    // program, then the build tree's.
    static QString assetDirectory();

    static QUrl appUrl(const QString &relativePath);
    static QUrl fileUrl(const QString &absolutePath, const QString &query = QString());
    // The absolute path a /fs/ address names; empty for other addresses.
    static QString pathOfFileUrl(const QUrl &url);

    explicit ZBFlashSchemeHandler(QObject *parent = nullptr);

    void setAssetDirectory(const QString &directory);
    QString assetDirectoryInUse() const { return m_assetDir; }

    // Replaces every prepared entry: the engine serves one movie at a time.
    void setPrepared(const QHash<QUrl, QByteArray> &entries);
    // The folder a movie may read when security is on.
    void setScope(const QString &baseDirectory, bool security);

    void requestStarted(QWebEngineUrlRequestJob *job) override;

    // What a request for `url` is answered with, without a page: used by the
    // request handler and by tests. Data comes either in memory or as a file
    // to stream (large videos must not be read whole).
    struct Answer
    {
        QByteArray mimeType;
        QByteArray data;
        QString filePath;
        QWebEngineUrlRequestJob::Error error = QWebEngineUrlRequestJob::NoError;
    };
    Answer answer(const QUrl &url) const;

    static QByteArray mimeTypeFor(const QString &path);

private:
    QString m_assetDir;
    mutable QMutex m_lock;
    QHash<QUrl, QByteArray> m_prepared;
    QString m_scope;
    bool m_security = false;
};
