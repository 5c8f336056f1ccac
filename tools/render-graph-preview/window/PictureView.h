#pragma once

#include "Session.h"

#include <QWidget>

// Shows a frame: enlarged by an integer, in pixels of the screen, or as large as fits. If it is
// compared with another picture, that one is shown left of a split line, which can be dragged or
// moved with [ and ].
class PictureView : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kFitToWindow = 0;

    explicit PictureView(QWidget *parent = nullptr);

    // `preset` is the one that was chosen: the picture says if it is another's.
    void setFrame(const std::shared_ptr<const FrameResult> &frame, const QString &preset,
                  const QString &comparedName);
    void setZoom(int zoom); // or kFitToWindow

    // The rectangle of the picture, in pixels of the screen.
    QRect pictureRect() const;

Q_SIGNALS:
    // The mouse or the arrow keys moved to this pixel of the picture.
    void pixelHovered(QPoint pixel);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void updateSize();
    void moveToPixel(QPoint pixel);
    int splitX() const;

    std::shared_ptr<const FrameResult> m_frame;
    QString m_preset;
    QString m_comparedName;
    int m_zoom = kFitToWindow;
    double m_split = 0.5; // of the width
    QPoint m_pixel;
};
