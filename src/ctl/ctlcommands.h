#pragma once

#include <QHash>
#include <QStringList>
#include <QTextStream>

#include <optional>

#include "playback/zbswfheader.h"

class ZBLibraryController;

// The commands of norvikctl, each over the same library core the player uses.
// Every command returns the process exit code; errors go to `err`. The
// dispatcher, the usage and the shared helpers live in ctlcommands.cpp; the
// command families in ctllibrary.cpp, ctlmedia.cpp and ctlflash.cpp.
class ZBCtlCommands
{
public:
    // Options of the form --name VALUE, taken out of `arguments`; what is left
    // are the positional arguments.
    class Options
    {
    public:
        Options(const QStringList &arguments, const QStringList &valued, const QStringList &flags);

        QString error() const { return m_error; }
        const QStringList &positional() const { return m_positional; }
        bool has(const QString &name) const { return m_values.contains(name); }
        QString value(const QString &name, const QString &fallback = QString()) const
        {
            return m_values.value(name, fallback);
        }

    private:
        QHash<QString, QString> m_values;
        QStringList m_positional;
        QString m_error;
    };

    ZBCtlCommands(ZBLibraryController &library, QTextStream &out, QTextStream &err);

    int run(const QString &command, const QStringList &arguments);
    static QString usage();

    // Commands that work on files alone; main() runs them through
    // runFileCommand() without opening the library.
    static bool needsLibrary(const QString &command);
    static int runFileCommand(const QString &command, const QStringList &arguments, QTextStream &out,
                              QTextStream &err);

private:
    // The movie a file holds: the file itself, or the one inside a projector.
    struct FlashMovie
    {
        QString origin;
        ZBSwfHeader::Info header;
    };
    static std::optional<FlashMovie> flashMovieIn(const QString &path);

    int lists(const QStringList &arguments);
    int addTrack(const QStringList &arguments);
    int list(const QStringList &arguments);
    int addPlaylist(const QStringList &arguments);
    int addSmart(const QStringList &arguments);
    int addToPlaylist(const QStringList &arguments);
    int removeTrack(const QStringList &arguments);
    int query(const QStringList &arguments);
    int check(const QStringList &arguments);
    int importFiles(const QStringList &arguments);
    int exportPlaylist(const QStringList &arguments);
    int importPlaylist(const QStringList &arguments);
    static int probe(const QStringList &arguments, QTextStream &out, QTextStream &err);
    static int swfInfo(const QStringList &arguments, QTextStream &out, QTextStream &err);
    static int snapshot(const QStringList &arguments, QTextStream &out, QTextStream &err);
    static bool isFlashFile(const QString &path);
    static int snapshotFlash(const QString &path, int frame, const QString &output, int format, QTextStream &out,
                             QTextStream &err);
    static int writeSnapshot(const class QImage &image, const QString &output, int format, QTextStream &out,
                             QTextStream &err);

    int fail(const QString &message);
    class ZBPlaylist *findList(const QString &nameOrUUID);
    void printTracks(const QList<class ZBItem *> &tracks, bool json);

    ZBLibraryController &m_library;
    QTextStream &m_out;
    QTextStream &m_err;
};
