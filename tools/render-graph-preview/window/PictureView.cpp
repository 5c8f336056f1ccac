#include "PictureView.h"

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using Comparison = ViewState::Comparison;

constexpr double kGrabDistance = 6.0; // of the split line, in pixels of the screen

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
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(u"Picture"_s);
    setAccessibleDescription(u"1: one pixel of the screen for each\n"
                             "F: as large as fits\n"
                             "Arrow keys: next pixel\n"
                             "[ and ]: move the split line\n"
                             "M: split, side by side, difference\n"
                             "Space: what is compared with, while held\n"
                             "E and Shift+E: more and less exposure\n"
                             "R, G, B and A: one channel\n"
                             "Wheel and dragging: zoom and move"_s);
    setMinimumSize(64, 64);
    m_state.comparison = Comparison::Split;
}

void PictureView::setFrame(const std::shared_ptr<const FrameResult> &frame, const QString &preset)
{
    m_frame = frame;
    m_preset = preset;
    update();
}

void PictureView::setZoom(int zoom)
{
    zoomAt(QRectF(QPointF(), sizeInPixels()).center(), zoom);
}

ViewState PictureView::state() const
{
    ViewState state = m_state;
    state.size = sizeInPixels();
    if (m_showsOther)
        state.comparison = Comparison::Other;
    return state;
}

QSize PictureView::sizeInPixels() const
{
    return (QSizeF(size()) * devicePixelRatioF()).toSize().expandedTo({1, 1});
}

void PictureView::zoomAt(QPointF position, int zoom)
{
    if (zoom == m_state.zoom)
        return;
    m_state.zoom = zoom;
    if (m_frame) {
        ViewState state = m_frame->state;
        state.zoomAt(m_frame->size, position, zoom);
        m_state.center = state.center;
    }
    Q_EMIT zoomChanged(zoom);
    Q_EMIT stateChanged();
}

void PictureView::paintEvent(QPaintEvent * /*event*/)
{
    QElapsedTimer timer;
    timer.start();
    QPainter painter(this);
    const QColor surround(24, 24, 24);
    if (!m_frame)
        return painter.fillRect(rect(), surround);

    const QImage &image = m_frame->image;
    painter.save();
    painter.scale(1.0 / devicePixelRatioF(), 1.0 / devicePixelRatioF());
    if (image.size() != sizeInPixels())
        painter.fillRect(QRect(QPoint(), sizeInPixels()), surround);
    painter.drawImage(0, 0, image);
    if (hasFocus()) {
        const ViewState &shown = m_frame->state;
        const double scale = shown.shownZoom(m_frame->size);
        painter.setPen(Qt::magenta);
        painter.drawRect(
                QRectF(shown.placement(m_frame->size).topLeft() + QPointF(shown.texel) * scale,
                       QSizeF(scale, scale))
                        .adjusted(-1, -1, 1, 1));
    }
    painter.restore();

    QStringList notes;
    if (m_frame->preset != m_preset)
        notes.append(u"still %1"_s.arg(m_frame->preset));
    const ViewState &state = m_frame->state;
    if (state.exposure != 1.0F)
        notes.append(u"exposure %1"_s.arg(double(std::log2(state.exposure))));
    if (state.channel >= 0)
        notes.append(QStringList({u"red"_s, u"green"_s, u"blue"_s, u"alpha"_s}).at(state.channel));
    if (!notes.isEmpty())
        drawLabel(painter, rect(), Qt::AlignTop | Qt::AlignLeft, notes.join(u", "_s));
    if (m_frame->isToneMapped)
        drawLabel(painter, rect(), Qt::AlignTop | Qt::AlignRight, u"HDR, tone-mapped"_s);
    if (state.comparison == Comparison::Difference)
        drawLabel(painter, rect(), Qt::AlignBottom | Qt::AlignLeft,
                  u"difference from %1, times %2"_s.arg(m_frame->comparedName)
                          .arg(ViewState::kDifferenceGain));
    else if (state.comparison != Comparison::Nothing)
        drawLabel(painter, rect(), Qt::AlignBottom | Qt::AlignLeft, m_frame->comparedName);
    if (state.comparison == Comparison::Split || state.comparison == Comparison::SideBySide)
        drawLabel(painter, rect(), Qt::AlignBottom | Qt::AlignRight, u"current"_s);
    m_paintMilliseconds = double(timer.nsecsElapsed()) * 1e-6;
}

