#pragma once

#include "Session.h"

#include <QWidget>

// Shows a frame's view, and has what it is shown with. Its accessible description has a line for
// each key, "<keys>: <what they do>".
class PictureView : public QWidget
{
    Q_OBJECT

public:
    explicit PictureView(QWidget *parent = nullptr);

    // `preset` is the one that was chosen: the picture says if it is another's.
    void setFrame(const std::shared_ptr<const FrameResult> &frame, const QString &preset);
    void setZoom(int zoom); // see ViewState

    ViewState state() const;
    QSize sizeInPixels() const; // of the screen
    // What the last frame took to be painted, in milliseconds.
    double paintMilliseconds() const
    {
        return m_paintMilliseconds;
    }

Q_SIGNALS:
    void stateChanged();
    void zoomChanged(int zoom);
    void resized();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void zoomAt(QPointF position, int zoom);
    void readTexel(QPoint texel);
    void hideOther();

    std::shared_ptr<const FrameResult> m_frame;
    QString m_preset;
    ViewState m_state;
    bool m_showsOther = false;
    int m_turned = 0; // of the wheel's next notch
    bool m_isSplitDragged = false;
    QPointF m_dragged; // in pixels of the screen
    double m_paintMilliseconds = 0.0;
};
