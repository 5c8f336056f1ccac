#include "TestApplication.h"
#include "TestSupport.h"
#include "VulkanHooks.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

using namespace Qt::StringLiterals;

// The renderer as an application uses it: what it refuses, keeps, shares and leaves out. The tests
// of the shaders check what is drawn.

namespace {

using Frame = VulkanGraphRenderer::Frame;
using PassKind = VulkanGraphRenderer::PassKind;
using PreparedGraph = VulkanGraphRenderer::PreparedGraph;

thread_local int allocations = 0;

} // namespace

#if defined(__GLIBC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__)
// Counts what the renderer allocates while it records. Operator new and Qt's containers call this
// function.
extern "C" void *__libc_malloc(std::size_t size);
extern "C" void *malloc(std::size_t size)
{
    if (VulkanHooks::isRecording && !VulkanHooks::isInVulkan)
        ++allocations;
    return __libc_malloc(size);
}
constexpr bool kCountsAllocations = true;
#else
constexpr bool kCountsAllocations = false;
#endif

namespace {

const FloatImage kPicture = [] {
    FloatImage picture({24, 16});
    for (int y = 0; y < picture.size.height(); ++y) {
        for (int x = 0; x < picture.size.width(); ++x)
            picture.at(x, y) = {float(x) / 23.0F, float(y) / 15.0F, float((x + y) % 3) / 2.0F,
                                1.0F};
    }
    return picture;
}();

// A preset that is drawn from kPicture into a target.
struct Drawing
{
    explicit Drawing(const QString &name, const TestApplication::Settings &settings = {},
                     QSize size = {60, 44}, VkFormat format = VK_FORMAT_R16G16B16A16_SFLOAT)
        : preset(examplePreset(name)),
          application(settings),
          graph(application.prepare(preset, format)),
          values(parameterValues(graph, preset))
    {
        frame.source = application.addSource(kPicture);
        frame.target = application.addTarget(size, format);
        frame.parameters = values.data();
    }

    void setValue(const QString &id, float value)
    {
        const int index = graph.parameterIndex(id);
        if (index < 0)
            qFatal("no parameter %s", qPrintable(id));
        values.at(std::size_t(index)) = value;
    }
    bool draw()
    {
        return application.draw(graph, frame, error);
    }
    QByteArray drawn()
    {
        if (!draw())
            qFatal("%s", qPrintable(error));
        return application.texels(frame.target);
    }
    QList<PassKind> kinds()
    {
        QList<PassKind> kinds;
        for (const VulkanGraphRenderer::PassState &pass : application.renderer().passes())
            kinds.append(pass.kind);
        return kinds;
    }
    int indexOf(const QString &component) const
    {
        for (int index = 0; index < preset.graph.passes.size(); ++index) {
            if (preset.graph.passes.at(index).debugName == component)
                return index;
        }
        qFatal("no pass %s", qPrintable(component));
    }

    PresetOnDisk preset;
    TestApplication application;
    PreparedGraph graph;
    std::vector<float> values;
    Frame frame;
    QString error;
};

constexpr VulkanGraphRenderer::Options kKeepsOutputs = {1, true};

// The texels of a part of a picture of half floats.
QByteArray cropped(const QByteArray &texels, int width, const QRect &rectangle)
{
    QByteArray part;
    for (int y = rectangle.top(); y <= rectangle.bottom(); ++y)
        part += texels.mid((qsizetype(y) * width + rectangle.left()) * 8,
                           qsizetype(rectangle.width()) * 8);
    return part;
}

} // namespace

class TestVulkanGraphRenderer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deviceErrors();
    void sourceErrors_data();
    void sourceErrors();
    void targetErrors_data();
    void targetErrors();
    void prepareErrors_data();
    void prepareErrors();
    void frameErrors_data();
    void frameErrors();
    void passesHaveALimit();
    void sourcesMayDifferInSize();
    void bothModesDrawTheSame_data();
    void bothModesDrawTheSame();
    void steadyStateCreatesNothing_data();
    void steadyStateCreatesNothing();
    void failuresLeaveTheRenderer();
    void changedComponentCostsOnePipeline();
    void onlyChangedPassesAreDrawn();
    void finalPassIsLeftOut();
    void pictureIsDrawnIntoTheRectangle();
    void parametersAreResolvedOnce();
    void clockFollowsTheEmulatedRate();
    void pipelinesComeFromTheCache();
    void passesAreLabelled();
    void imagesShareMemory_data();
    void imagesShareMemory();
};

