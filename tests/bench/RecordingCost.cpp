#include <TestApplication.h>

#include <cstdio>
#include <cstring>
#include <ctime>

// Prints the CPU time of recording a frame, in microseconds: by the renderer, and by the same
// Vulkan calls alone. They take turns, since other programs use the processor too, and the least
// time of each counts.

namespace {

constexpr int kRounds = 200;
constexpr int kFramesPerRound = 20;

// The calls of a frame, with copies of what they point to.
std::vector<std::function<void(VkCommandBuffer)>> calls;
PFN_vkGetInstanceProcAddr realGetInstanceProcAddr = nullptr;
PFN_vkGetDeviceProcAddr realGetDeviceProcAddr = nullptr;

template<typename Function>
Function real = nullptr;

// Of functions whose arguments are numbers and handles.
template<typename... Arguments>
void VKAPI_CALL captured(VkCommandBuffer commands, Arguments... arguments)
{
    using Function = void(VKAPI_PTR *)(VkCommandBuffer, Arguments...);
    const Function function = real<Function>;
    calls.emplace_back([=](VkCommandBuffer replayed) { function(replayed, arguments...); });
    function(commands, arguments...);
}

void VKAPI_CALL beginRenderPass(VkCommandBuffer commands, const VkRenderPassBeginInfo *info,
                                VkSubpassContents contents)
{
    const auto function = real<PFN_vkCmdBeginRenderPass>;
    calls.emplace_back([=, begin = *info, clear = *info->pClearValues](VkCommandBuffer replayed) {
        VkRenderPassBeginInfo copy = begin;
        copy.pClearValues = &clear;
        function(replayed, &copy, contents);
    });
    function(commands, info, contents);
}

void VKAPI_CALL setViewport(VkCommandBuffer commands, std::uint32_t first, std::uint32_t count,
                            const VkViewport *viewport)
{
    const auto function = real<PFN_vkCmdSetViewport>;
    calls.emplace_back([=, copy = *viewport](VkCommandBuffer replayed) {
        function(replayed, first, count, &copy);
    });
    function(commands, first, count, viewport);
}

void VKAPI_CALL setScissor(VkCommandBuffer commands, std::uint32_t first, std::uint32_t count,
                           const VkRect2D *scissor)
{
    const auto function = real<PFN_vkCmdSetScissor>;
    calls.emplace_back([=, copy = *scissor](VkCommandBuffer replayed) {
        function(replayed, first, count, &copy);
    });
    function(commands, first, count, scissor);
}

void VKAPI_CALL bindDescriptorSets(VkCommandBuffer commands, VkPipelineBindPoint point,
                                   VkPipelineLayout layout, std::uint32_t first,
                                   std::uint32_t count, const VkDescriptorSet *sets,
                                   std::uint32_t offsetCount, const std::uint32_t *offsets)
{
    const auto function = real<PFN_vkCmdBindDescriptorSets>;
    calls.emplace_back([=, copy = *sets](VkCommandBuffer replayed) {
        function(replayed, point, layout, first, count, &copy, offsetCount, offsets);
    });
    function(commands, point, layout, first, count, sets, offsetCount, offsets);
}

void VKAPI_CALL pushConstants(VkCommandBuffer commands, VkPipelineLayout layout,
                              VkShaderStageFlags stages, std::uint32_t offset, std::uint32_t size,
                              const void *values)
{
    const auto function = real<PFN_vkCmdPushConstants>;
    std::array<unsigned char, 128> copy = {};
    std::memcpy(copy.data(), values, size);
    calls.emplace_back([=](VkCommandBuffer replayed) {
        function(replayed, layout, stages, offset, size, copy.data());
    });
    function(commands, layout, stages, offset, size, values);
}

template<typename Function>
PFN_vkVoidFunction captureBy(Function capture, PFN_vkVoidFunction function)
{
    real<Function> = reinterpret_cast<Function>(function);
    return reinterpret_cast<PFN_vkVoidFunction>(capture);
}

PFN_vkVoidFunction VKAPI_CALL getDeviceProcAddr(VkDevice device, const char *name)
{
    const PFN_vkVoidFunction function = realGetDeviceProcAddr(device, name);
    const auto is = [name](const char *other) { return std::strcmp(name, other) == 0; };
    if (is("vkCmdBeginRenderPass"))
        return captureBy<PFN_vkCmdBeginRenderPass>(beginRenderPass, function);
    if (is("vkCmdSetViewport"))
        return captureBy<PFN_vkCmdSetViewport>(setViewport, function);
    if (is("vkCmdSetScissor"))
        return captureBy<PFN_vkCmdSetScissor>(setScissor, function);
    if (is("vkCmdBindDescriptorSets"))
        return captureBy<PFN_vkCmdBindDescriptorSets>(bindDescriptorSets, function);
    if (is("vkCmdPushConstants"))
        return captureBy<PFN_vkCmdPushConstants>(pushConstants, function);
    if (is("vkCmdBindPipeline"))
        return captureBy<PFN_vkCmdBindPipeline>(captured, function);
    if (is("vkCmdDraw"))
        return captureBy<PFN_vkCmdDraw>(captured, function);
    if (is("vkCmdEndRenderPass"))
        return captureBy<PFN_vkCmdEndRenderPass>(captured, function);
    return function;
}

PFN_vkVoidFunction VKAPI_CALL getInstanceProcAddr(VkInstance instance, const char *name)
{
    const PFN_vkVoidFunction function = realGetInstanceProcAddr(instance, name);
    if (std::strcmp(name, "vkGetDeviceProcAddr") != 0)
        return function;
    realGetDeviceProcAddr = reinterpret_cast<PFN_vkGetDeviceProcAddr>(function);
    return reinterpret_cast<PFN_vkVoidFunction>(&getDeviceProcAddr);
}

double cpuMicroseconds()
{
    std::timespec time = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e6 + double(time.tv_nsec) * 1e-3;
}

// A preset drawn at 1440x1080, with all that a frame needs.
struct Drawing
{
    Drawing(TestApplication &application, VulkanGraphRenderer &drawingRenderer,
            const PresetOnDisk &preset)
        : renderer(drawingRenderer),
          graph(application.prepare(preset, VK_FORMAT_R8G8B8A8_UNORM, &renderer)),
          values(parameterValues(graph, preset))
    {
        frame.source = application.addSource(FloatImage({256, 224}), &renderer);
        frame.target = application.addTarget({1440, 1080}, VK_FORMAT_R8G8B8A8_UNORM, &renderer);
        frame.parameters = values.data();
    }
    void record(VkCommandBuffer commands)
    {
        QString error;
        ++frame.frameCount;
        if (!renderer.record(commands, graph, frame, error))
            qFatal("%s", qPrintable(error));
    }

