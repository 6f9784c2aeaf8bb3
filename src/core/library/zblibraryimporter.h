#pragma once

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QThreadPool>

#include <atomic>

class ZBLibraryController;

// Brings files into the library: one file the way a drop or the add command
// does, or whole folder trees the way files opened with the program are.
//
// A file becomes a track named after the file without its extension, typed
// by its extension (or "exe" when it is a projector), with the length the
// duration probe finds. Files of types the player does not take are refused;
// a path already in the library gives the track it already has.
//
// Probing costs far more than storing, so for many files the probes run in
// batches on worker threads while the library, which belongs to one thread,
// is only touched on the thread that called start(). Tracks are stored in
// the order of the files: folders at any depth, each in name order, files
// before subfolders. Files already in the library are never probed.
class ZBLibraryImporter : public QObject
{
    Q_OBJECT

public:
    struct Counts
    {
        int added = 0;
        int alreadyInLibrary = 0;
        int refused = 0;
        // Named on the command line or in a drop but not there at all.
        QStringList missing;
    };

    // What a file would become, learnt without touching the library.
    struct Examined
    {
        QString path;
        QString name;
        QString type;
        bool accepted = false;
        qint32 length = 0;
    };

    explicit ZBLibraryImporter(ZBLibraryController &library, QObject *parent = nullptr);
    // Cancels what runs and waits for the workers.
    ~ZBLibraryImporter() override;

    // Adds one file now, on the calling thread. Returns the UUID of the new or
    // existing track, or a null string when the file is refused.
    QString importToLibrary(const QString &path, bool *isNew = nullptr);

    // Imports files and folders (at any depth); returns at once. progress()
    // follows every file stored, then finished(). False, and nothing started,
    // while an import runs.
    bool start(const QStringList &paths);
    // start() and wait for it, running the caller's event loop meanwhile.
    Counts run(const QStringList &paths);
    // May be called from any thread. What is stored stays stored; the import
    // stops before the next file and finished() reports canceled. Called on
    // the importer's own thread, finished() has come when it returns, so a
    // new start() may follow at once.
    void cancel();
    bool isRunning() const { return m_running; }
    Counts counts() const { return m_counts; }

    // How many files one worker task probes before handing them over.
    void setBatchSize(int files);
    // The time stamp given to tracks added from now on; the current time when
    // none is set.
    void setAddedDate(const QDateTime &added) { m_addedDate = added; }

    // The files a list of paths stands for, in import order. Missing paths go
    // to `missing`.
    static QStringList expandPaths(const QStringList &paths, QStringList *missing = nullptr);
    // Everything the import needs from the file itself. `probe` false skips the
    // duration probe (for a file whose path the library already holds).
    static Examined examine(const QString &path, bool probe = true);

Q_SIGNALS:
    // `done` files of `total` handled; `path` is the one just handled.
    void progress(int done, int total, const QString &path);
    // After every file that became or already was a track.
    void trackStored(const QString &uuid, const QString &path, bool isNew);
    void finished(const ZBLibraryImporter::Counts &counts, bool canceled);

private:
    void onFilesListed(quint64 generation, const QStringList &files, const QStringList &missing);
    void onBatchExamined(quint64 generation, int batch, const QList<Examined> &results);
    void scheduleBatches();
    void store(const Examined &examined);
    void finish();
    bool isInLibrary(const QString &path) const;
    QDateTime addedDate() const;

    ZBLibraryController &m_library;
    QThreadPool m_pool;
    int m_batchSize = 32;
    QDateTime m_addedDate;

    bool isCanceled(quint64 generation) const { return m_canceledGeneration.load() >= generation; }

    // Each start() is a new generation; results of an older, canceled one
    // are dropped. Workers read both counters.
    std::atomic<quint64> m_generation{0};
    std::atomic<quint64> m_canceledGeneration{0};
    bool m_running = false;
    QStringList m_files;
    QList<bool> m_known;
    int m_batchCount = 0;
    int m_nextBatchToStart = 0;
    int m_nextBatchToStore = 0;
    QHash<int, QList<Examined>> m_ready;
    int m_done = 0;
    Counts m_counts;
};
