#pragma once

#include <QImage>
#include <QPoint>
#include <QString>

// Text in a built-in 5x7 font, so that a text is the same pixels on every machine. Lower case is
// drawn as upper case, and characters that the font does not have as spaces.
inline constexpr int kPixelTextHeight = 7;

int pixelTextWidth(const QString &text, int scale);

// Draws into an image of 32 bits per pixel. Pixels outside the image are left out.
void drawPixelText(QImage &image, QPoint topLeft, const QString &text, QRgb color, int scale = 1);
