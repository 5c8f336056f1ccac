#include "PictureView.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

void drawLabel(QPainter &painter, const QRect &within, Qt::Alignment alignment, const QString &text)
{
    const QRect box = painter.boundingRect(within.adjusted(8, 8, -8, -8), int(alignment), text);
    painter.fillRect(box.adjusted(-4, -2, 4, 2), QColor(0, 0, 0, 160));
    painter.setPen(Qt::white);
    painter.drawText(box, int(alignment), text);
}

} // namespace

PictureView::PictureView(QWidget *parent) : QWidget(parent)
{
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(u"Picture"_s);
    setMinimumSize(64, 64);
}

void PictureView::setFrame(const std::shared_ptr<const FrameResult> &frame, const QString &preset,
                           const QString &comparedName)
{
    m_frame = frame;
    m_preset = preset;
    m_comparedName = comparedName;
    updateSize();
    update();
}

void PictureView::setZoom(int zoom)
{
    m_zoom = zoom;
    updateSize();
    update();
}

QRect PictureView::pictureRect() const
{
    if (!m_frame)
        return {};
    const QSize room = (QSizeF(size()) * devicePixelRatioF()).toSize();
    const QSize shown = m_zoom == kFitToWindow
            ? m_frame->image.size().scaled(room, Qt::KeepAspectRatio)
            : m_frame->image.size() * m_zoom;
    const QSize margin = (room - shown).expandedTo({0, 0}) / 2;
    return {QPoint(margin.width(), margin.height()), shown};
}

void PictureView::updateSize()
{
    const QSize size = m_frame && m_zoom != kFitToWindow
            ? (QSizeF(m_frame->image.size() * m_zoom) / devicePixelRatioF()).toSize()
            : QSize(64, 64);
    if (size != minimumSize())
        setMinimumSize(size);
}

int PictureView::splitX() const
{
    return pictureRect().left() + int(m_split * pictureRect().width());
}

void PictureView::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), QColor(24, 24, 24));
    if (!m_frame)
        return;

    const QRect shown = pictureRect();
    painter.save();
    painter.scale(1.0 / devicePixelRatioF(), 1.0 / devicePixelRatioF());
    painter.setRenderHint(QPainter::SmoothPixmapTransform, shown.width() < m_frame->image.width());
    painter.drawImage(shown, m_frame->image);
    if (!m_frame->compared.isNull()) {
        painter.setClipRect(QRect(shown.topLeft(), QPoint(splitX() - 1, shown.bottom())));
        painter.drawImage(shown, m_frame->compared);
        painter.setClipping(false);
        painter.fillRect(QRect(splitX(), shown.top(), 2, shown.height()), Qt::white);
    }
    if (hasFocus()) {
        const double scale = double(shown.width()) / m_frame->image.width();
        painter.setPen(Qt::magenta);
        painter.drawRect(QRectF(shown.topLeft() + QPointF(m_pixel) * scale, QSizeF(scale, scale))
                                 .adjusted(-1, -1, 1, 1));
    }
    painter.restore();

    if (m_frame->preset != m_preset)
        drawLabel(painter, rect(), Qt::AlignTop | Qt::AlignLeft,
                  u"still %1"_s.arg(m_frame->preset));
    if (m_frame->isToneMapped)
        drawLabel(painter, rect(), Qt::AlignTop | Qt::AlignRight, u"HDR, tone-mapped"_s);
    if (!m_frame->compared.isNull()) {
        drawLabel(painter, rect(), Qt::AlignBottom | Qt::AlignLeft, m_comparedName);
        drawLabel(painter, rect(), Qt::AlignBottom | Qt::AlignRight, u"yours"_s);
    }
}

void PictureView::moveToPixel(QPoint pixel)
{
    if (!m_frame || !m_frame->image.rect().contains(pixel))
        return;
    m_pixel = pixel;
    update();
    Q_EMIT pixelHovered(pixel);
}

void PictureView::mousePressEvent(QMouseEvent *event)
{
    mouseMoveEvent(event);
}

void PictureView::mouseMoveEvent(QMouseEvent *event)
{
    const QRect shown = pictureRect();
    if (shown.isEmpty())
        return;
    const QPointF at = event->position() * devicePixelRatioF() - shown.topLeft();
    if (event->buttons().testFlag(Qt::LeftButton))
        m_split = std::clamp(at.x() / shown.width(), 0.0, 1.0);
    moveToPixel({int(std::floor(at.x() * m_frame->image.width() / shown.width())),
                 int(std::floor(at.y() * m_frame->image.height() / shown.height()))});
}

void PictureView::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Left:
        return moveToPixel(m_pixel - QPoint(1, 0));
    case Qt::Key_Right:
        return moveToPixel(m_pixel + QPoint(1, 0));
    case Qt::Key_Up:
        return moveToPixel(m_pixel - QPoint(0, 1));
    case Qt::Key_Down:
        return moveToPixel(m_pixel + QPoint(0, 1));
    case Qt::Key_BracketLeft:
    case Qt::Key_BracketRight:
        m_split = std::clamp(m_split + (event->key() == Qt::Key_BracketLeft ? -0.02 : 0.02), 0.0,
                             1.0);
        return update();
    default:
        return QWidget::keyPressEvent(event);
    }
}