void TestVulkanGraphRenderer::deviceErrors()
{
    const TestApplication application;
    const auto errorOf = [](const VulkanGraphRenderer::Device &device, int framesInFlight) {
        QString error;
        std::unique_ptr<VulkanGraphRenderer> renderer;
        VulkanGraphRenderer::create(device, {framesInFlight, false}, renderer, error);
        return error;
    };
    const VulkanGraphRenderer::Device device = application.handles();
    QCOMPARE(errorOf(device, 4), QString());
    QCOMPARE(errorOf(device, 0), u"there can be 1 to 4 frames in flight"_s);
    QCOMPARE(errorOf(device, 5), u"there can be 1 to 4 frames in flight"_s);
    QCOMPARE(errorOf({}, 1), u"there is no Vulkan device"_s);
    VulkanGraphRenderer::Device other = device;
    other.queueFamily = 99;
    QCOMPARE(errorOf(other, 1), u"queue family 99 does not support graphics"_s);
    other = device;
    other.getInstanceProcAddr = [](VkInstance, const char *) -> PFN_vkVoidFunction {
        return nullptr;
    };
    QCOMPARE(errorOf(other, 1),
             u"Vulkan has no function vkGetPhysicalDeviceQueueFamilyProperties: the instance and "
             "the device have to be of Vulkan 1.1"_s);
}

void TestVulkanGraphRenderer::sourceErrors_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("expected");
    QTest::newRow("float") << int(VK_FORMAT_R32G32B32A32_SFLOAT) << QSize(24, 16) << QString();
    QTest::newRow("packed") << int(VK_FORMAT_R5G6B5_UNORM_PACK16) << QSize(24, 16) << QString();
    QTest::newRow("_SRGB") << int(VK_FORMAT_B8G8R8A8_SRGB) << QSize(24, 16)
                           << u"the source's format (VkFormat 50) is an _SRGB one: take the UNORM "
                              "one, since the values are gamma-encoded already"_s;
    QTest::newRow("integers") << int(VK_FORMAT_R8G8B8A8_UINT) << QSize(24, 16)
                              << u"the source's format (VkFormat 41) is not one of colours as "
                                 "UNORM or float"_s;
    QTest::newRow("none") << int(VK_FORMAT_UNDEFINED) << QSize(24, 16)
                          << u"the source's format (VkFormat 0) is not one of colours as UNORM or "
                             "float"_s;
    QTest::newRow("empty") << int(VK_FORMAT_R8G8B8A8_UNORM) << QSize(0, 16)
                           << u"the source is empty"_s;
    QTest::newRow("too large") << int(VK_FORMAT_R8G8B8A8_UNORM) << QSize(24, 99999)
                               << u"the source has 24x99999 pixels, and this device takes no more "
                                  "than 16384 either way"_s;
}

void TestVulkanGraphRenderer::sourceErrors()
{
    QFETCH(int, format);
    QFETCH(QSize, size);
    QFETCH(QString, expected);
    TestApplication application;
    auto *const view = VkImageView(1); // is not looked at
    QString error;
    VulkanGraphRenderer::SourceId id = {};
    QCOMPARE(application.renderer().addSource({view, VkFormat(format), size}, id, error),
             expected.isEmpty());
    QCOMPARE(error, expected);
    error.clear();
    QVERIFY(!application.renderer().addSource({VK_NULL_HANDLE, VkFormat(format), size}, id, error));
    QCOMPARE(error, u"the source is empty"_s);
}

void TestVulkanGraphRenderer::targetErrors_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("expected");
    QTest::newRow("_SRGB") << int(VK_FORMAT_R8G8B8A8_SRGB) << QSize(24, 16)
                           << u"the target's format (VkFormat 43) is an _SRGB one: take the UNORM "
                              "one, since the values are gamma-encoded already"_s;
    QTest::newRow("cannot be drawn into")
            << int(VK_FORMAT_R8G8B8_UNORM) << QSize(24, 16)
            << u"the target's format (VkFormat 23) is not supported by this device"_s;
    QTest::newRow("empty") << int(VK_FORMAT_R8G8B8A8_UNORM) << QSize(24, 0)
                           << u"the target is empty"_s;
    QTest::newRow("too large") << int(VK_FORMAT_R8G8B8A8_UNORM) << QSize(99999, 1)
                               << u"the target has 99999x1 pixels, and this device takes no more "
                                  "than 16384 either way"_s;
}

