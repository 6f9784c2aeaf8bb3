#pragma once

#include <QObject>

#include <memory>

class QMainWindow;
class ZBLibraryController;

// Coordinates the main window and the objects that own the program's state.
// It stays thin: the library, the play list and the rest keep their own
// algorithms and are testable without a window.
class MainWndController : public QObject
{
    Q_OBJECT

public:
    explicit MainWndController(QObject *parent = nullptr);
    ~MainWndController() override;

    // Opens the stores and shows the window. False when the program cannot
    // go on (the user has been told why).
    bool start();
    QMainWindow *window() const { return m_window.get(); }
    ZBLibraryController *library() const { return m_library.get(); }

private:
    bool openLibrary();

    std::unique_ptr<ZBLibraryController> m_library;
    std::unique_ptr<QMainWindow> m_window;
};
