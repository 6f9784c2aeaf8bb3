#pragma once

#include <QObject>

#include <memory>

class QMainWindow;
class QMenuBar;
class ZBLibraryController;
class ZBSettings;
struct ZBMenuEntry;

// Coordinates the main window and the objects that own the program's state.
// It stays thin: the library, the play list and the rest keep their own
// algorithms and are testable without a window.
class MainWndController : public QObject
{
    Q_OBJECT

public:
    explicit MainWndController(QObject *parent = nullptr);
    ~MainWndController() override;

    // Reads the settings, opens the stores and shows the window. False when
    // the program cannot go on (the user has been told why).
    bool start();
    // Writes the settings back; called once as the application quits.
    void saveUserDefaults();

    QMainWindow *window() const { return m_window.get(); }
    ZBLibraryController *library() const { return m_library.get(); }
    ZBSettings *settings() const { return m_settings.get(); }

private:
    bool openLibrary();
    void buildMainMenu();

    std::unique_ptr<ZBSettings> m_settings;
    std::unique_ptr<ZBLibraryController> m_library;
    std::unique_ptr<QMainWindow> m_window;
};
