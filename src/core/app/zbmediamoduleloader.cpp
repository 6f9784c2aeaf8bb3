#include "app/zbmediamoduleloader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QFile>
#include <QLoggingCategory>

#include <atomic>
#include <dlfcn.h>
#include <mutex>
#include <thread>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcMediaModule, "norvik.media.module", QtInfoMsg)

namespace
{
constexpr const char *ModuleFileName = "libnorvikmedia.so";

std::atomic<ZBMediaModuleLoader::EntryPoint> linkedEntry{nullptr};
std::atomic<void (*)()> beforeLoading{nullptr};

struct LoadState
{
    std::once_flag once;
    ZBMediaModule *module = nullptr;
    QString error;
    std::mutex preloadMutex;
    std::thread preloader;
};

LoadState &loadState()
{
    static LoadState state;
    return state;
}
} // namespace

ZBMediaModule *ZBMediaModuleLoader::module()
{
    LoadState &state = loadState();
    std::call_once(state.once, [&state]() {
        if (const EntryPoint entry = linkedEntry.load())
        {
            state.module = entry();
            return;
        }
        if (const auto before = beforeLoading.load())
            before();
        const Result result = loadFrom(modulePath());
        state.module = result.module;
        state.error = result.error;
        if (!state.module)
            qCWarning(lcMediaModule).noquote() << "No playback, recognition nor browsing:" << state.error;
    });
    return state.module;
}

QString ZBMediaModuleLoader::loadError()
{
    module();
    return loadState().error;
}

void ZBMediaModuleLoader::setBeforeLoading(void (*before)())
{
    beforeLoading.store(before);
}

void ZBMediaModuleLoader::preload(std::function<void()> mapped)
{
    LoadState &state = loadState();
    const std::lock_guard<std::mutex> lock(state.preloadMutex);
    if (linkedEntry.load() || state.preloader.joinable())
    {
        mapped();
        return;
    }
    state.preloader = std::thread([path = modulePath(), mapped = std::move(mapped)]() {
        if (const auto before = beforeLoading.load())
            before();
        // The handle is dropped on purpose: module()'s own dlopen of the same
        // file takes another reference, and finds everything mapped. A file
        // that fails here fails there too, and says why then.
        ::dlopen(QFile::encodeName(path).constData(), RTLD_LAZY | RTLD_LOCAL);
        mapped();
    });
}

void ZBMediaModuleLoader::waitForPreload()
{
    LoadState &state = loadState();
    const std::lock_guard<std::mutex> lock(state.preloadMutex);
    if (state.preloader.joinable() && state.preloader.get_id() != std::this_thread::get_id())
        state.preloader.join();
}

void ZBMediaModuleLoader::registerLinked(EntryPoint entry)
{
    linkedEntry.store(entry);
}

QString ZBMediaModuleLoader::modulePath()
{
    const QString fromEnvironment = qEnvironmentVariable("NVK_MEDIA_MODULE");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    // The module is installed, and built, beside the core library.
    Dl_info info = {};
    if (::dladdr(reinterpret_cast<void *>(&ZBMediaModuleLoader::modulePath), &info) != 0 && info.dli_fname)
    {
        const QFileInfo self(QString::fromLocal8Bit(info.dli_fname));
        return QDir(self.absolutePath()).absoluteFilePath(QString::fromLatin1(ModuleFileName));
    }
    return QDir(QCoreApplication::applicationDirPath()).absoluteFilePath(QString::fromLatin1(ModuleFileName));
}

ZBMediaModuleLoader::Result ZBMediaModuleLoader::loadFrom(const QString &path)
{
    Result result;
    // dlopen rather than QLibrary: QLibrary tries other names after the one
    // given and reports the last, which is not the file the user has to fix.
    // Never closed: the module's widgets, engines and static data live as
    // long as the process.
    void *library = ::dlopen(QFile::encodeName(path).constData(), RTLD_LAZY | RTLD_LOCAL);
    if (!library)
    {
        result.error = QString::fromLocal8Bit(::dlerror());
        return result;
    }
    const auto entry = reinterpret_cast<EntryPoint>(::dlsym(library, EntryPointName));
    if (!entry)
    {
        result.error = QStringLiteral("%1 is no media module of this program: %2")
                           .arg(path, QString::fromLocal8Bit(::dlerror()));
        return result;
    }
    result.module = entry();
    if (!result.module)
        result.error = QStringLiteral("%1 refused to start").arg(path);
    return result;
}

void ZBMediaModuleLoader::prepareApplication(bool shareGLLater)
{
    // The web engine describes its GL set-up on every start; that is for
    // whoever debugs it (QT_LOGGING_RULES still turns it back on).
    QLoggingCategory::setFilterRules(QStringLiteral("qt.webenginecontext.info=false"));
    if (!shareGLLater)
        QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    if (::geteuid() == 0 && !qEnvironmentVariableIsSet("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
}