void TestVulkanGraphRenderer::targetErrors()
{
    QFETCH(int, format);
    QFETCH(QSize, size);
    QFETCH(QString, expected);
    TestApplication application;
    QString error;
    VulkanGraphRenderer::TargetId id = {};
    QVERIFY(!application.renderer().addTarget(
            {.view = VkImageView(1), .format = VkFormat(format), .size = size}, id, error));
    QCOMPARE(error, expected);
}

void TestVulkanGraphRenderer::prepareErrors_data()
{
    QTest::addColumn<PresetOnDisk>("preset");
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, VkFormat format, const QString &expected, auto change) {
        PresetOnDisk preset = examplePreset(u"stock"_s);
        change(preset);
        QTest::newRow(name) << preset << int(format) << expected;
    };
    constexpr VkFormat kFormat = VK_FORMAT_R8G8B8A8_UNORM;
    const QString module = u":/shaders/vulkan/spirv/stock.frag.spv"_s;
    row("invalid graph", kFormat, u"the graph is not valid"_s,
        [](PresetOnDisk &preset) { preset.graph.passes.clear(); });
    row("missing module", kFormat, "pass 0 ('stock') has no module '%1'"_L1.arg(module),
        [&](PresetOnDisk &preset) { preset.modules.remove(module); });
    row("no SPIR-V", kFormat, u"stock: the module is not SPIR-V, or is damaged"_s,
        [&](PresetOnDisk &preset) { preset.modules.insert(module, "no SPIR-V at all."); });
    row("sampler without an input", kFormat,
        u"stock: binding 0 ('Source') is sampled, but pass 0 of 'stock' has no images: is an //! "
        "input line or feedback missing?"_s,
        [](PresetOnDisk &preset) { preset.graph.passes.first().sampledInputs.clear(); });
    row("vertex shader", kFormat,
        u"the vertex shader of pass 0 ('stock'): the module has no main() of a vertex shader"_s,
        [&](PresetOnDisk &preset) {
            preset.modules.insert(u":/shaders/vulkan/spirv/fullscreen.vert.spv"_s,
                                  preset.modules.value(module));
        });
    row("_SRGB target", VK_FORMAT_B8G8R8A8_SRGB,
        u"the target's format (VkFormat 50) is an _SRGB one: take the UNORM one, since the values "
        "are gamma-encoded already"_s,
        [](PresetOnDisk &) {});
}

void TestVulkanGraphRenderer::prepareErrors()
{
    QFETCH(PresetOnDisk, preset);
    QFETCH(int, format);
    QFETCH(QString, expected);
    TestApplication application;
    QString error;
    VulkanGraphRenderer::PrepareOptions options;
    options.targetFormat = VkFormat(format);
    PreparedGraph graph;
    QVERIFY(!application.renderer().prepare(preset.graph, preset.modules, options, graph, error));
    QCOMPARE(error, expected);
    QVERIFY(graph.graph().passes.isEmpty());
    QVERIFY(graph.parameterIds().isEmpty());
}

