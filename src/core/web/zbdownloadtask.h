#pragma once

#include <QElapsedTimer>
#include <QFile>
#include <QList>
#include <QNetworkCookie>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QTimer>
#include <QUrl>

class QNetworkAccessManager;
class QNetworkCookieJar;
class QNetworkReply;

// One file fetched over HTTP(S) onto disk.
//
// The body is streamed into "<target>.part" beside the target as it arrives
// (the reply buffers at most 1 MiB, so memory stays flat whatever the size)
// and the part file becomes the target only once every byte is there: the
// final name never holds a partial or failed file. After a network failure
// (a dropped connection, a body shorter than announced, a stalled server) the
// part file stays, and the next task for the same target asks the server for
// the rest ("Range: bytes=<size>-"); a server that answers with the whole
// file instead is read from the start. A cancelled task removes its part
// file, and so does one that could not write (a full disk needs its space
// back).
//
// Runs on the thread that owns it; every signal fires once at most except
// progress and speedChanged. The reasons of failed() are localised sentences
// ready for the user.
class ZBDownloadTask : public QObject
{
    Q_OBJECT

public:
    enum class State
    {
        Idle,
        Running,
        Finished,
        Failed,
        Cancelled,
    };

    ZBDownloadTask(const QUrl &url, const QString &targetPath, QObject *parent = nullptr);
    ~ZBDownloadTask() override;

    // Sent as "Referer" when valid.
    void setReferrer(const QUrl &referrer);
    // Cookies sent with the request, in addition to those of a jar.
    void setCookies(const QList<QNetworkCookie> &cookies);
    // The cookies the jar holds for the URL at start, e.g. the browser's.
    void setCookieJar(QNetworkCookieJar *jar);
    // No byte for this long fails the task (the part file stays). 60 s.
    void setStallTimeout(int milliseconds);
    // The manager to send the request with; sharedManager() otherwise.
    void setNetworkAccessManager(QNetworkAccessManager *manager);

    QUrl url() const { return m_url; }
    // The URL the body came from, after redirects; the request URL until
    // the response has arrived.
    QUrl finalUrl() const { return m_finalUrl; }
    QString targetPath() const { return m_targetPath; }
    QString partPath() const { return m_targetPath + QStringLiteral(".part"); }

    State state() const { return m_state; }
    // Bytes of the file on disk so far (a resumed part included) and the
    // expected size, -1 while unknown.
    qint64 receivedBytes() const { return m_received; }
    qint64 totalBytes() const { return m_total; }
    // Average over the last second or so; 0 before the first data.
    qint64 bytesPerSecond() const { return m_speed; }
    // The speed as the status panel writes it ("1.50 MB/s").
    QString speedText() const;
    QString errorString() const { return m_error; }

    // Targets of the tasks running in this process, so that a new download
    // never picks the name of one still on its way (see
    // ZBDownloadPaths::addSuffixForDownload()).
    static QSet<QString> runningTargets();
    // One manager per thread for every task that is given none.
    static QNetworkAccessManager *sharedManager();

    static QByteArray userAgent() { return QByteArrayLiteral("NorvikPlayer"); }

public Q_SLOTS:
    // Starts once; further calls do nothing. A failure to begin (bad URL,
    // unwritable folder, target busy) is reported by failed() from the event
    // loop, never from within start().
    void start();
    // Stops the transfer and removes the part file; nothing is emitted.
    void cancel();

Q_SIGNALS:
    // The server accepted: where the body comes from after redirects and how
    // long the whole file is (-1 when the server does not say). On resume
    // the length is the whole file's, not the rest's.
    void responseReceived(const QUrl &finalUrl, qint64 expectedBytes);
    void progress(qint64 receivedBytes, qint64 totalBytes);
    void speedChanged(qint64 bytesPerSecond);
    // The file is complete under `path` (the target).
    void finished(const QString &path);
    void failed(const QString &reason);

private:
    void sendRequest(qint64 resumeFrom);
    void onMetaData();
    void onReadyRead();
    void onFinished();
    void onStalled();
    bool acceptResponse();
    void restartFromZero();
    bool writeAvailable();
    bool openPart(bool append);
    void complete();
    // Ends the task with a reason; keepPart for failures a later start can
    // resume from.
    void fail(const QString &reason, bool keepPart);
    void release();
    void measureSpeed(bool force);

    QUrl m_url;
    QUrl m_finalUrl;
    QString m_targetPath;
    QUrl m_referrer;
    QSet<QUrl> m_visited;
    QList<QNetworkCookie> m_cookies;
    QPointer<QNetworkCookieJar> m_jar;
    QPointer<QNetworkAccessManager> m_manager;
    QNetworkReply *m_reply = nullptr;
    QFile m_part;
    QByteArray m_chunk;
    QTimer m_stallTimer;
    QElapsedTimer m_clock;
    State m_state = State::Idle;
    QString m_error;
    int m_stallTimeout = 60000;
    qint64 m_lastData = 0;
    qint64 m_resumeFrom = 0;
    qint64 m_received = 0;
    qint64 m_total = -1;
    qint64 m_speed = 0;
    qint64 m_speedMark = 0;
    qint64 m_speedMarkTime = 0;
    qint64 m_lastProgressTime = -1;
    bool m_responseSeen = false;
    bool m_partCreated = false;
    bool m_registered = false;
    bool m_retried = false;
};
