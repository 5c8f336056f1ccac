// In a unity build, another source's `Preset` would mean this one.
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