void TestVulkanGraphRenderer::frameErrors_data()
{
    using Change = std::function<void(Drawing &)>;
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &expected, const Change &change) {
        QTest::newRow(name) << change << expected;
    };
    row("no graph", u"the graph was not prepared by this renderer"_s,
        [](Drawing &drawing) { drawing.graph = {}; });
    row("frame in flight", u"there is no such frame in flight"_s,
        [](Drawing &drawing) { drawing.frame.frameInFlight = -1; });
    row("no source", u"there is no such source"_s,
        [](Drawing &drawing) { drawing.frame.source = {}; });
    row("source that was removed", u"there is no such source"_s, [](Drawing &drawing) {
        drawing.application.renderer().removeSource(drawing.frame.source);
    });
    row("target that was removed", u"there is no such target"_s, [](Drawing &drawing) {
        drawing.application.renderer().removeTarget(drawing.frame.target);
    });
    row("format", u"the graph was prepared for targets of another format"_s, [](Drawing &drawing) {
        drawing.frame.target = drawing.application.addTarget({60, 44}, VK_FORMAT_R8G8B8A8_UNORM);
    });
    row("no values", u"there are no values of the parameters"_s,
        [](Drawing &drawing) { drawing.frame.parameters = nullptr; });
    row("rectangle", u"the rectangle does not lie within the target"_s, [](Drawing &drawing) {
        drawing.frame.rectangle = {1, 1, 60, 43};
    });
    row("empty rectangle", u"the rectangle does not lie within the target"_s, [](Drawing &drawing) {
        drawing.frame.rectangle = {1, 1, 0, 43};
    });
    row("HDR", u"HDR needs a target of a float format"_s, [](Drawing &drawing) {
        drawing.graph = drawing.application.prepare(drawing.preset, VK_FORMAT_R8G8B8A8_UNORM);
        drawing.frame.target = drawing.application.addTarget({60, 44}, VK_FORMAT_R8G8B8A8_UNORM);
        drawing.frame.isHdr = true;
    });
}

void TestVulkanGraphRenderer::frameErrors()
{
    QFETCH(std::function<void(Drawing &)>, change);
    QFETCH(QString, expected);
    Drawing drawing(u"dmg-lcd"_s);
    change(drawing);
    // It records nothing, so it needs no commands.
    QVERIFY(!drawing.application.renderer().record(VK_NULL_HANDLE, drawing.graph, drawing.frame,
                                                   drawing.error));
    QCOMPARE(drawing.error, expected);
}

void TestVulkanGraphRenderer::passesHaveALimit()
{
    Drawing drawing(u"no-pixels"_s);
    drawing.frame.source = drawing.application.addSource(FloatImage({8000, 1}));
    QVERIFY(!drawing.draw());
    QCOMPARE(drawing.error,
             u"pass 5 ('scalefx-pass4') has 24000x3 pixels, and this device takes no more than "
             "16384 either way"_s);
}

void TestVulkanGraphRenderer::sourcesMayDifferInSize()
{
    const FloatImage small({7, 5}, {0.25F, 0.5F, 0.75F, 1.0F});
    Drawing expected(u"crt-pvm"_s);
    expected.frame.source = expected.application.addSource(small);
    Drawing drawing(u"crt-pvm"_s);
    const QByteArray before = drawing.drawn();
    const VulkanGraphRenderer::SourceId first = drawing.frame.source;
    drawing.frame.source = drawing.application.addSource(small);
    QCOMPARE(drawing.drawn(), expected.drawn());
    drawing.frame.source = first;
    QCOMPARE(drawing.drawn(), before);
}

void TestVulkanGraphRenderer::bothModesDrawTheSame_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : presetNames()) {
        if (isTested(name))
            QTest::newRow(qPrintable(name)) << name;
    }
}

// With outputs that share memory and with outputs that are kept, two frames in SDR and two in HDR.
// Where the final pass is left out, its input is in the target.
void TestVulkanGraphRenderer::bothModesDrawTheSame()
{
    QFETCH(QString, name);
    Drawing sharing(name);
    Drawing keeping(name, {.device = {}, .options = kKeepsOutputs, .hasHooks = false});
    const int last = int(keeping.preset.graph.passes.size()) - 2; // declared
    for (std::uint32_t number = 0; number < 4; ++number) {
        const bool isHdr = number >= 2;
        for (Drawing *drawing : {&sharing, &keeping}) {
            drawing->frame.frameCount = number;
            drawing->frame.isHdr = isHdr;
            drawing->frame.hdrHeadroom = isHdr ? 3.0F : 1.0F;
            if (number == 2)
                drawing->application.renderer().resetHistories();
        }
        const QByteArray drawn = sharing.drawn();
        const QByteArray shown = keeping.drawn();
        const bool isLeftOut = sharing.kinds().constLast() == PassKind::LeftOut;
        QCOMPARE(isLeftOut, !isHdr);
        QVERIFY(drawn
                == (isLeftOut ? keeping.application.texels(
                            keeping.application.renderer().output(last))
                              : shown));
        QVERIFY(drawn.count('\0') < drawn.size() / 2);
    }
}

