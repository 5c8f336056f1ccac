#include "DrawingSupport.h"
#include "TestSupport.h"

#include <QDir>
#include <QTemporaryDir>

#include <vulkan/vulkan_raii.hpp>

using namespace Qt::StringLiterals;

// Draws every preset under Vulkan's validation layer with synchronization validation, which must
// not report anything.

class TestValidation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void layerReportsHazards();
    void presetsAreClean_data();
    void presetsAreClean();

private:
    QByteArray messages() const
    {
        return readFile(m_directory.filePath(u"messages"_s));
    }

    QTemporaryDir m_directory;
};

void TestValidation::initTestCase()
{
    // Newer layers warn of the older name, and the older ones do not know the newer.
    const bool isNewer = readFile(QStringLiteral(VALIDATION_LAYER)).contains("\"validate_sync\"");
    writeFile(
            m_directory.filePath(u"vk_layer_settings.txt"_s),
            "khronos_validation.debug_action = VK_DBG_LAYER_ACTION_LOG_MSG\n"
            "khronos_validation.report_flags = error,warn,perf\n"
            "khronos_validation.log_filename = "
                    + m_directory.filePath(u"messages"_s).toUtf8() + '\n'
                    + (isNewer ? "khronos_validation.validate_sync = true\n"
                               : "khronos_validation.enables = "
                                 "VK_VALIDATION_FEATURE_ENABLE_SYNCHRONIZATION_VALIDATION_EXT\n"));
    qputenv("VK_LAYER_SETTINGS_PATH", m_directory.path().toUtf8());
    qputenv("VK_INSTANCE_LAYERS", "VK_LAYER_KHRONOS_validation");
}

void TestValidation::cleanup()
{
    QFile::resize(m_directory.filePath(u"messages"_s), 0);
}

// Without this a layer that is not loaded would pass the test.
void TestValidation::layerReportsHazards()
{
    const vk::raii::Context context;
    const vk::raii::Instance instance(context, vk::InstanceCreateInfo());
    const vk::raii::PhysicalDevice physical =
            std::move(vk::raii::PhysicalDevices(instance).front());
    const float priority = 1.0F;
    const vk::DeviceQueueCreateInfo queue({}, 0, 1, &priority);
    const vk::raii::Device device(physical, vk::DeviceCreateInfo({}, queue));
    const vk::raii::CommandPool pool(device, vk::CommandPoolCreateInfo({}, 0));
    const vk::raii::Buffer buffer(
            device, vk::BufferCreateInfo({}, 16, vk::BufferUsageFlagBits::eTransferDst));
    const vk::raii::DeviceMemory memory(
            device, vk::MemoryAllocateInfo(buffer.getMemoryRequirements().size, 0));
    buffer.bindMemory(*memory, 0);
    const vk::raii::CommandBuffers commands(device, {*pool, vk::CommandBufferLevel::ePrimary, 1});
    commands.front().begin(vk::CommandBufferBeginInfo());
    commands.front().fillBuffer(*buffer, 0, 16, 1);
    commands.front().fillBuffer(*buffer, 0, 16, 2); // without a barrier
    commands.front().end();
    QVERIFY2(messages().contains("SYNC-HAZARD-WRITE"), messages().constData());
}

void TestValidation::presetsAreClean_data()
{
    QTest::addColumn<QString>("preset");
    const QStringList names = presetNames();
    for (const QString &name : names) {
        if (isTested(name))
            QTest::newRow(qPrintable(name)) << name;
    }
}

// Frames of each kind that a renderer submits. Small, as the layer looks at commands and not at
// pixels.
void TestValidation::presetsAreClean()
{
    QFETCH(QString, preset);
    const PresetOnDisk loaded = examplePreset(preset);
    QString error;
    {
        std::unique_ptr<OffscreenRenderer> renderer;
        QVERIFY2(OffscreenRenderer::create(QString(), OffscreenRenderer::Outputs::All, renderer,
                                           error),
                 qPrintable(error));
        QVERIFY2(renderer->setGraph(loaded.graph, loaded.modules, error), qPrintable(error));
        QVERIFY2(renderer->setSource(FloatImage({24, 10}, {0.5F, 0.25F, 0.75F, 1.0F}).toImage(),
                                     error),
                 qPrintable(error));
        QImage picture;
        FrameState state;
        state.params = initialValues(loaded.parameters);
        state.viewport = {97, 65};
        const auto draw = [&](bool isHdr) {
            state.hdrOutputActive = isHdr;
            state.hdrHeadroom = isHdr ? 4.0F : 1.0F;
            ++state.frameCount;
            return renderer->drawFrame(state, error);
        };
        // Without a history, then with either of its images.
        QVERIFY2(draw(false), qPrintable(error));
        QVERIFY2(draw(true), qPrintable(error));
        QVERIFY2(draw(true), qPrintable(error));
        // Constant black comes and goes.
        state.params.insert(u"halation_strength"_s, 0.0F);
        QVERIFY2(draw(true), qPrintable(error));
        state.params.insert(u"halation_strength"_s, 0.1F);
        QVERIFY2(draw(true), qPrintable(error));
        // The least size, and more columns than a tube's line has.
        for (const QSize viewport : {QSize(1, 1), QSize(4099, 3)}) {
            state.viewport = viewport;
            QVERIFY2(draw(false), qPrintable(error));
            QVERIFY2(draw(true), qPrintable(error));
            QVERIFY2(renderer->output(0, picture, error), qPrintable(error));
        }
        state.viewport = {97, 65};
        QVERIFY2(renderer->setSource(FloatImage({33, 17}).toImage(), error), qPrintable(error));
        QVERIFY2(draw(false), qPrintable(error));
        for (int index = 0; index < renderer->passes().size(); ++index)
            QVERIFY2(renderer->output(index, picture, error), qPrintable(error));
        QVERIFY2(draw(true), qPrintable(error));
        QVERIFY2(renderer->setGraph(loaded.graph, loaded.modules, error), qPrintable(error));
        QVERIFY2(draw(false), qPrintable(error));
        QVERIFY2(renderer->output(0, picture, error), qPrintable(error));
    }
    QCOMPARE(messages(), "");
}

QTEST_GUILESS_MAIN(TestValidation)
#include "tst_Validation.moc"
