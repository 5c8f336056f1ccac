// In a unity build this would be what a `Preset` in another source means.
struct Preset
{
    int id;
};

#include HEADER

#ifdef PROGRAM
int presetCount();
int presetCount()
#else
int embeddedCount();
int embeddedCount()
#endif
{
    return static_cast<int>(sizeof(RenderGraphManifestData::kPresets)
                            / sizeof(RenderGraphManifestData::kPresets[0]));
}
