#include "TestApplication.h"
#include "TestSupport.h"

#include <GlslCompiler.h>
#include <ViewPass.h>

#include <QDir>
#include <QTemporaryDir>

#include <array>

using namespace Qt::StringLiterals;

// Draws every preset under Vulkan's validation layer with synchronization validation, which must
// not report anything: as applications do it, with frames in flight, and as the preview does.

class TestValidation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void layerReportsHazards();
    void presetsAreClean_data();
    void presetsAreClean();
    void graphsChangeWhileFramesAreInFlight_data();
    void graphsChangeWhileFramesAreInFlight();
    void clearedImagesAreClean();
    void offscreenRendererIsClean();
    void viewIsClean();

private:
    QByteArray messages() const
    {
        return readFile(m_directory.filePath(u"messages"_s));
    }

    QTemporaryDir m_directory;
};

void TestValidation::initTestCase()
{
    enableValidation(QStringLiteral(VALIDATION_LAYER), m_directory.path());
}

void TestValidation::cleanup()
{
    QFile::resize(m_directory.filePath(u"messages"_s), 0);
}

// Without this a layer that is not loaded would pass the test.
void TestValidation::layerReportsHazards()
{
    std::unique_ptr<VulkanDevice> device;
    std::unique_ptr<DeviceImage> image;
    QString error;
    QVERIFY2(VulkanDevice::open(softwareDevice(), device, error), qPrintable(error));
    QVERIFY2(device->createImage({1, 1}, VK_FORMAT_R8G8B8A8_UNORM, VK_IMAGE_USAGE_TRANSFER_DST_BIT,
                                 image, error),
             qPrintable(error));
    const VulkanGraphRenderer::Device handles = device->handles();
    const auto clear = reinterpret_cast<PFN_vkCmdClearColorImage>(
            handles.getInstanceProcAddr(handles.instance, "vkCmdClearColorImage"));
    device->submit(
            0,
            [&](VkCommandBuffer commands) {
                const VkClearColorValue color = {};
                const VkImageSubresourceRange range = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
                for (int i = 0; i < 2; ++i) // without a barrier
                    clear(commands, image->image(), VK_IMAGE_LAYOUT_GENERAL, &color, 1, &range);
                return false; // not to be submitted
            },
            error);
    QVERIFY2(messages().contains("SYNC-HAZARD-WRITE"), messages().constData());
}

void TestValidation::presetsAreClean_data()
{
    QTest::addColumn<QString>("preset");
    QTest::addColumn<int>("framesInFlight");
    QTest::addColumn<bool>("keepsOutputs");
    int row = 0;
    for (const QString &name : presetNames()) {
        if (!isTested(name))
            continue;
        QTest::newRow(qPrintable(name)) << name << 1 + row % 3 << false;
        QTest::newRow(qPrintable(name + u", outputs kept"_s)) << name << 3 - row % 3 << true;
        ++row;
    }
}

// Frames of each kind. Small, as the layer looks at commands and not at pixels.
void TestValidation::presetsAreClean()
{
    QFETCH(QString, preset);
    QFETCH(int, framesInFlight);
    QFETCH(bool, keepsOutputs);
    const PresetOnDisk loaded = examplePreset(preset);
    QString error;
    {
        TestApplication application(
                {.device = {}, .options = {framesInFlight, keepsOutputs}, .hasHooks = false});
        const VulkanGraphRenderer::PreparedGraph graph = application.prepare(loaded);
        std::vector<float> values = parameterValues(graph, loaded);
        VulkanGraphRenderer::Frame frame;
        frame.source = application.addSource(FloatImage({24, 10}, {0.5F, 0.25F, 0.75F, 1.0F}));
        frame.target = application.addTarget({97, 65});
        frame.parameters = values.data();
        const auto draw = [&](bool isHdr) {
            frame.isHdr = isHdr;
            frame.hdrHeadroom = isHdr ? 4.0F : 1.0F;
            frame.frameInFlight = int(++frame.frameCount) % framesInFlight;
            frame.hasTimestamps = frame.frameCount % 2 == 0;
            return application.draw(graph, frame, error);
        };
        const auto setHalation = [&](float strength) {
            const int index = graph.parameterIndex(u"halation_strength");
            if (index >= 0)
                values.at(std::size_t(index)) = strength;
        };
        // Without a history, then with either of its images.
        for (const bool isHdr : {false, false, false, true, true, true})
            QVERIFY2(draw(isHdr), qPrintable(error));
        // Constant black comes and goes.
        setHalation(0.0F);
        QVERIFY2(draw(true), qPrintable(error));
        setHalation(0.1F);
        QVERIFY2(draw(true), qPrintable(error));
        // A part of the target, on black and on what was there.
        frame.rectangle = {3, 5, 64, 48};
        QVERIFY2(draw(false), qPrintable(error));
        frame.keepsOutside = true;
        QVERIFY2(draw(true), qPrintable(error));
        frame.keepsOutside = false;
        frame.rectangle = {};
        // Another source of the same size, another size, and one that is forgotten.
        const VulkanGraphRenderer::SourceId first = frame.source;
        frame.source = application.addSource(FloatImage({24, 10}));
        QVERIFY2(draw(false), qPrintable(error));
        application.renderer().removeSource(first);
        frame.source = application.addSource(FloatImage({33, 17}));
        QVERIFY2(draw(false), qPrintable(error));
        // The least size, and more columns than a tube's line has.
        for (const QSize size : {QSize(1, 1), QSize(4099, 3)}) {
            frame.target = application.addTarget(size);
            QVERIFY2(draw(false), qPrintable(error));
            QVERIFY2(draw(true), qPrintable(error));
            application.renderer().removeTarget(frame.target); // while it is drawn into
            application.renderer().resetHistories();
        }
        frame.target = application.addTarget({97, 65});
        QVERIFY2(draw(false), qPrintable(error));
        for (int pass = 0; keepsOutputs && pass < loaded.graph.passes.size() - 1; ++pass) {
            const VulkanGraphRenderer::Output output = application.renderer().output(pass);
            if (output.image != VK_NULL_HANDLE)
                application.texels(output);
        }
        QVERIFY2(draw(false), qPrintable(error));
        application.waitForAll();
        // Large ones are recorded only, to save time.
        frame.target = application.addTarget({3840, 2160});
        QVERIFY2(application.record(graph, frame, error), qPrintable(error));
    }
    QCOMPARE(messages(), "");
}

