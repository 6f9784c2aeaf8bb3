#include "engines/mpv/zbmpvvideoview.h"

#include <QLoggingCategory>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <mpv/client.h>
#include <mpv/render_gl.h>

Q_LOGGING_CATEGORY(lcMpvView, "norvik.engine.mpv.view")

ZBMpvVideoView::ZBMpvVideoView(mpv_handle *mpv, QWidget *parent)
    : QOpenGLWidget(parent)
    , m_mpv(mpv)
{
    setMinimumSize(16, 16);
    connect(this, &QOpenGLWidget::frameSwapped, this, &ZBMpvVideoView::onFrameSwapped);
}

ZBMpvVideoView::~ZBMpvVideoView()
{
    releaseRenderContext();
}

void ZBMpvVideoView::releaseRenderContext()
{
    if (!m_render)
        return;
    // The render context owns GL objects of this widget's context: that
    // context must be current while they are deleted.
    makeCurrent();
    mpv_render_context_set_update_callback(m_render, nullptr, nullptr);
    mpv_render_context_free(m_render);
    m_render = nullptr;
    doneCurrent();
    Q_EMIT renderLost();
}

void ZBMpvVideoView::initializeGL()
{
    // A second call means Qt replaced the GL context; the old render context
    // went with aboutToBeDestroyed.
    if (m_render)
        releaseRenderContext();
    // Qt replaces the GL context when the widget changes windows, and tears
    // it down with the window.
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &ZBMpvVideoView::releaseRenderContext,
            Qt::UniqueConnection);

    mpv_opengl_init_params glInit{};
    glInit.get_proc_address = &ZBMpvVideoView::getProcAddress;
    glInit.get_proc_address_ctx = nullptr;
    mpv_render_param params[] = {
        {MPV_RENDER_PARAM_API_TYPE, const_cast<char *>(MPV_RENDER_API_TYPE_OPENGL)},
        {MPV_RENDER_PARAM_OPENGL_INIT_PARAMS, &glInit},
        {MPV_RENDER_PARAM_INVALID, nullptr},
    };
    const int result = mpv_render_context_create(&m_render, m_mpv, params);
    if (result < 0)
    {
        m_render = nullptr;
        const QString reason =
            QStringLiteral("the video picture cannot be drawn: %1").arg(QString::fromUtf8(mpv_error_string(result)));
        qCWarning(lcMpvView).noquote() << reason;
        Q_EMIT renderFailed(reason);
        return;
    }
    mpv_render_context_set_update_callback(m_render, &ZBMpvVideoView::onRenderUpdate, this);
    Q_EMIT renderReady();
}

void ZBMpvVideoView::paintGL()
{
    if (!m_render)
    {
        QOpenGLFunctions *gl = context()->functions();
        gl->glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
        gl->glClear(GL_COLOR_BUFFER_BIT);
        return;
    }
    const qreal ratio = devicePixelRatioF();
    mpv_opengl_fbo fbo{};
    fbo.fbo = int(defaultFramebufferObject());
    fbo.w = qRound(width() * ratio);
    fbo.h = qRound(height() * ratio);
    // Qt's framebuffer has its origin at the top.
    int flipY = 1;
    mpv_render_param params[] = {
        {MPV_RENDER_PARAM_OPENGL_FBO, &fbo},
        {MPV_RENDER_PARAM_FLIP_Y, &flipY},
        {MPV_RENDER_PARAM_INVALID, nullptr},
    };
    mpv_render_context_render(m_render, params);
}

void ZBMpvVideoView::onUpdateRequested()
{
    if (!m_render)
        return;
    // The flags must be read on this thread, never inside the callback.
    if (mpv_render_context_update(m_render) & MPV_RENDER_UPDATE_FRAME)
        update();
}

void ZBMpvVideoView::onFrameSwapped()
{
    if (m_render)
        mpv_render_context_report_swap(m_render);
}

void ZBMpvVideoView::onRenderUpdate(void *context)
{
    // Called on one of libmpv's threads; the queued call is dropped by Qt if
    // the view is gone by then, and the callback is unset before the render
    // context is freed.
    auto *view = static_cast<ZBMpvVideoView *>(context);
    QMetaObject::invokeMethod(view, &ZBMpvVideoView::onUpdateRequested, Qt::QueuedConnection);
}

void *ZBMpvVideoView::getProcAddress(void *context, const char *name)
{
    QOpenGLContext *gl = QOpenGLContext::currentContext();
    if (!gl)
        return nullptr;
    return reinterpret_cast<void *>(gl->getProcAddress(QByteArray(name)));
}
