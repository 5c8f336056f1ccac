#include "RenderGraphManifest.h"

#include <cstdio>

int main()
{
    for (const RenderGraphManifestData::PresetEntry &preset : RenderGraphManifestData::kPresets)
        std::printf("%s %d\n", preset.presetQrcPath, preset.passCount);
}
