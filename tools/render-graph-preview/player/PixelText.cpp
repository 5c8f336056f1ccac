#include "PixelText.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

constexpr int kGlyphWidth = 5;
constexpr int kAdvance = kGlyphWidth + 1;
constexpr int kGlyphsInRow = 16; // of the file, which begins with the space, in ASCII's order

} // namespace

int pixelTextWidth(const QString &text, int scale)
{
    return int(text.size()) * kAdvance * scale;
}

void drawPixelText(QImage &image, QPoint topLeft, const QString &text, QRgb color, int scale)
{
    QImage glyphs(u":/sprites/glyphs.png"_s);
    glyphs.setColor(1, color);
    QPainter painter(&image);
    QRect at(topLeft, QSize(kGlyphWidth, kPixelTextHeight) * scale);
    for (const QChar character : text) {
        const int index = character.toUpper().toLatin1() - ' ';
        const QRect glyph(index % kGlyphsInRow * kGlyphWidth,
                          index / kGlyphsInRow * kPixelTextHeight, kGlyphWidth, kPixelTextHeight);
        if (glyphs.rect().contains(glyph))
            painter.drawImage(at, glyphs, glyph);
        at.translate(kAdvance * scale, 0);
    }
}