void TestValidation::graphsChangeWhileFramesAreInFlight_data()
{
    QTest::addColumn<int>("framesInFlight");
    for (const int framesInFlight : {1, 2, 3})
        QTest::addRow("%d", framesInFlight) << framesInFlight;
}

// Nothing but the fences is waited for. Two renderers take turns on one queue.
void TestValidation::graphsChangeWhileFramesAreInFlight()
{
    QFETCH(int, framesInFlight);
    const QList<PresetOnDisk> presets = {examplePreset(u"dmg-lcd"_s), examplePreset(u"stock"_s),
                                         examplePreset(u"gba-lcd"_s)};
    QString error;
    {
        TestApplication application(
                {.device = {}, .options = {framesInFlight, false}, .hasHooks = false});
        const std::unique_ptr<VulkanGraphRenderer> other =
                application.anotherRenderer(framesInFlight);
        struct Choice
        {
            VulkanGraphRenderer *renderer;
            VulkanGraphRenderer::PreparedGraph graph;
            std::vector<float> values;
            VulkanGraphRenderer::SourceId source;
            VulkanGraphRenderer::TargetId target;
        };
        std::vector<Choice> choices;
        for (VulkanGraphRenderer *renderer : {&application.renderer(), other.get()}) {
            for (const PresetOnDisk &preset : presets) {
                Choice &choice = choices.emplace_back();
                choice.renderer = renderer;
                choice.graph = application.prepare(preset, VK_FORMAT_R16G16B16A16_SFLOAT, renderer);
                choice.values = parameterValues(choice.graph, preset);
                choice.source = application.addSource(FloatImage({16, 12}), renderer);
                choice.target =
                        application.addTarget({40, 30}, VK_FORMAT_R16G16B16A16_SFLOAT, renderer);
            }
        }
        for (int number = 0; number < 36; ++number) {
            const Choice &choice = choices.at(std::size_t(number * 5) % choices.size());
            VulkanGraphRenderer::Frame frame;
            frame.frameInFlight = number % framesInFlight;
            frame.source = choice.source;
            frame.target = choice.target;
            frame.parameters = choice.values.data();
            frame.rectangle = {0, 0, 30 + number % 3, 20};
            QVERIFY2(application.draw(choice.graph, frame, error, choice.renderer),
                     qPrintable(error));
        }
        application.waitForAll();
    }
    QCOMPARE(messages(), "");
}

