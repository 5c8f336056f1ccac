#pragma once

#include <QImage>
#include <QString>
#include <QStringList>

// Source pictures that are drawn by code: a pixel-art scene ("scene"), a test card ("card") and a
// photo-like scene ("photo"), each in several sizes. "scene-320x240" is a name.
QStringList testPictureNames();

// A frame of a test picture. The scene is animated, the others are still. Null if no picture has
// the name.
QImage testPicture(const QString &name, int frame = 0);
