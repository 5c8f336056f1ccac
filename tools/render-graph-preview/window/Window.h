#pragma once

#include "Session.h"

#include <QMainWindow>

class ParameterPanel;
class PictureView;
class QAction;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QListWidget;

// The main window: a session and its controls. Closing it keeps its geometry, preset, source and
// zoom in the application's settings; the next one restores all but the preset, which is given.
class Window : public QMainWindow
{
    Q_OBJECT

public:
    // `editor` is the command for a message that is clicked: %f is the file, %l the line, "+%l %f"
    // is added if there is no %f. Empty: $VISUAL, or else $EDITOR.
    Window(const QString &shadersDir, const QString &device, const QString &preset,
           QString editor = {});
    ~Window() override;
    Q_DISABLE_COPY_MOVE(Window)

    // Sets the preset's values from a file; the status bar says why if it cannot be read.
    void openValues(const QString &path);

    // Shows a test picture, by its name, or files; see sourceFiles().
    void openSource(const QString &nameOrPath);

    Session &session()
    {
        return m_session;
    }

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void createToolBars();
    void createActions();
    void showKeys();
    void showMessage(const QString &message);
    void openEditor(const QString &place);
    void savePicture();
    void saveValues();
    void restoreSettings();
    void updateView();
    void updateDisplay();
    void updateSpeed();
    void showFrame();
    void showStrip(const FrameResult &frame);
    void showPixel(const FrameResult &frame);

    Session m_session;
    ParameterPanel *m_parameters;
    PictureView *m_picture;
    QListWidget *m_strip;
    QLabel *m_message;
    QLabel *m_times;
    QLabel *m_pixelValues;
    QComboBox *m_presets = nullptr;
    QComboBox *m_sources = nullptr;
    QComboBox *m_sizes = nullptr;
    QComboBox *m_zooms = nullptr;
    QComboBox *m_comparisons = nullptr;
    QComboBox *m_speeds = nullptr;
    QDoubleSpinBox *m_headroom = nullptr;
    QAction *m_backwards = nullptr;
    QStringList m_components; // in the strip
    QElapsedTimer m_framesTimer; // since the last text
    int m_frames = 0; // since then
    QString m_editor;
};
