#include <VulkanRenderGraphCatalog.h>

#include "GraphText.h"
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
    void graphInFull();
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

// The first pass has no flag, each other one has one.
void TestVulkanRenderGraphCatalog::graphInFull()
{
    QByteArray expected = R"(:/shaders/hdr.glslp feedback 6 responds to HDR
'name ê' 'fragment é' 'vertex è'
  format 2 scale source 1 scale 3 0.5 size 640 480 scale input 7 wrap mode 9
  black when 'black ë' alpha 0.25
  flags
  inputs 5 -2 -1
  params first@14 second é@3
)";
    for (const char *flag : {"linearFilter", "mipmap", "cacheByParameters", "shareConstantBlack",
                             "isFeedbackTarget", "isFeedbackReader", "isFinalPass"}) {
        expected += R"('n' 'f' 'v'
  format 0 scale source 0 scale 1 1 size 0 0 scale input -1 wrap mode 0
  black when '' alpha 1
  flags )" + QByteArray(flag)
                + R"(
  inputs
  params
)";
    }
    QCOMPARE(graphText(preset(u"hdr"_s).graph), expected);
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
