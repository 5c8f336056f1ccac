#pragma once

#include "Session.h"

#include <QWidget>

// Shows a frame pixel by pixel on the screen's own, enlarged by an integer, or as large as fits;
// what it is compared with is left of a line that is dragged, or moved with [ and ].
class PictureView : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kFits = 0;

    explicit PictureView(QWidget *parent = nullptr);

    void setFrame(const std::shared_ptr<const DrawnFrame> &frame, const QString &comparedName);
    void setZoom(int zoom); // or kFits

    // What is shown, by the screen's pixels.
    QRect target() const;

Q_SIGNALS:
    // One of the picture's pixels is under the pointer, or the arrow keys went there.
    void pointedAt(QPoint pixel);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void updateSize();
    void pointAt(QPoint pixel);
    int splitX() const;

    std::shared_ptr<const DrawnFrame> m_frame;
    QString m_comparedName;
    int m_zoom = kFits;
    double m_split = 0.5; // of the width
    QPoint m_pixel;
};
