#pragma once

#include <QImage>
#include <QString>
#include <QStringList>

// Source pictures drawn by code: a pixel-art scene ("scene"), a test card ("card") and a photo-like
// scene ("photo"), each in the sizes that the presets are made for. "scene-320x240" is one name.
QStringList testPictureNames();

// As the frame of that number shows it: in the scene a part moves, the others stand still. Null if
// no picture has the name.
QImage testPicture(const QString &name, int frame = 0);
