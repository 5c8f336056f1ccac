#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>

enum class ShaderStage : std::uint8_t { Vertex, Fragment };

struct CompiledShader
{
    QByteArray spirv;
    QString error; // empty if it compiled; else a line each, "<file>:<line>: <message>"
    QStringList files; // the source, what it includes, and where an include was looked for in vain
};

// Compiles Vulkan GLSL as `glslangValidator -V` does, to the same bytes. An include is looked for
// beside the file that names it, then beside those that include that one.
CompiledShader compileGlsl(const QString &path, ShaderStage stage);
