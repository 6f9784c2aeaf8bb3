#include "library/zblibraryimporter.h"

#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QThread>

#include <limits>

#include "library/zblibrarycontroller.h"
#include "playback/zbmediaprobe.h"
#include "playback/zbmediatypes.h"
#include "playback/zbprojector.h"
#include "predicate/zbtextfold.h"
#include "util/zbadditionalmethods.h"

namespace
{
void walkFolder(const QString &folder, QStringList &files)
{
    // Hidden entries are left out: nobody means to import ".DS_Store" or the
    // "._movie.mp4" shadows a Mac leaves on shared drives, which would
    // otherwise pass for movies by their extension.
    const QDir dir(folder);
    const QDir::SortFlags order = QDir::Name | QDir::IgnoreCase;
    const QFileInfoList entries = dir.entryInfoList(QDir::Files | QDir::Readable, order);
    for (const QFileInfo &entry : entries)
        files.append(entry.absoluteFilePath());
    // Linked folders are not followed: a link back up the tree would never end.
    const QFileInfoList folders = dir.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks, order);
    for (const QFileInfo &entry : folders)
        walkFolder(entry.absoluteFilePath(), files);
}
} // namespace

ZBLibraryImporter::ZBLibraryImporter(ZBLibraryController &library, QObject *parent)
    : QObject(parent)
    , m_library(library)
{
    m_pool.setMaxThreadCount(std::max(2, QThread::idealThreadCount()));
}

ZBLibraryImporter::~ZBLibraryImporter()
{
    m_canceledGeneration.store(std::numeric_limits<quint64>::max());
    m_pool.waitForDone();
}

void ZBLibraryImporter::setBatchSize(int files)
{
    m_batchSize = std::max(1, files);
}

QDateTime ZBLibraryImporter::addedDate() const
{
    return m_addedDate.isValid() ? m_addedDate : QDateTime::currentDateTimeUtc();
}

QStringList ZBLibraryImporter::expandPaths(const QStringList &paths, QStringList *missing)
{
    QStringList files;
    for (const QString &path : paths)
    {
        const QFileInfo info(path);
        if (info.isDir())
            walkFolder(info.absoluteFilePath(), files);
        else if (info.exists())
            files.append(info.absoluteFilePath());
        else if (missing)
            missing->append(path);
    }
    return files;
}

ZBLibraryImporter::Examined ZBLibraryImporter::examine(const QString &path, bool probe)
{
    Examined examined;
    examined.path = path;
    const QString fileName = ZBMediaTypes::getFileNameFromPath(path);
    examined.name = ZBMediaTypes::getFileNameWithoutExtension(fileName);
    examined.type = ZBMediaTypes::getFileType(fileName);
    const bool registered = ZBMediaTypes::isRegisteredType(examined.type);
    // A known track needs nothing more: its fields are never changed.
    if (!probe && registered)
    {
        examined.accepted = true;
        return examined;
    }
    // A projector is one whatever its name says.
    if (ZBProjector::isApplicationFile(path))
        examined.type = QStringLiteral("exe");
    else if (!registered)
        return examined;
    examined.accepted = true;
    if (probe)
        examined.length = ZBMediaProbe::getMovieDurationAtPath(path);
    return examined;
}

bool ZBLibraryImporter::isInLibrary(const QString &path) const
{
    // Paths are matched as patterns; one with wildcards is left to the store
    // to decide, after its probe.
    if (ZBTextFold::hasWildcards(path))
        return false;
    return !m_library.managedObjectContext()->itemsWithFoldedPath(ZBTextFold::fold(path, true, true)).isEmpty();
}

QString ZBLibraryImporter::importToLibrary(const QString &path, bool *isNew)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    const Examined examined = examine(absolute, !isInLibrary(absolute));
    if (isNew)
        *isNew = false;
    if (!examined.accepted)
        return QString();
    // Proposing the UUID tells a new track from one the path already had.
    const QString proposed = ZBAdditionalMethods::generateUUID();
    const QString uuid = m_library.addItemToLibrarybyName(examined.name, examined.path, QStringLiteral(""),
                                                          examined.type, 0, examined.length, 0, addedDate(),
                                                          QDateTime(), QString(), proposed);
    if (isNew)
        *isNew = uuid == proposed;
    return uuid;
}

bool ZBLibraryImporter::start(const QStringList &paths)
{
    if (m_running)
        return false;
    m_running = true;
    ++m_generation;
    m_files.clear();
    m_known.clear();
    m_ready.clear();
    m_batchCount = 0;
    m_nextBatchToStart = 0;
    m_nextBatchToStore = 0;
    m_done = 0;
    m_counts = Counts();

    // Walking a large tree takes a while on a cold disk: not on this thread.
    const quint64 generation = m_generation;
    m_pool.start([this, generation, paths] {
        QStringList missing;
        const QStringList files = expandPaths(paths, &missing);
        QMetaObject::invokeMethod(
            this, [this, generation, files, missing] { onFilesListed(generation, files, missing); },
            Qt::QueuedConnection);
    });
    return true;
}