// Images that are cleared and were sampled before: a history that starts black, and a constant
// black of its own. No example preset has either.
void TestValidation::clearedImagesAreClean()
{
    PresetOnDisk preset = examplePreset(u"dmg-lcd"_s);
    VulkanRenderGraph::Pass &ghost = preset.graph.passes[1];
    std::swap(ghost.sampledInputs[0], ghost.sampledInputs[1]);
    preset.graph.passes[2].constantBlackWhenZero = u"dmg_crosstalk"_s;
    QVERIFY(preset.graph.isValid());
    QString error;
    {
        TestApplication application({.device = {}, .options = {2, false}, .hasHooks = false});
        const VulkanGraphRenderer::PreparedGraph graph = application.prepare(preset);
        std::vector<float> values = parameterValues(graph, preset);
        VulkanGraphRenderer::Frame frame;
        frame.source = application.addSource(FloatImage({24, 10}));
        frame.target = application.addTarget({40, 30});
        frame.parameters = values.data();
        for (int number = 0; number < 8; ++number) {
            frame.frameInFlight = number % 2;
            values.at(std::size_t(graph.parameterIndex(u"dmg_crosstalk"))) =
                    number / 2 % 2 == 0 ? 0.5F : 0.0F;
            if (number % 3 == 2)
                application.renderer().resetHistories();
            QVERIFY2(application.draw(graph, frame, error), qPrintable(error));
        }
        application.waitForAll();
    }
    QCOMPARE(messages(), "");
}

void TestValidation::offscreenRendererIsClean()
{
    const PresetOnDisk loaded = examplePreset(u"dmg-lcd"_s);
    QString error;
    {
        std::unique_ptr<OffscreenRenderer> renderer;
        QVERIFY2(OffscreenRenderer::create(QString(), OffscreenRenderer::Outputs::All, renderer,
                                           error),
                 qPrintable(error));
        QVERIFY2(renderer->setGraph(loaded.graph, loaded.modules, error), qPrintable(error));
        QImage picture;
        FrameState state;
        state.params = initialValues(loaded.parameters);
        for (const QSize size : {QSize(24, 10), QSize(33, 17)}) {
            state.viewport = size;
            QVERIFY2(renderer->setSource(FloatImage(size).toImage(), error), qPrintable(error));
            QVERIFY2(renderer->drawFrame(state, error), qPrintable(error));
            for (int pass = 0; pass < renderer->passes().size(); ++pass)
                QVERIFY2(renderer->output(pass, picture, error), qPrintable(error));
            QVERIFY2(renderer->drawFrame(state, error), qPrintable(error));
            QVERIFY2(renderer->setGraph(loaded.graph, loaded.modules, error), qPrintable(error));
        }
    }
    QCOMPARE(messages(), "");
}

// Of two renderers, with a source that changes and a view that is resized.
void TestValidation::viewIsClean()
{
    const QString directory = QStringLiteral(SOURCE_DIR "/tools/render-graph-preview/renderer/");
    const PresetOnDisk loaded = examplePreset(u"dmg-lcd"_s);
    QString error;
    QStringList files;
    QByteArray vertex;
    QByteArray fragment;
    QVERIFY(compileGlsl(directory + u"view.vert"_s, ShaderStage::Vertex, vertex, files, error));
    QVERIFY(compileGlsl(directory + u"view.frag"_s, ShaderStage::Fragment, fragment, files, error));
    {
        std::unique_ptr<ViewPass> pass;
        QVERIFY2(ViewPass::create(QString(), vertex, fragment, pass, error), qPrintable(error));
        std::array<std::unique_ptr<OffscreenRenderer>, 2> renderers;
        for (std::unique_ptr<OffscreenRenderer> &renderer : renderers) {
            QVERIFY(OffscreenRenderer::create(pass->device(), OffscreenRenderer::Outputs::All,
                                              renderer, error));
            QVERIFY(renderer->setGraph(loaded.graph, loaded.modules, error));
        }
        FrameState state;
        state.params = initialValues(loaded.parameters);
        ViewInput view;
        view.state.comparison = ViewState::Comparison::Split;
        view.thumbnailSize = {16, 16};
        ViewOutput output;
        for (int frame = 0; frame < 8; ++frame) {
            state.frameCount = std::uint32_t(frame);
            state.viewport = frame < 4 ? QSize(24, 20) : QSize(30, 25);
            view.state.size = frame < 6 ? QSize(20, 20) : QSize(31, 17);
            view.isDrawn = frame % 3 != 2;
            const auto record = [&](VkCommandBuffer commands, int submission, ViewInput &input) {
                input.renderer = renderers.front().get();
                input.compared = renderers.back().get();
                for (const std::unique_ptr<OffscreenRenderer> &renderer : renderers) {
                    if (view.isDrawn
                        && (!renderer->setSource(FloatImage({24, 10 + frame / 5}).toImage(), error)
                            || !renderer->recordFrame(commands, submission, state, error)))
                        return false;
                }
                return true;
            };
            QVERIFY2(pass->submit(view, record, error), qPrintable(error));
            if (frame > 0)
                QVERIFY2(pass->read(output, error), qPrintable(error));
        }
        QVERIFY2(pass->read(output, error), qPrintable(error));
    }
    QCOMPARE(messages(), "");
}

QTEST_GUILESS_MAIN(TestValidation)
#include "tst_Validation.moc"