void TestVulkanGraphRenderer::steadyStateCreatesNothing_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("keepsOutputs");
    for (const QString &name : {u"crt-consumer"_s, u"dmg-lcd"_s, u"rewind"_s}) {
        QTest::newRow(qPrintable(name)) << name << false;
        QTest::newRow(qPrintable(name + u", outputs kept"_s)) << name << true;
    }
}

// Values, time, sources and targets change. Two frames of each source and of each number come
// first.
void TestVulkanGraphRenderer::steadyStateCreatesNothing()
{
    QFETCH(QString, name);
    QFETCH(bool, keepsOutputs);
    Drawing drawing(name, {.device = {}, .options = {2, keepsOutputs}, .hasHooks = true});
    const std::array sources = {drawing.frame.source, drawing.application.addSource(kPicture)};
    const std::array targets = {drawing.frame.target, drawing.application.addTarget({60, 44})};
    drawing.frame.hasTimestamps = true;
    for (int number = 0; number < 10; ++number) {
        if (number == 4)
            VulkanHooks::calls = {};
        drawing.frame.frameInFlight = number % 2;
        drawing.frame.frameCount = std::uint32_t(number);
        drawing.frame.source = sources.at(std::size_t(number / 2 % 2));
        drawing.frame.target = targets.at(std::size_t(number / 2 % 2));
        drawing.values.back() += 1e-3F;
        allocations = 0;
        QVERIFY2(drawing.draw(), qPrintable(drawing.error));
        if (number >= 4)
            QCOMPARE(allocations, 0);
        else if (number == 0 && kCountsAllocations)
            QVERIFY(allocations > 0);
    }
    QCOMPARE(VulkanHooks::calls.created, 0);
    QCOMPARE(VulkanHooks::calls.pipelines, 0);
    QCOMPARE(VulkanHooks::calls.descriptorWrites, 0);
    QCOMPARE(VulkanHooks::calls.destroyed, 0);

    // A constant black that comes needs new descriptor sets and nothing else.
    if (name == "crt-consumer"_L1) {
        drawing.setValue(u"halation_strength"_s, 0.0F);
        QVERIFY2(drawing.draw(), qPrintable(drawing.error));
        QVERIFY(VulkanHooks::calls.descriptorWrites > 0);
        QCOMPARE(VulkanHooks::calls.pipelines, 0);
    }
}

// Each call that can fail does, one at a time: nothing is left over, the renderer draws what it
// drew before, and the next attempt succeeds.
void TestVulkanGraphRenderer::failuresLeaveTheRenderer()
{
    VulkanHooks::calls = {};
    QByteArray expected;
    {
        Drawing drawing(u"dmg-lcd"_s, {.device = {}, .options = {1, false}, .hasHooks = true});
        expected = drawing.drawn();
        const PreparedGraph good = drawing.graph;
        const QString outOfMemory =
                u"the Vulkan device has not enough memory: choose a smaller size or source"_s;
        int failures = 0;
        const auto failEach = [&](const auto &action) {
            for (int call = 1;; ++call) {
                const VulkanHooks::Calls before = VulkanHooks::calls;
                VulkanHooks::calls.failingCall = call;
                drawing.error.clear();
                const bool isDone = action();
                const bool hasFailed = VulkanHooks::calls.failingCall == 0;
                VulkanHooks::calls.failingCall = 0;
                if (isDone && !hasFailed)
                    return;
                QVERIFY(!isDone);
                QCOMPARE(drawing.error, outOfMemory);
                ++failures;
                const Frame frame = drawing.frame;
                drawing.frame.rectangle = {};
                QCOMPARE(drawing.drawn(), expected);
                drawing.frame = frame;
                Q_UNUSED(before)
            }
        };
        PreparedGraph other;
        const PresetOnDisk preset = examplePreset(u"gba-lcd"_s);
        failEach([&] {
            VulkanGraphRenderer::PrepareOptions options;
            options.targetFormat = VK_FORMAT_R16G16B16A16_SFLOAT;
            return drawing.application.renderer().prepare(preset.graph, preset.modules, options,
                                                          other, drawing.error);
        });
        failEach([&] {
            VulkanGraphRenderer::TargetId id = {};
            const bool isAdded = drawing.application.renderer().addTarget(
                    {.view = VkImageView(1),
                     .format = VK_FORMAT_R16G16B16A16_SFLOAT,
                     .size = {1, 1}},
                    id, drawing.error);
            if (isAdded)
                drawing.application.renderer().removeTarget(id);
            return isAdded;
        });
        // Another size needs all images again.
        drawing.frame.rectangle = {3, 3, 30, 20};
        failEach([&] { return drawing.draw(); });
        QVERIFY(failures > 60);
        drawing.graph = good;
    }
    // Descriptor sets go with their pool.
    QVERIFY(VulkanHooks::calls.destroyed > 100);
    QVERIFY(VulkanHooks::calls.created + VulkanHooks::calls.pipelines
            >= VulkanHooks::calls.destroyed);
}