    VulkanGraphRenderer &renderer;
    VulkanGraphRenderer::PreparedGraph graph;
    std::vector<float> values;
    VulkanGraphRenderer::Frame frame;
};

} // namespace

int main()
{
    TestApplication application;
    const PresetOnDisk preset = examplePreset(QStringLiteral("crt-consumer"));
    VulkanGraphRenderer::Device device = application.handles();
    realGetInstanceProcAddr = device.getInstanceProcAddr;
    device.getInstanceProcAddr = getInstanceProcAddr;
    QString error;
    std::unique_ptr<VulkanGraphRenderer> capturingRenderer;
    if (!VulkanGraphRenderer::create(device, {1, false}, capturingRenderer, error))
        qFatal("%s", qPrintable(error));
    Drawing capturing(application, *capturingRenderer, preset);
    Drawing drawing(application, application.renderer(), preset);
    // The steady state begins with the second frame.
    for (int i = 0; i < 3; ++i) {
        calls.clear();
        application.withCommands([&](VkCommandBuffer commands) { capturing.record(commands); });
        application.withCommands([&](VkCommandBuffer commands) { drawing.record(commands); });
    }
    qsizetype passes = 0;
    for (const VulkanGraphRenderer::PassState &pass : application.renderer().passes())
        passes += pass.kind == VulkanGraphRenderer::PassKind::Drawn ? 1 : 0;

    double renderer = 1e9;
    double bare = 1e9;
    const auto timed = [&application](double &least, const auto &record) {
        double sum = 0.0;
        for (int i = 0; i < kFramesPerRound; ++i) {
            application.withCommands([&](VkCommandBuffer commands) {
                const double start = cpuMicroseconds();
                record(commands);
                sum += cpuMicroseconds() - start;
            });
        }
        least = std::min(least, sum / kFramesPerRound);
    };
    for (int round = 0; round < kRounds; ++round) {
        timed(renderer, [&](VkCommandBuffer commands) { drawing.record(commands); });
        timed(bare, [](VkCommandBuffer commands) {
            for (const auto &call : calls)
                call(commands);
        });
    }
    std::printf("%lld passes, %zu calls\t%.1f\t%.1f\t%.2f\n", static_cast<long long>(passes),
                calls.size(), renderer, bare, renderer / bare);
    return 0;
}
