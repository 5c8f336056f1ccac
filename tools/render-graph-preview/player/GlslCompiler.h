#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>

enum class ShaderStage : std::uint8_t { Vertex, Fragment };

// Compiles Vulkan GLSL to the same bytes as `glslangValidator -V`. An include is searched for
// beside the file that names it, then beside the files that include that one.
//
// On failure `error` is one line per error, "<file>:<line>: <message>". In both cases the files
// that were read are appended to `files`, and the paths at which an include was searched for but
// not found.
bool compileGlsl(const QString &path, ShaderStage stage, QByteArray &spirv, QStringList &files,
                 QString &error);
