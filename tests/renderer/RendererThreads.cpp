#include "TestApplication.h"

#include <atomic>
#include <mutex>
#include <thread>

// Prepares graphs in one thread while another draws. The renderer and this program are compiled
// with the thread sanitizer, which looks for races. It would also report Qt Test's own threads.

namespace {

struct Choice
{
    VulkanGraphRenderer::PreparedGraph graph;
    std::vector<float> values;
};

} // namespace

// The sanitizer does not see how the software driver's own threads wait for each other.
extern "C" const char *__tsan_default_suppressions()
{
    return "race:libvulkan_lvp.so\n"
           "race:libLLVM\n";
}

int main()
{
    const PresetOnDisk preset = examplePreset(QStringLiteral("stock"));
    TestApplication application({.device = {}, .options = {2, false}, .hasHooks = false});
    std::mutex mutex; // of `latest`
    Choice latest;
    latest.graph = application.prepare(preset);
    latest.values = parameterValues(latest.graph, preset);
    std::atomic<bool> isDone = false;
    std::thread preparing([&] {
        for (int i = 0; i < 8; ++i) {
            Choice choice;
            {
                const std::lock_guard lock(mutex);
                choice.graph = latest.graph;
            }
            QString error;
            VulkanGraphRenderer::PrepareOptions options;
            options.targetFormat = VK_FORMAT_R16G16B16A16_SFLOAT;
            options.framesPerSecond = i % 2 == 0 ? 50.0F : 60.0F; // needs new pipelines
            if (!application.renderer().prepare(preset.graph, preset.modules, options, choice.graph,
                                                error, &choice.graph))
                qFatal("%s", qPrintable(error));
            choice.values = parameterValues(choice.graph, preset);
            const std::lock_guard lock(mutex);
            latest = std::move(choice);
        }
        isDone = true;
    });
    VulkanGraphRenderer::Frame frame;
    frame.source = application.addSource(FloatImage({16, 12}));
    frame.target = application.addTarget({40, 30});
    for (int drawn = 0; !isDone || drawn < 20; ++drawn) {
        Choice choice;
        {
            const std::lock_guard lock(mutex);
            choice = latest;
        }
        frame.frameInFlight = drawn % 2;
        frame.parameters = choice.values.data();
        QString error;
        if (!application.draw(choice.graph, frame, error))
            qFatal("%s", qPrintable(error));
    }
    preparing.join();
    return 0;
}
