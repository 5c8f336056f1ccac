#include <VulkanRenderGraphCatalog.h>

#include "TestSupport.h"

using namespace Qt::StringLiterals;

// Reads a manifest in which fields of one type have different values. In the example shaders'
// manifest many are equal, so that a mix-up could go unnoticed.

namespace {

VulkanRenderGraphCatalog::Preset preset(const QString &name)
{
    const auto found = VulkanRenderGraphCatalog::preset(name);
    if (!found)
        qFatal("no preset %s", qPrintable(name));
    return *found;
}

QList<float> numbersOf(const VulkanRenderGraphCatalog::Parameter &param)
{
    return {param.initialValue, param.defaultValue, param.min, param.max, param.step};
}

} // namespace

class TestVulkanRenderGraphCatalog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void presetNames();
    void passInFull();
    void passFlags_data();
    void passFlags();
    void presets_data();
    void presets();
    void parameters();
    void unknownName_data();
    void unknownName();
};

void TestVulkanRenderGraphCatalog::presetNames()
{
    QCOMPARE(VulkanRenderGraphCatalog::presetNames(),
             QStringList({u"hdr"_s, u"vulkan"_s, u"c-d.e"_s}));
}

void TestVulkanRenderGraphCatalog::passInFull()
{
    const VulkanRenderGraph::Pass pass = preset(u"hdr"_s).graph.passes.at(0);
    QCOMPARE(pass.fragmentSpirvResource, u"fragment \u00e9"_s);
    QCOMPARE(pass.vertexSpirvResource, u"vertex \u00e8"_s);
    QCOMPARE(pass.debugName, u"name \u00ea"_s);
    QCOMPARE(pass.format, VulkanRenderGraph::Format::RGBA8);
    QCOMPARE(pass.scaleSource, VulkanRenderGraph::ScaleSource::Viewport);
    QCOMPARE(pass.scaleX, 3.0F);
    QCOMPARE(pass.scaleY, 0.5F);
    QCOMPARE(pass.absoluteWidth, 640);
    QCOMPARE(pass.absoluteHeight, 480);
    QCOMPARE(pass.scaleInputPassIndex, 7);
    QCOMPARE(pass.constantBlackWhenZero, u"black \u00eb"_s);
    QCOMPARE(pass.constantBlackAlpha, 0.25F);
    QCOMPARE(pass.wrapMode, 9);
    QCOMPARE(pass.sampledInputs.size(), 3);
    QCOMPARE(pass.sampledInputs.at(0).passIndex, 5);
    QCOMPARE(pass.sampledInputs.at(1).passIndex, -2);
    QCOMPARE(pass.sampledInputs.at(2).passIndex, -1);
    QCOMPARE(pass.params.size(), 2);
    QCOMPARE(pass.params.at(0).id, u"first"_s);
    QCOMPARE(pass.params.at(0).floatOffset, 14U);
    QCOMPARE(pass.params.at(1).id, u"second \u00e9"_s);
    QCOMPARE(pass.params.at(1).floatOffset, 3U);
}

// Of each pass the only flag that is set; none of the first.
void TestVulkanRenderGraphCatalog::passFlags_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QStringList>("expected");
    int index = 0;
    QTest::newRow("none") << index++ << QStringList();
    for (const char *flag : {"linearFilter", "mipmap", "cacheByParameters", "shareConstantBlack",
                             "isFeedbackTarget", "isFeedbackReader", "isFinalPass"})
        QTest::newRow(flag) << index++ << QStringList({QString::fromLatin1(flag)});
}

void TestVulkanRenderGraphCatalog::passFlags()
{
    QFETCH(int, index);
    const VulkanRenderGraph::Pass pass = preset(u"hdr"_s).graph.passes.at(index);
    QStringList flags;
    if (pass.linearFilter)
        flags.append(u"linearFilter"_s);
    if (pass.mipmap)
        flags.append(u"mipmap"_s);
    if (pass.cacheByParameters)
        flags.append(u"cacheByParameters"_s);
    if (pass.shareConstantBlack)
        flags.append(u"shareConstantBlack"_s);
    if (pass.isFeedbackTarget)
        flags.append(u"isFeedbackTarget"_s);
    if (pass.isFeedbackReader)
        flags.append(u"isFeedbackReader"_s);
    if (pass.isFinalPass)
        flags.append(u"isFinalPass"_s);
    QTEST(flags, "expected");
}

void TestVulkanRenderGraphCatalog::presets_data()
{
    QTest::addColumn<QString>("presetQrcPath");
    QTest::addColumn<int>("passCount");
    QTest::addColumn<int>("feedbackPassIndex");
    QTest::addColumn<int>("parameterCount");
    QTest::addColumn<bool>("respondsToHdr");
    QTest::addColumn<bool>("vulkanOnly");
    QTest::addColumn<bool>("usesFrameCount");
    QTest::newRow("hdr") << u":/shaders/hdr.glslp"_s << 8 << 6 << 2 << true << false << false;
    QTest::newRow("vulkan") << u":/shaders/vulkan.glsl"_s << 1 << -1 << 0 << false << true << false;
    QTest::newRow("c-d.e") << u":/a.b/c-d.e.glslp"_s << 0 << 0 << 1 << false << false << true;
}

void TestVulkanRenderGraphCatalog::presets()
{
    const auto read = preset(QString::fromLatin1(QTest::currentDataTag()));
    QTEST(read.graph.presetQrcPath, "presetQrcPath");
    QTEST(int(read.graph.passes.size()), "passCount");
    QTEST(read.graph.feedbackPassIndex, "feedbackPassIndex");
    QTEST(int(read.parameters.size()), "parameterCount");
    QTEST(read.graph.finalRealPassRespondsToHdr, "respondsToHdr");
    QTEST(read.vulkanOnly, "vulkanOnly");
    QTEST(read.usesFrameCount, "usesFrameCount");
}

void TestVulkanRenderGraphCatalog::parameters()
{
    const auto parameters = preset(u"hdr"_s).parameters;
    QCOMPARE(parameters.at(0).id, u"id \u00e9"_s);
    QCOMPARE(parameters.at(0).description, u"label \u00e8"_s);
    QCOMPARE(numbersOf(parameters.at(0)), QList<float>({0.5F, 0.25F, -4.0F, 8.0F, 0.125F}));
    QCOMPARE(parameters.at(1).id, u"other"_s);
    QCOMPARE(parameters.at(1).description, QString());
    QCOMPARE(numbersOf(parameters.at(1)), QList<float>({0.0F, 1.0F, 2.0F, 3.0F, 4.0F}));
}

void TestVulkanRenderGraphCatalog::unknownName_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"", "hd", "hdr.glslp", ":/shaders/hdr.glslp", "HDR", "c_d.e"})
        QTest::addRow("'%s'", name) << QString::fromLatin1(name);
}

void TestVulkanRenderGraphCatalog::unknownName()
{
    QFETCH(QString, name);
    QVERIFY(!VulkanRenderGraphCatalog::preset(name));
}

QTEST_APPLESS_MAIN(TestVulkanRenderGraphCatalog)
#include "tst_VulkanRenderGraphCatalog.moc"
