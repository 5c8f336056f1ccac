#include "ViewState.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

// The first pixel of a picture in one dimension. Nothing is shown beside what exceeds the view.
int beginOf(int length, double room, double center)
{
    const double begin = length <= room
            ? std::floor((room - length) / 2.0)
            : std::clamp(room / 2.0 - center * length, room - length, 0.0);
    return int(std::lround(begin));
}

double clampedCenter(double center, int length, double room)
{
    const double margin = std::min(0.5, room / 2.0 / length);
    return std::clamp(center, margin, 1.0 - margin);
}

} // namespace

QSizeF ViewState::room() const
{
    const bool isHalf = comparison == Comparison::SideBySide && size.width() > 1;
    return {isHalf ? std::floor(size.width() / 2.0) : size.width(), double(size.height())};
}

QRect ViewState::placement(QSize picture) const
{
    const QSizeF within = room();
    const QSize shown =
            (zoom == kFit ? picture.scaled(within.toSize(), Qt::KeepAspectRatio) : picture * zoom)
                    .expandedTo({1, 1});
    return {QPoint(beginOf(shown.width(), within.width(), center.x()),
                   beginOf(shown.height(), within.height(), center.y())),
            shown};
}

QRect ViewState::placementAt(QSize picture, QPointF position) const
{
    const QRect left = placement(picture);
    const bool isRight = comparison == Comparison::SideBySide && position.x() >= room().width();
    return left.translated(isRight ? int(room().width()) : 0, 0);
}

double ViewState::shownZoom(QSize picture) const
{
    return double(placement(picture).width()) / picture.width();
}

QString ViewState::zoomText(QSize picture) const
{
    const double shown = shownZoom(picture);
    return u"%1%2:1%3"_s.arg(zoom == kFit ? u"fit, "_s : QString(), QString::number(shown, 'g', 3),
                             shown < 1.0 ? u", averaged"_s : QString());
}

QPoint ViewState::texelAt(QSize picture, QPointF position) const
{
    const QRect shown = placementAt(picture, position);
    const QPointF at = position - shown.topLeft();
    return {int(std::floor(at.x() * picture.width() / shown.width())),
            int(std::floor(at.y() * picture.height() / shown.height()))};
}

bool ViewState::isAtSplit(QSize picture, QPointF position, double distance) const
{
    const QRect shown = placement(picture);
    const double line = shown.left() + double(split) * shown.width() + 1.0;
    return comparison == Comparison::Split && std::abs(position.x() - line) <= distance;
}

void ViewState::moveSplit(QSize picture, double x)
{
    const QRect shown = placement(picture);
    split = float(std::clamp((x - shown.left()) / shown.width(), 0.0, 1.0));
}

void ViewState::zoomAt(QSize picture, QPointF position, int newZoom)
{
    const QRect before = placementAt(picture, position);
    const QPointF at = position - before.topLeft();
    const double right = position.x() >= room().width() ? room().width() : 0.0;
    zoom = newZoom;
    const QSize after = placement(picture).size();
    center = {at.x() / before.width() + (room().width() / 2 - position.x() + right) / after.width(),
              at.y() / before.height() + (room().height() / 2 - position.y()) / after.height()};
    pan(picture, {});
}

int ViewState::nextZoom(QSize picture, bool isLarger) const
{
    const double shown = shownZoom(picture);
    int smaller = kFit;
    for (const int next : kZooms) {
        if (isLarger && next > shown)
            return next;
        if (next < shown)
            smaller = next;
    }
    return isLarger ? zoom : smaller;
}

void ViewState::pan(QSize picture, QPointF by)
{
    const QSize shown = placement(picture).size();
    center = {clampedCenter(center.x() - by.x() / shown.width(), shown.width(), room().width()),
              clampedCenter(center.y() - by.y() / shown.height(), shown.height(), room().height())};
}
