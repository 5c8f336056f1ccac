#pragma once

#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QSize>
#include <QString>

#include <cstdint>

// How a picture is shown. Lengths and positions are in pixels of the view, which are those of the
// screen. Enlarged, a pixel has the colour of the texel that it lies in; reduced, the mean light of
// the texels that it covers, where the values of SDR are gamma-encoded with 2.2.
struct ViewState
{
    enum class Comparison : std::uint8_t {
        Nothing,
        Split, // the other picture left of a white line of two pixels
        SideBySide, // the other picture in the left half
        Difference, // of the shown colours, enlarged
        Other // the other picture alone
    };
    static constexpr int kDifferenceGain = 8;

    static constexpr int kFit = 0; // as large as fits
    static constexpr int kZooms[] = {kFit, 1, 2, 3, 4, 6, 8};

    QSize size = {1, 1};
    int zoom = kFit; // pixels for each texel
    QPointF center = {0.5,
                      0.5}; // in the middle of the view, of the picture's size, if it exceeds it
    Comparison comparison = Comparison::Nothing;
    float split = 0.5F; // of the picture's width
    float exposure = 1.0F; // multiplies light
    int channel = -1; // shown in grey: 0 to 3, red to alpha; -1: colours
    QPoint texel; // is read

    // The following are for a picture of that size in texels.

    // Where all of the picture is, also what exceeds the view; side by side: the left one.
    QRect placement(QSize picture) const;
    double shownZoom(QSize picture) const;
    QString zoomText(QSize picture) const; // such as "fit, 0.73:1, averaged"
    QPoint texelAt(QSize picture, QPointF position) const;
    bool isAtSplit(QSize picture, QPointF position, double distance) const;
    void moveSplit(QSize picture, double x);
    // What is at the position stays there.
    void zoomAt(QSize picture, QPointF position, int newZoom);
    // The next one of kZooms, or the same.
    int nextZoom(QSize picture, bool isLarger) const;
    void pan(QSize picture, QPointF by);

private:
    QSizeF room() const;
    QRect placementAt(QSize picture, QPointF position) const;
};
