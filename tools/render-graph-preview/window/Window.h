#pragma once

#include "Session.h"

#include <QMainWindow>

class ParameterPanel;
class PictureView;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QListWidget;
class QScrollArea;

// The main window: a session and its controls.
class Window : public QMainWindow
{
    Q_OBJECT

public:
    Window(const QString &shadersDir, const QString &device, const QString &preset);

    Session &session()
    {
        return m_session;
    }

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void createToolBars();
    void createActions();
    void openSource(const QString &path);
    void savePicture();
    void updateView();
    void showFrame();
    void showPixel(QPoint pixel);

    Session m_session;
    ParameterPanel *m_parameters;
    PictureView *m_picture;
    QScrollArea *m_pictureArea;
    QListWidget *m_strip;
    QLabel *m_message;
    QLabel *m_times;
    QLabel *m_pixelValues;
    QComboBox *m_presets = nullptr;
    QComboBox *m_sources = nullptr;
    QComboBox *m_sizes = nullptr;
    QComboBox *m_comparisons = nullptr;
    QDoubleSpinBox *m_headroom = nullptr;
    QStringList m_components; // in the strip
    QPoint m_pixelPosition;
};
