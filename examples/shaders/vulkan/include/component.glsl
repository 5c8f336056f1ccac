// What every component is given by the renderer and gives back. A component starts with
//     #version 450
//     #extension GL_GOOGLE_include_directive : require
//     #include "../include/component.glsl"
// and declares one sampler per sampled input, `layout(binding = N) uniform sampler2D ...`, N counting
// from 0: the previous pass (or the source image), the pass's own last output if it is a feedback
// pass, then its `//! input` aliases in the order of their lines.

// 0..1 over the output, (0, 0) at the top left.
layout(location = 0) in vec2 texCoord;
layout(location = 0) out vec4 fragColor;

// How many emulated frames there are in a second. The renderer knows.
layout(constant_id = 0) const float framesPerSecond = 60.0;

// 128 bytes, the least that every Vulkan device offers: 3 * 16 for the sizes and 5 * 4 for the
// scalars leave 60, which is 15 parameters.
layout(push_constant) uniform PushConstants
{
    vec4 sourceSize; // of binding 0: width, height in pixels, then their reciprocals
    vec4 outputSize; // of this pass
    vec4 originalSize; // of the picture that entered the preset
    uint frameCount; // emulated frames shown so far, framesPerSecond in a second
    int frameDirection; // 1 forwards, -1 while rewinding
    uint hdrOutputActive; // 1 when the swapchain is HDR
    float frameSeconds; // since the display's previous frame; 0: unknown
    float hdrHeadroom; // the display's peak over its reference white; 1 in SDR
    float params[15]; // by the rank of the parameter's id among the component's sorted ids
} pc;