// As in a hot reload.
void TestVulkanGraphRenderer::changedComponentCostsOnePipeline()
{
    Drawing drawing(u"dmg-lcd"_s, {.device = {}, .options = {1, false}, .hasHooks = true});
    const QByteArray before = drawing.drawn();
    PresetOnDisk changed = drawing.preset;
    changed.modules.insert(
            u":/shaders/vulkan/spirv/dmg-crosstalk.frag.spv"_s,
            examplePreset(u"stock"_s).modules.value(u":/shaders/vulkan/spirv/stock.frag.spv"_s));
    VulkanGraphRenderer::PrepareOptions options;
    options.targetFormat = VK_FORMAT_R16G16B16A16_SFLOAT;
    const auto pipelinesOf = [&](const PresetOnDisk &preset) {
        VulkanHooks::calls = {};
        if (!drawing.application.renderer().prepare(preset.graph, preset.modules, options,
                                                    drawing.graph, drawing.error, &drawing.graph))
            qFatal("%s", qPrintable(drawing.error));
        return VulkanHooks::calls.pipelines;
    };
    QCOMPARE(pipelinesOf(changed), 1);
    QVERIFY(drawing.drawn() != before);
    QCOMPARE(pipelinesOf(changed), 0);
    options.framesPerSecond = 50.0F;
    QVERIFY(pipelinesOf(changed) > 5);
}

// With outputs that are kept: whoever turns a late pass's parameter pays for the late passes.
void TestVulkanGraphRenderer::onlyChangedPassesAreDrawn()
{
    Drawing drawing(u"crt-pvm"_s, {.device = {}, .options = kKeepsOutputs, .hasHooks = false});
    drawing.frame.hasNewSource = false;
    QVERIFY2(drawing.draw(), qPrintable(drawing.error));
    QCOMPARE(drawing.kinds().count(PassKind::Drawn), drawing.kinds().size());
    const auto firstDrawn = [&] { return int(drawing.kinds().indexOf(PassKind::Drawn)); };

    // Histories go on.
    const int persistence = drawing.indexOf(u"crt-persistence"_s);
    QVERIFY2(drawing.draw(), qPrintable(drawing.error));
    QCOMPARE(firstDrawn(), persistence);

    drawing.frame.hasNewSource = true;
    QVERIFY2(drawing.draw(), qPrintable(drawing.error));
    QCOMPARE(firstDrawn(), 0);
    drawing.frame.hasNewSource = false;
    drawing.frame.frameCount = 1;
    QVERIFY2(drawing.draw(), qPrintable(drawing.error));
    QCOMPARE(firstDrawn(), 0);
    drawing.frame.source = drawing.application.addSource(kPicture);
    QVERIFY2(drawing.draw(), qPrintable(drawing.error));
    QCOMPARE(firstDrawn(), 0);

    Drawing still(u"no-pixels"_s, {.device = {}, .options = kKeepsOutputs, .hasHooks = false});
    still.frame.hasNewSource = false;
    const QByteArray drawn = still.drawn();
    const int last = int(still.kinds().size()) - 1;
    QCOMPARE(still.drawn(), drawn);
    QCOMPARE(still.kinds().indexOf(PassKind::Drawn), last);
    still.setValue(u"SFX_CLR"_s, 0.1F);
    QVERIFY2(still.draw(), qPrintable(still.error));
    QCOMPARE(still.kinds().indexOf(PassKind::Drawn), still.indexOf(u"scalefx-pass1"_s));
}

