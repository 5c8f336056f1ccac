#pragma once

#include <QImage>
#include <QPoint>
#include <QString>

// Text in a 5x7 face of our own, so that the same text is the same pixels on every machine. Lower
// case is shown as upper case, and what the face lacks as a space.
inline constexpr int kPixelTextHeight = 7;

int pixelTextWidth(const QString &text, int scale);

// Into an image of 32 bits per pixel; what would lie outside is left out.
void drawPixelText(QImage &image, QPoint topLeft, const QString &text, QRgb color, int scale = 1);