void PictureView::resizeEvent(QResizeEvent * /*event*/)
{
    Q_EMIT resized();
}

void PictureView::readTexel(QPoint texel)
{
    if (!m_frame || !QRect(QPoint(), m_frame->size).contains(texel) || texel == m_state.texel)
        return;
    m_state.texel = texel;
    Q_EMIT stateChanged();
}

// Touchpads turn in small parts of a notch.
void PictureView::wheelEvent(QWheelEvent *event)
{
    m_turned += event->angleDelta().y();
    const int notches = m_turned / QWheelEvent::DefaultDeltasPerStep;
    m_turned -= notches * QWheelEvent::DefaultDeltasPerStep;
    if (m_frame && notches != 0)
        zoomAt(event->position() * devicePixelRatioF(),
               m_frame->state.nextZoom(m_frame->size, notches > 0));
}

void PictureView::mousePressEvent(QMouseEvent *event)
{
    m_dragged = event->position() * devicePixelRatioF();
    m_isSplitDragged = m_frame
            && m_frame->state.isAtSplit(m_frame->size, m_dragged,
                                        kGrabDistance * devicePixelRatioF());
    mouseMoveEvent(event);
}

void PictureView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_frame)
        return;
    const QPointF position = event->position() * devicePixelRatioF();
    const QPointF moved = position - m_dragged;
    if (!event->buttons().testFlag(Qt::LeftButton) || moved.isNull())
        return readTexel(m_frame->state.texelAt(m_frame->size, position));
    m_dragged = position;
    m_state.size = sizeInPixels();
    if (m_isSplitDragged)
        m_state.moveSplit(m_frame->size, position.x());
    else
        m_state.pan(m_frame->size, moved);
    Q_EMIT stateChanged();
}

void PictureView::keyPressEvent(QKeyEvent *event)
{
    static const QHash<int, QPoint> kMoves = {{Qt::Key_Left, {-1, 0}},
                                              {Qt::Key_Right, {1, 0}},
                                              {Qt::Key_Up, {0, -1}},
                                              {Qt::Key_Down, {0, 1}}};
    static const QList<int> kChannels = {Qt::Key_R, Qt::Key_G, Qt::Key_B, Qt::Key_A};
    ViewState &state = m_state;
    const int key = event->key();
    const bool isShifted = event->modifiers().testFlag(Qt::ShiftModifier);
    if ((event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) != Qt::NoModifier)
        return QWidget::keyPressEvent(event);
    if (kMoves.contains(key))
        return readTexel(state.texel + kMoves.value(key));
    if (key == Qt::Key_1 || key == Qt::Key_F || key == Qt::Key_0)
        return setZoom(key == Qt::Key_1 ? 1 : ViewState::kFit);
    if (key == Qt::Key_BracketLeft || key == Qt::Key_BracketRight)
        state.split =
                std::clamp(state.split + (key == Qt::Key_BracketLeft ? -0.02F : 0.02F), 0.0F, 1.0F);
    else if (key == Qt::Key_M)
        state.comparison = state.comparison == Comparison::Difference
                ? Comparison::Split
                : Comparison(int(state.comparison) + 1);
    else if (key == Qt::Key_E)
        state.exposure *= isShifted ? 0.5F : 2.0F;
    else if (const auto channel = int(kChannels.indexOf(key)); channel >= 0)
        state.channel = state.channel == channel ? -1 : channel;
    else if (key == Qt::Key_Space)
        m_showsOther = true;
    else
        return QWidget::keyPressEvent(event);
    Q_EMIT stateChanged();
}

void PictureView::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Space)
        return QWidget::keyReleaseEvent(event);
    if (!event->isAutoRepeat())
        hideOther();
}

// The key may be released elsewhere.
void PictureView::focusOutEvent(QFocusEvent *event)
{
    QWidget::focusOutEvent(event);
    hideOther();
}

void PictureView::hideOther()
{
    if (std::exchange(m_showsOther, false))
        Q_EMIT stateChanged();
}
