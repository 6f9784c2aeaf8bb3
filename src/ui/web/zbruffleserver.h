#pragma once

#include <QObject>
#include <QString>
#include <QUrl>

class QTcpServer;
class QTcpSocket;

// Serves the Flash engine's files (Ruffle) to the browser's pages over HTTP on
// the loopback interface. Pages on http and https must reach them, and this
// web engine's fetch() refuses the program's own URL scheme in pages it does
// not own; a loopback address is "potentially trustworthy" to Chromium, so
// even https pages may load from it. Answers GET and HEAD for files below
// the engine's ruffle/ folder only, to any origin.
class ZBRuffleServer : public QObject
{
    Q_OBJECT

public:
    // `ruffleDirectory` holds ruffle.js and the engine's other files.
    explicit ZBRuffleServer(const QString &ruffleDirectory, QObject *parent = nullptr);

    // Listens on a free port of 127.0.0.1; false when it cannot.
    bool start();
    bool isListening() const;
    // The folder's address, ending in "/"; empty before start().
    QUrl baseUrl() const;

private:
    void serve(QTcpSocket *socket);
    void answer(QTcpSocket *socket, const QByteArray &method, const QString &path);
    static void reply(QTcpSocket *socket, int status, const QByteArray &reason, const QByteArray &mimeType,
                      qint64 length);

    QString m_directory;
    QTcpServer *m_server;
};
