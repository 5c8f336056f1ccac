// Prints its manifest: for each preset the resource, the number of passes, whether it is animated,
// and the values.
#ifndef HEADER
#define HEADER "m.h"
#endif
#include HEADER

#include <cstdio>

int main()
{
    for (const RenderGraphManifestData::PresetEntry &preset : RenderGraphManifestData::kPresets) {
        std::printf("%s %d %s", preset.presetQrcPath, preset.passCount,
                    preset.usesFrameCount ? "moves" : "still");
        for (int index = 0; index < preset.presetParamCount; ++index)
            std::printf(" %s=%g", preset.presetParams[index].id,
                        double(preset.presetParams[index].initialValue));
        std::printf("\n");
    }
}
