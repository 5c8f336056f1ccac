#include "PresetOnDisk.h"

#include "ErrorPlace.h"
#include "GlslCompiler.h"

#include <ComponentSource.h>
#include <Diagnostics.h>
#include <FirstPartyPresets.h>
#include <PresetCompiler.h>
#include <renderer/ModuleCheck.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

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

QString componentPath(const QString &shadersDir, const QString &component)
{
    const QString slangPath = slangComponentPath(shadersDir, component);
    const QString fragPath = fragComponentPath(shadersDir, component);
    return !QFile::exists(slangPath) && QFile::exists(fragPath) ? fragPath : slangPath;
}

// The lines of a file, without their ends.
QStringList linesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly | QIODevice::Text)
            ? QString::fromUtf8(file.readAll()).split(u'\n')
            : QStringList();
}

// An error of VulkanGraph::checkFragmentModule() with the line that declares the binding.
QString moduleError(const QString &path, const QString &error)
{
    static const QRegularExpression kBinding(uR"(^binding (\d+))"_s);
    const QRegularExpression declaration(
            uR"(.*\bbinding\s*=\s*%1\b.*)"_s.arg(kBinding.match(error).captured(1)));
    const auto line = linesOf(path).indexOf(declaration);
    return line < 0 ? "%1: %2"_L1.arg(path, error)
                    : "%1:%2: %3"_L1.arg(path, QString::number(line + 1), error);
}

// The lines `#define <parameter> pc.params[N]` that give a parameter the slot of another.
QStringList wrongSlots(const QString &path, const VulkanRenderGraph::Pass &pass)
{
    static const QRegularExpression kDefine(uR"(^\s*#\s*define\s+(\w+)\s+pc\.params\[(\d+)\])"_s);
    QStringList errors;
    int number = 0;
    for (const QString &line : linesOf(path)) {
        ++number;
        const QRegularExpressionMatch match = kDefine.match(line);
        for (const VulkanRenderGraph::PushConstantParam &param : pass.params) {
            if (match.captured(1) == param.id && match.captured(2).toUInt() != param.floatOffset) {
                errors.append("%1:%2: the slot of %3 is %4, not %5"_L1.arg(
                        path, QString::number(number), param.id, QString::number(param.floatOffset),
                        match.captured(2)));
            }
        }
    }
    return errors;
}

// What does not fit between the modules and their passes.
QStringList moduleErrors(const QString &shadersDir, const PresetOnDisk &preset)
{
    QStringList errors;
    for (int index = 0; index < preset.graph.passes.size(); ++index) {
        const VulkanRenderGraph::Pass &pass = preset.graph.passes.at(index);
        const QString path = componentPath(shadersDir, pass.debugName);
        QString reason;
        if (!VulkanGraph::checkFragmentModule(preset.modules.value(pass.fragmentSpirvResource),
                                              preset.graph, index, reason))
            errors.append(moduleError(path, reason));
        errors.append(wrongSlots(path, pass));
    }
    return errors;
}

// Goes on after an error, and returns the errors of all components.
QStringList compileModules(const QString &shadersDir, PresetOnDisk &preset)
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
        compile(pass.fragmentSpirvResource, componentPath(shadersDir, pass.debugName),
                ShaderStage::Fragment);
    }
    return errors;
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
    if (!isShadersDir(shadersDir, error) || !compileGraph(shadersDir, *decl, preset, error))
        return false;
    QStringList errors = compileModules(shadersDir, preset);
    if (errors.isEmpty())
        errors = moduleErrors(shadersDir, preset);
    errors.removeDuplicates(); // of files that several components include or passes have
    error = errors.join(u'\n');
    preset.files.removeDuplicates();
    return errors.isEmpty();
}

QHash<QString, float> initialValues(const QList<PresetParamMeta> &parameters)
{
    QHash<QString, float> values;
    for (const PresetParamMeta &parameter : parameters)
        values.insert(parameter.id, parameter.initialValue);
    return values;
}
