#include "ui/app/zbsharedglcontext.h"

#include <QCoreApplication>
#include <QOpenGLContext>
#include <QSurfaceFormat>

#include <mutex>

// Qt's own hook for the context that QApplication would have made: exported
// by Qt GUI, declared only in its private headers.
Q_GUI_EXPORT QOpenGLContext *qt_gl_global_share_context();
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext *context);

bool ZBSharedGLContext::create()
{
    static std::once_flag once;
    std::call_once(once, []() {
        if (qt_gl_global_share_context())
            return;
        auto *context = new QOpenGLContext;
        context->setFormat(QSurfaceFormat::defaultFormat());
        if (!context->create())
        {
            delete context;
            return;
        }
        // Lives as long as the program, as the one QApplication makes does.
        context->moveToThread(QCoreApplication::instance()->thread());
        qt_gl_set_global_share_context(context);
    });
    return qt_gl_global_share_context() != nullptr;
}
