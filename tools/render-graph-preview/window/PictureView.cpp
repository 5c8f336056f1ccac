#include "PictureView.h"

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

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
    setAccessibleDescription(u"Arrow keys: next pixel\n[ and ]: move the split line"_s);
    setMinimumSize(64, 64);
    m_display.state.comparison = Comparison::Split;
}

void PictureView::setFrame(const std::shared_ptr<const FrameResult> &frame, const QString &preset)
{
    m_frame = frame;
    m_preset = preset;
    QWidget::update();
}

void PictureView::setZoom(int zoom)
{
    zoomAt(QRectF(QPointF(), sizeInPixels()).center(), zoom);
}

void PictureView::update(DisplaySettings &display) const
{
    display.state = m_display.state;
    display.state.size = sizeInPixels();
    if (m_showsOther)
        display.state.comparison = Comparison::Other;
    display.zoom = m_display.zoom;
    display.center = m_display.center;
    display.texel = m_display.texel;
}

QSize PictureView::sizeInPixels() const
{
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

double PictureView::shownZoom() const
{
    return m_frame ? double(m_frame->state.placement.width()) / m_frame->size.width() : 1.0;
}

QString PictureView::zoomText() const
{
    const double zoom = shownZoom();
    return u"%1%2:1%3"_s.arg(m_display.zoom == DisplaySettings::kFit ? u"fit, "_s : QString(),
                             QString::number(zoom, 'g', 3),
                             zoom < 1.0 ? u", averaged"_s : QString());
}

// Of the picture at that position.
QRect PictureView::placementAt(QPointF position) const
{
    const ViewState &state = m_frame->state;
    const int half = state.size.width() / 2;
    const bool isRight = state.comparison == Comparison::SideBySide && position.x() >= half;
    return state.placement.translated(isRight ? half : 0, 0);
}

// What is at the position stays there.
void PictureView::zoomAt(QPointF position, int zoom)
{
    if (zoom == m_display.zoom)
        return;
    if (m_frame && zoom != DisplaySettings::kFit) {
        const QRect shown = placementAt(position);
        const QPointF at = position - shown.topLeft();
        const QSizeF size = QSizeF(m_frame->size) * zoom;
        const QPointF middle = QRectF(QPointF(), sizeInPixels()).center();
        m_display.center = {at.x() / shown.width() + (middle.x() - position.x()) / size.width(),
                            at.y() / shown.height() + (middle.y() - position.y()) / size.height()};
    }
    m_display.zoom = zoom;
    Q_EMIT zoomChanged(zoom);
    Q_EMIT displayChanged();
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
        const QRect shown = m_frame->state.placement;
        const double scale = shownZoom();
        painter.setPen(Qt::magenta);
        painter.drawRect(QRectF(shown.topLeft() + QPointF(m_frame->texelPosition) * scale,
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
    else if (state.comparison != Comparison::None)
        drawLabel(painter, rect(), Qt::AlignBottom | Qt::AlignLeft, m_frame->comparedName);
    if (state.comparison == Comparison::Split || state.comparison == Comparison::SideBySide)
        drawLabel(painter, rect(), Qt::AlignBottom | Qt::AlignRight, u"current"_s);
    m_paintMilliseconds = double(timer.nsecsElapsed()) * 1e-6;
}

void PictureView::resizeEvent(QResizeEvent * /*event*/)
{
    Q_EMIT resized();
}

bool PictureView::moveToPixel(QPoint pixel)
{
    if (!m_frame || !QRect(QPoint(), m_frame->size).contains(pixel) || pixel == m_display.texel)
        return false;
    m_display.texel = pixel;
    Q_EMIT displayChanged();
    return true;
}

void PictureView::moveSplit(double split)
{
    m_display.state.split = float(std::clamp(split, 0.0, 1.0));
    Q_EMIT displayChanged();
}

void PictureView::wheelEvent(QWheelEvent *event)
{
    if (!m_frame || event->angleDelta().y() == 0)
        return;
    const double shown = shownZoom();
    int smaller = DisplaySettings::kFit;
    int larger = m_display.zoom;
    for (const int zoom : kZooms) {
        if (zoom < shown)
            smaller = zoom;
        if (zoom > shown && larger <= shown)
            larger = zoom;
    }
    zoomAt(event->position() * devicePixelRatioF(), event->angleDelta().y() > 0 ? larger : smaller);
}

void PictureView::mousePressEvent(QMouseEvent *event)
{
    m_dragged = event->position() * devicePixelRatioF();
    if (!m_frame)
        return;
    const ViewState &state = m_frame->state;
    const double line =
            state.placement.left() + double(state.split) * state.placement.width() + 1.0;
    m_isSplitDragged = state.comparison == Comparison::Split
            && std::abs(m_dragged.x() - line) <= kGrabDistance * devicePixelRatioF();
    mouseMoveEvent(event);
}

void PictureView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_frame)
        return;
    const QPointF position = event->position() * devicePixelRatioF();
    const QRect shown = placementAt(position);
    const QPointF at = position - shown.topLeft();
    if (event->buttons().testFlag(Qt::LeftButton)) {
        const QPointF moved = position - std::exchange(m_dragged, position);
        if (m_isSplitDragged)
            return moveSplit(at.x() / shown.width());
        if (!moved.isNull() && m_display.zoom != DisplaySettings::kFit) {
            const auto pan = [](double center, double by, int length, int within) {
                const double margin = std::min(0.5, within / 2.0 / length);
                return std::clamp(center - by / length, margin, 1.0 - margin);
            };
            const QSize room = sizeInPixels();
            m_display.center = {
                    pan(m_display.center.x(), moved.x(), shown.width(), room.width()),
                    pan(m_display.center.y(), moved.y(), shown.height(), room.height())};
            Q_EMIT displayChanged();
        }
    }
    const double scale = shownZoom();
    moveToPixel({int(std::floor(at.x() / scale)),
                 int(std::floor(at.y() * m_frame->size.height() / shown.height()))});
}

void PictureView::keyPressEvent(QKeyEvent *event)
{
    static const QHash<int, QPoint> kMoves = {{Qt::Key_Left, {-1, 0}},
                                              {Qt::Key_Right, {1, 0}},
                                              {Qt::Key_Up, {0, -1}},
                                              {Qt::Key_Down, {0, 1}}};
    static const QList<int> kChannels = {Qt::Key_R, Qt::Key_G, Qt::Key_B, Qt::Key_A};
    ViewState &state = m_display.state;
    const int key = event->key();
    if (event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier))
        return QWidget::keyPressEvent(event);
    if (kMoves.contains(key)) {
        moveToPixel(m_display.texel + kMoves.value(key));
        return;
    }
    if (key == Qt::Key_BracketLeft || key == Qt::Key_BracketRight)
        return moveSplit(double(state.split) + (key == Qt::Key_BracketLeft ? -0.02 : 0.02));
    if (key == Qt::Key_1 || key == Qt::Key_F || key == Qt::Key_0)
        return setZoom(key == Qt::Key_1 ? 1 : DisplaySettings::kFit);
    if (key == Qt::Key_M)
        state.comparison = state.comparison == Comparison::Difference
                ? Comparison::Split
                : Comparison(int(state.comparison) + 1);
    else if (key == Qt::Key_E)
        state.exposure *= event->modifiers().testFlag(Qt::ShiftModifier) ? 0.5F : 2.0F;
    else if (const auto channel = int(kChannels.indexOf(key)); channel >= 0)
        state.channel = state.channel == channel ? -1 : channel;
    else if (key == Qt::Key_Space)
        m_showsOther = true;
    else
        return QWidget::keyPressEvent(event);
    Q_EMIT displayChanged();
}

void PictureView::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Space || event->isAutoRepeat())
        return QWidget::keyReleaseEvent(event);
    m_showsOther = false;
    Q_EMIT displayChanged();
}
