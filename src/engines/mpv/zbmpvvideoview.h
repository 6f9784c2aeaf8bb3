#pragma once

#include <QOpenGLWidget>

struct mpv_handle;
struct mpv_render_context;

// Shows the video engine's picture through libmpv's OpenGL render API.
//
// The render context can only exist while this widget's GL context does: it
// is created in initializeGL() (the first time the widget is shown) and
// freed, with the GL context current, before that context goes away or the
// widget is destroyed. The engine must not open a file before renderReady()
// and must destroy this view before it destroys the mpv core.
//
// Never create it on the offscreen platform: QOpenGLWidget crashes there.
class ZBMpvVideoView : public QOpenGLWidget
{
    Q_OBJECT

public:
    explicit ZBMpvVideoView(mpv_handle *mpv, QWidget *parent = nullptr);
    ~ZBMpvVideoView() override;

    bool isRenderReady() const { return m_render != nullptr; }
    // Frees the render context now; video stops until the next initializeGL().
    void releaseRenderContext();

Q_SIGNALS:
    void renderReady();
    // The render context is gone (the GL context was destroyed, e.g. when the
    // widget moved to another window); video is disabled until renderReady().
    void renderLost();
    void renderFailed(const QString &reason);

protected:
    void initializeGL() override;
    void paintGL() override;

private:
    void onUpdateRequested();
    void onFrameSwapped();

    static void onRenderUpdate(void *context);
    static void *getProcAddress(void *context, const char *name);

    mpv_handle *m_mpv;
    mpv_render_context *m_render = nullptr;
};
