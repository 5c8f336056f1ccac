#pragma once

#include <QImage>
#include <QString>
#include <QStringList>

// Source pictures, each in one or several sizes. "scene-320x240" is a name. Code draws a pixel-art
// scene ("scene"). The others are PNG files: a test card ("card"), a game in colours ("sprites")
// and in four greys ("greys"), a title screen ("title"), a screen of text ("text") and a face
// ("portrait").
QStringList testPictureNames();

// A frame of a test picture. "scene", "sprites" and "greys" are animated, the others are still.
// Null if no picture has the name.
QImage testPicture(const QString &name, int frame = 0);