void TestVulkanGraphRenderer::finalPassIsLeftOut()
{
    Drawing drawing(u"stock"_s);
    QVERIFY2(drawing.draw(), qPrintable(drawing.error));
    QCOMPARE(drawing.kinds(), (QList{PassKind::Drawn, PassKind::LeftOut}));
    drawing.frame.isHdr = true;
    QVERIFY2(drawing.draw(), qPrintable(drawing.error));
    QCOMPARE(drawing.kinds(), (QList{PassKind::Drawn, PassKind::Drawn}));
    QCOMPARE(drawing.application.renderer().passes().constLast().size, QSize(60, 44));
    QCOMPARE(drawing.application.renderer().passes().constLast().bytes, qint64(60) * 44 * 8);
}

void TestVulkanGraphRenderer::pictureIsDrawnIntoTheRectangle()
{
    const QRect rectangle(5, 7, 40, 30);
    Drawing alone(u"crt-pvm"_s, {}, rectangle.size());
    const QByteArray expected = alone.drawn();
    Drawing drawing(u"crt-pvm"_s);
    drawing.frame.rectangle = rectangle;
    const QByteArray onBlack = drawing.drawn();
    QCOMPARE(cropped(onBlack, 60, rectangle), expected);
    const QByteArray black = QByteArray::fromHex("000000000000003c").repeated(60);
    QCOMPARE(cropped(onBlack, 60, {0, 0, 60, 1}), black);
    QCOMPARE(cropped(onBlack, 60, {0, 43, 60, 1}), black);
    QCOMPARE(cropped(onBlack, 60, {0, 7, 5, 30}), black.left(40).repeated(30));
    QCOMPARE(cropped(onBlack, 60, {45, 7, 15, 30}), black.left(120).repeated(30));

    // All of the target, then a part of it again, which leaves the rest.
    drawing.frame.rectangle = {};
    const QByteArray whole = drawing.drawn();
    drawing.frame.rectangle = rectangle;
    drawing.frame.keepsOutside = true;
    const QByteArray kept = drawing.drawn();
    QCOMPARE(cropped(kept, 60, rectangle), expected);
    for (const QRect &outside :
         {QRect(0, 0, 60, 7), QRect(0, 37, 60, 7), QRect(0, 7, 5, 30), QRect(45, 7, 15, 30)})
        QCOMPARE(cropped(kept, 60, outside), cropped(whole, 60, outside));
}

void TestVulkanGraphRenderer::parametersAreResolvedOnce()
{
    Drawing drawing(u"dmg-lcd"_s);
    QStringList ids = drawing.graph.parameterIds();
    QCOMPARE(ids.removeDuplicates(), 0);
    QCOMPARE(ids.size(), 13);
    QCOMPARE(drawing.graph.parameterIndex(ids.at(5)), 5);
    QCOMPARE(drawing.graph.parameterIndex(u"nothing"), -1);
    const QByteArray before = drawing.drawn();
    drawing.setValue(u"DMG_TINT"_s, 0.1F);
    QVERIFY(drawing.drawn() != before);
}

// The same time has passed after 60 frames of 60 in a second and after 50 of 50.
void TestVulkanGraphRenderer::clockFollowsTheEmulatedRate()
{
    Drawing drawing(u"rewind"_s);
    drawing.frame.frameCount = 60;
    const QByteArray expected = drawing.drawn();
    drawing.frame.frameCount = 50;
    QVERIFY(drawing.drawn() != expected);
    VulkanGraphRenderer::PrepareOptions options;
    options.targetFormat = VK_FORMAT_R16G16B16A16_SFLOAT;
    options.framesPerSecond = 50.0F;
    QVERIFY(drawing.application.renderer().prepare(drawing.preset.graph, drawing.preset.modules,
                                                   options, drawing.graph, drawing.error));
    QCOMPARE(drawing.drawn(), expected);
}

