#include "PresetOnDisk.h"

#include "ErrorPlace.h"
#include "GlslCompiler.h"

#include <ComponentSource.h>
#include <Diagnostics.h>
#include <FirstPartyPresets.h>
#include <PresetCompiler.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <iterator>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using FirstPartyPresetSource::kPresets;
using FirstPartyPresetSource::PassDecl;
using FirstPartyPresetSource::PresetDecl;

QString glslpPath(const QString &shadersDir, const PresetDecl &decl)
{
    return QDir(shadersDir).filePath(QString::fromLatin1(decl.name) + ".glslp"_L1);
}

// The files that the preset's compiler looks for.
QStringList filesOf(const QString &shadersDir, const PresetDecl &decl)
{
    QStringList files;
    for (const PassDecl &pass : passesOf(decl))
        files.append(slangComponentPath(shadersDir, QString::fromLatin1(pass.component)));
    if (qstrcmp(decl.presetExtension, "glslp") == 0)
        files.append(glslpPath(shadersDir, decl));
    return files;
}

bool isShadersDir(const QString &path, QString &error)
{
    if (!QFileInfo(path).isDir())
        error = "the shaders directory '%1' does not exist"_L1.arg(path);
    else if (!QFileInfo(path + "/vulkan/components"_L1).isDir())
        error = "the shaders directory '%1' has no directory vulkan/components"_L1.arg(path);
    return error.isEmpty();
}

bool compileGraph(const QString &shadersDir, const PresetDecl &decl, PresetOnDisk &preset,
                  QString &error)
{
    const DiagnosticCollector diagnostics;
    const bool isCompiled = compilePreset(shadersDir, decl, preset.graph)
            && collectPresetParameters(shadersDir, decl, preset.parameters);
    if (isCompiled)
        return true;
    error = diagnostics.errors().join(u'\n');
    // The pass that failed is the first one that the graph does not have.
    const auto index = std::size_t(preset.graph.passes.size());
    const auto passes = passesOf(decl);
    const QString component =
            index < passes.size() ? QString::fromLatin1(passes[index].component) : QString();
    const QString place = errorPlace(error, slangComponentPath(shadersDir, component),
                                     glslpPath(shadersDir, decl), preset.parameters);
    if (!place.isEmpty())
        error += u'\n' + place;
    return false;
}

// Goes on after an error, so that the errors of all components are reported at once.
bool compileModules(const QString &shadersDir, PresetOnDisk &preset, QString &error)
{
    QStringList errors;
    const auto compile = [&](const QString &resource, const QString &path, ShaderStage stage) {
        if (preset.modules.contains(resource))
            return;
        QString shaderErrors;
        if (!compileGlsl(path, stage, preset.modules[resource], preset.files, shaderErrors))
            errors.append(shaderErrors.split(u'\n'));
    };
    for (const VulkanRenderGraph::Pass &pass : std::as_const(preset.graph.passes)) {
        compile(pass.vertexSpirvResource, QDir(shadersDir).filePath(u"vulkan/fullscreen.vert"_s),
                ShaderStage::Vertex);
        const QString slangPath = slangComponentPath(shadersDir, pass.debugName);
        const QString fragPath = fragComponentPath(shadersDir, pass.debugName);
        const bool isFrag = !QFile::exists(slangPath) && QFile::exists(fragPath);
        compile(pass.fragmentSpirvResource, isFrag ? fragPath : slangPath, ShaderStage::Fragment);
    }
    if (errors.isEmpty())
        return true;
    errors.removeDuplicates(); // of files that several components include
    error = errors.join(u'\n');
    return false;
}

} // namespace

QStringList presetNames()
{
    QStringList names;
    for (const PresetDecl &decl : kPresets)
        names.append(QString::fromLatin1(decl.name));
    return names;
}

bool loadPreset(const QString &shadersDir, const QString &name, PresetOnDisk &preset,
                QString &error)
{
    preset = {};
    preset.name = name;
    const auto *const decl = std::ranges::find_if(
            kPresets, [&name](const PresetDecl &row) { return name == QLatin1String(row.name); });
    if (decl == std::end(kPresets)) {
        error = "no preset '%1'; there are %2"_L1.arg(name, presetNames().join(", "_L1));
        return false;
    }
    preset.files = filesOf(shadersDir, *decl);
    preset.overrides = valueOverridesOf(*decl);
    const QString glslp = glslpPath(shadersDir, *decl);
    preset.hasGlslp = preset.files.contains(glslp) && QFile::exists(glslp);
    const bool isLoaded = isShadersDir(shadersDir, error)
            && compileGraph(shadersDir, *decl, preset, error)
            && compileModules(shadersDir, preset, error);
    preset.files.removeDuplicates();
    return isLoaded;
}

QHash<QString, float> initialValues(const QList<PresetParamMeta> &parameters)
{
    QHash<QString, float> values;
    for (const PresetParamMeta &parameter : parameters)
        values.insert(parameter.id, parameter.initialValue);
    return values;
}
