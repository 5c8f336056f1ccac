#include "ComponentSource.h"
#include "ManifestWriter.h"
#include "PresetCompiler.h"
#include "PresetParameters.h"

#include <FirstPartyPresets.h>

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

using FirstPartyPresetSource::PassDecl;
using FirstPartyPresetSource::PresetDecl;

// Skips a pass whose source is missing; compilePreset() reports it.
bool usesFrameCount(const QString &shadersDir, const PresetDecl &decl)
{
    return std::ranges::any_of(passesOf(decl), [&shadersDir](const PassDecl &pass) {
        const QString path = slangComponentPath(shadersDir, QString::fromLatin1(pass.component));
        return QFile::exists(path) && sourceUsesFrameCount(path);
    });
}

// Fills `presets` with all presets, in their order. At the first that fails returns false; the step
// that failed has reported why.
bool compilePresets(const QString &shadersDir, QList<EmittedPreset> &presets)
{
    for (const PresetDecl &decl : FirstPartyPresetSource::kPresets) {
        EmittedPreset preset;
        preset.name = QString::fromLatin1(decl.name);
        preset.vulkanOnly = decl.vulkanOnly;
        preset.usesFrameCount = usesFrameCount(shadersDir, decl);
        if (!compilePreset(shadersDir, decl, preset.graph))
            return false;
        if (!collectPresetParameters(shadersDir, decl, preset.presetParams))
            return false;
        presets.append(preset);
    }
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    // Comes first because it removes Qt's own arguments from argv.
    const QCoreApplication application(argc, argv);

    // Arguments are pairs of an option and its value: a value may look like an option, and an
    // unknown word is skipped together with the word after it.
    QString shadersDir;
    QString outPath;
    for (int i = 1; i + 1 < argc; i += 2) {
        const QString option = QString::fromLocal8Bit(argv[i]);
        const QString value = QString::fromLocal8Bit(argv[i + 1]);
        if (option == "--shaders-dir"_L1)
            shadersDir = value;
        else if (option == "--out"_L1)
            outPath = value;
    }
    if (shadersDir.isEmpty() || outPath.isEmpty()) {
        std::fputs("usage: render-graph-compile --shaders-dir <path> --out <path>\n", stderr);
        return 1;
    }

    QList<EmittedPreset> presets;
    if (!compilePresets(shadersDir, presets))
        return 1;
    return writeManifest(outPath, presets) ? 0 : 1;
}