void TestVulkanGraphRenderer::pipelinesComeFromTheCache()
{
    Drawing drawing(u"stock"_s, {.device = {}, .options = {1, false}, .hasHooks = true});
    const VulkanGraphRenderer::Device device = drawing.application.handles();
    const auto function = [&device](const char *name) {
        return device.getInstanceProcAddr(device.instance, name);
    };
    const VkPipelineCacheCreateInfo info = {VK_STRUCTURE_TYPE_PIPELINE_CACHE_CREATE_INFO, nullptr,
                                            0, 0, nullptr};
    VulkanGraphRenderer::PrepareOptions options;
    options.targetFormat = VK_FORMAT_R16G16B16A16_SFLOAT;
    QCOMPARE(reinterpret_cast<PFN_vkCreatePipelineCache>(function("vkCreatePipelineCache"))(
                     device.device, &info, nullptr, &options.cache),
             VK_SUCCESS);
    QVERIFY(drawing.application.renderer().prepare(drawing.preset.graph, drawing.preset.modules,
                                                   options, drawing.graph, drawing.error));
    QVERIFY(VulkanHooks::lastPipelineCache == options.cache);
    reinterpret_cast<PFN_vkDestroyPipelineCache>(function("vkDestroyPipelineCache"))(
            device.device, options.cache, nullptr);
}

// Where the instance has the functions of VK_EXT_debug_utils.
void TestVulkanGraphRenderer::passesAreLabelled()
{
    static QStringList labels; // "" ends one
    static PFN_vkGetInstanceProcAddr real = nullptr;
    labels.clear();
    TestApplication application;
    VulkanGraphRenderer::Device device = application.handles();
    real = device.getInstanceProcAddr;
    device.getInstanceProcAddr = [](VkInstance instance, const char *name) {
        const PFN_vkCmdBeginDebugUtilsLabelEXT begin = [](VkCommandBuffer,
                                                          const VkDebugUtilsLabelEXT *label) {
            labels.append(QString::fromUtf8(label->pLabelName));
        };
        const PFN_vkCmdEndDebugUtilsLabelEXT end = [](VkCommandBuffer) {
            labels.append(QString());
        };
        if (std::strcmp(name, "vkCmdBeginDebugUtilsLabelEXT") == 0)
            return reinterpret_cast<PFN_vkVoidFunction>(begin);
        if (std::strcmp(name, "vkCmdEndDebugUtilsLabelEXT") == 0)
            return reinterpret_cast<PFN_vkVoidFunction>(end);
        return real(instance, name);
    };
    QString error;
    std::unique_ptr<VulkanGraphRenderer> renderer;
    QVERIFY2(VulkanGraphRenderer::create(device, {1, false}, renderer, error), qPrintable(error));
    const PresetOnDisk preset = examplePreset(u"stock"_s);
    const PreparedGraph graph =
            application.prepare(preset, VK_FORMAT_R16G16B16A16_SFLOAT, renderer.get());
    Frame frame;
    frame.source = application.addSource(kPicture, renderer.get());
    frame.target = application.addTarget({8, 8}, VK_FORMAT_R16G16B16A16_SFLOAT, renderer.get());
    frame.isHdr = true;
    application.withCommands([&](VkCommandBuffer commands) {
        QVERIFY2(renderer->record(commands, graph, frame, error), qPrintable(error));
    });
    QCOMPARE(labels, (QStringList{u"stock"_s, QString(), u"hdr-color-boost"_s, QString()}));
}

void TestVulkanGraphRenderer::imagesShareMemory_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<double>("mebibytes"); // at most
    QTest::newRow("crt-consumer") << u"crt-consumer"_s << 0.65 * 109.0;
    QTest::newRow("no-pixels") << u"no-pixels"_s << 25.0;
}

void TestVulkanGraphRenderer::imagesShareMemory()
{
    QFETCH(QString, name);
    QFETCH(double, mebibytes);
    const auto held = [&](bool keepsOutputs) {
        Drawing drawing(name, {.device = {}, .options = {1, keepsOutputs}, .hasHooks = false},
                        {1440, 1080});
        drawing.frame.source = drawing.application.addSource(FloatImage({256, 224}));
        // Nothing is drawn, to save time.
        if (!drawing.application.record(drawing.graph, drawing.frame, drawing.error))
            qFatal("%s", qPrintable(drawing.error));
        return double(drawing.application.renderer().memoryHeld()) / (1 << 20);
    };
    const double shared = held(false);
    const double kept = held(true);
    qInfo("%.1f of %.1f MiB", shared, kept);
    QVERIFY(shared > 0.1 * kept);
    QVERIFY2(shared <= mebibytes, QByteArray::number(shared).constData());
}

QTEST_GUILESS_MAIN(TestVulkanGraphRenderer)
#include "tst_VulkanGraphRenderer.moc"