ZBLibraryImporter::Counts ZBLibraryImporter::run(const QStringList &paths)
{
    QEventLoop loop;
    connect(this, &ZBLibraryImporter::finished, &loop, &QEventLoop::quit);
    if (!start(paths))
        return Counts();
    loop.exec();
    return m_counts;
}

void ZBLibraryImporter::cancel()
{
    const quint64 generation = m_generation.load();
    m_canceledGeneration.store(generation);
    // On its own thread the import ends here, so that a new one can start
    // right after; from elsewhere the end is handed over.
    if (QThread::currentThread() == thread())
    {
        if (m_running)
            finish();
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [this, generation] {
            if (generation == m_generation && m_running)
                finish();
        },
        Qt::QueuedConnection);
}

void ZBLibraryImporter::onFilesListed(quint64 generation, const QStringList &files, const QStringList &missing)
{
    if (generation != m_generation || !m_running)
        return;
    m_counts.missing = missing;
    m_files = files;
    m_known.reserve(files.size());
    for (const QString &file : files)
        m_known.append(isInLibrary(file));
    m_batchCount = int((files.size() + m_batchSize - 1) / m_batchSize);
    if (m_batchCount == 0 || isCanceled(generation))
    {
        finish();
        return;
    }
    scheduleBatches();
}

void ZBLibraryImporter::scheduleBatches()
{
    // Enough batches ahead to keep every worker busy, few enough that a
    // canceled import stops soon and results wait in memory only briefly.
    const int ahead = m_pool.maxThreadCount() * 2;
    while (m_nextBatchToStart < m_batchCount && m_nextBatchToStart - m_nextBatchToStore < ahead)
    {
        const int batch = m_nextBatchToStart++;
        const qsizetype first = qsizetype(batch) * m_batchSize;
        const QStringList paths = m_files.mid(first, m_batchSize);
        const QList<bool> known = m_known.mid(first, m_batchSize);
        const quint64 generation = m_generation;
        m_pool.start([this, generation, batch, paths, known] {
            QList<Examined> results;
            results.reserve(paths.size());
            for (qsizetype i = 0; i < paths.size() && !isCanceled(generation); ++i)
                results.append(examine(paths.at(i), !known.at(i)));
            if (isCanceled(generation))
                return;
            QMetaObject::invokeMethod(
                this, [this, generation, batch, results] { onBatchExamined(generation, batch, results); },
                Qt::QueuedConnection);
        });
    }
}

void ZBLibraryImporter::onBatchExamined(quint64 generation, int batch, const QList<Examined> &results)
{
    if (generation != m_generation || !m_running)
        return;
    m_ready.insert(batch, results);
    // The slots of store()'s signals may cancel this import and even start
    // the next one: after every file, make sure this one still runs.
    const auto stillRunning = [this, generation] { return generation == m_generation && m_running; };
    // Batches finish in any order; tracks are stored in file order.
    while (stillRunning() && m_ready.contains(m_nextBatchToStore))
    {
        const QList<Examined> ready = m_ready.take(m_nextBatchToStore);
        ++m_nextBatchToStore;
        for (const Examined &examined : ready)
        {
            if (!stillRunning())
                return;
            if (isCanceled(generation))
            {
                finish();
                return;
            }
            store(examined);
        }
    }
    if (!stillRunning())
        return;
    if (m_nextBatchToStore == m_batchCount)
    {
        finish();
        return;
    }
    scheduleBatches();
}

void ZBLibraryImporter::store(const Examined &examined)
{
    if (!examined.accepted)
    {
        ++m_counts.refused;
    }
    else
    {
        const QString proposed = ZBAdditionalMethods::generateUUID();
        const QString uuid = m_library.addItemToLibrarybyName(examined.name, examined.path, QStringLiteral(""),
                                                              examined.type, 0, examined.length, 0, addedDate(),
                                                              QDateTime(), QString(), proposed);
        const bool isNew = uuid == proposed;
        ++(isNew ? m_counts.added : m_counts.alreadyInLibrary);
        Q_EMIT trackStored(uuid, examined.path, isNew);
    }
    ++m_done;
    Q_EMIT progress(m_done, int(m_files.size()), examined.path);
}

void ZBLibraryImporter::finish()
{
    if (!m_running)
        return;
    const bool canceled = isCanceled(m_generation);
    m_running = false;
    m_ready.clear();
    Q_EMIT finished(m_counts, canceled);
}
