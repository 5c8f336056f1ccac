#include <FirstPartyPresets.h>
#include <PresetCompiler.h>
#include <PresetParameters.h>
#include <VulkanRenderGraphCatalog.h>

#include "TestSupport.h"

using namespace Qt::StringLiterals;
using namespace FirstPartyPresetSource;

// What an application reads back from the example shaders' manifest is what the compiler put there.

namespace {

const QString kShadersDir = QStringLiteral(EXAMPLE_SHADERS_DIR);

// A line per field, so that a difference shows by name.
QStringList fieldsOf(const VulkanRenderGraph::Pass &pass)
{
    QStringList fields;
    const auto add = [&fields](const char *name, const auto &value) {
        fields.append("%1 = %2"_L1.arg(QLatin1StringView(name)).arg(value));
    };
    add("fragmentSpirvResource", pass.fragmentSpirvResource);
    add("vertexSpirvResource", pass.vertexSpirvResource);
    add("debugName", pass.debugName);
    add("format", int(pass.format));
    add("scaleSource", int(pass.scaleSource));
    add("scaleX", QString::number(double(pass.scaleX), 'g', 9));
    add("scaleY", QString::number(double(pass.scaleY), 'g', 9));
    add("absoluteWidth", pass.absoluteWidth);
    add("absoluteHeight", pass.absoluteHeight);
    add("scaleInputPassIndex", pass.scaleInputPassIndex);
    add("linearFilter", int(pass.linearFilter));
    add("mipmap", int(pass.mipmap));
    add("cacheByParameters", int(pass.cacheByParameters));
    add("constantBlackWhenZero", pass.constantBlackWhenZero);
    add("constantBlackAlpha", QString::number(double(pass.constantBlackAlpha), 'g', 9));
    add("shareConstantBlack", int(pass.shareConstantBlack));
    add("wrapMode", pass.wrapMode);
    add("isFeedbackTarget", int(pass.isFeedbackTarget));
    add("isFeedbackReader", int(pass.isFeedbackReader));
    add("isFinalPass", int(pass.isFinalPass));
    for (const VulkanRenderGraph::ResourceRef &input : pass.sampledInputs)
        add("sampledInput", input.passIndex);
    for (const VulkanRenderGraph::PushConstantParam &param : pass.params)
        add("param", "%1 at %2"_L1.arg(param.id).arg(param.floatOffset));
    return fields;
}

template<typename Parameter>
QStringList fieldsOf(const QList<Parameter> &parameters)
{
    QStringList fields;
    for (const Parameter &param : parameters) {
        QStringList values;
        for (const float value :
             {param.initialValue, param.defaultValue, param.min, param.max, param.step})
            values.append(QString::number(double(value), 'g', 9));
        fields.append("%1 '%2' %3"_L1.arg(param.id, param.description, values.join(u' ')));
    }
    return fields;
}

} // namespace

class TestVulkanRenderGraphCatalog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void presetNames();
    void readsBackWhatWasCompiled_data();
    void readsBackWhatWasCompiled();
    void metadata_data();
    void metadata();
    void unknownName_data();
    void unknownName();
};

void TestVulkanRenderGraphCatalog::presetNames()
{
    QCOMPARE(VulkanRenderGraphCatalog::presetNames(), declaredPresetNames());
}

void TestVulkanRenderGraphCatalog::readsBackWhatWasCompiled_data()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (const PresetDecl &decl : kPresets)
        QTest::newRow(decl.name) << index++;
}

void TestVulkanRenderGraphCatalog::readsBackWhatWasCompiled()
{
    QFETCH(int, index);
    const PresetDecl &decl = kPresets[index];
    VulkanRenderGraph compiled;
    QVERIFY(compilePreset(kShadersDir, decl, compiled));
    QList<PresetParamMeta> parameters;
    QVERIFY(collectPresetParameters(kShadersDir, decl, parameters));

    const auto preset = VulkanRenderGraphCatalog::preset(QString::fromLatin1(decl.name));
    QVERIFY(preset);
    const VulkanRenderGraph &graph = preset->graph;
    QVERIFY(graph.isValid());
    QCOMPARE(graph.presetQrcPath, compiled.presetQrcPath);
    QCOMPARE(graph.feedbackPassIndex, compiled.feedbackPassIndex);
    QCOMPARE(graph.finalRealPassRespondsToHdr, compiled.finalRealPassRespondsToHdr);
    QCOMPARE(graph.passes.size(), compiled.passes.size());
    for (qsizetype i = 0; i < graph.passes.size(); ++i)
        QCOMPARE(fieldsOf(graph.passes[i]), fieldsOf(compiled.passes[i]));
    QCOMPARE(fieldsOf(preset->parameters), fieldsOf(parameters));
}

void TestVulkanRenderGraphCatalog::metadata_data()
{
    QTest::addColumn<bool>("vulkanOnly");
    QTest::addColumn<bool>("usesFrameCount");
    QTest::newRow("crt-consumer") << true << true;
    QTest::newRow("gba-lcd") << true << false;
    QTest::newRow("rewind") << false << true;
    QTest::newRow("stock") << false << false;
}

void TestVulkanRenderGraphCatalog::metadata()
{
    QFETCH(bool, vulkanOnly);
    QFETCH(bool, usesFrameCount);
    const auto preset =
            VulkanRenderGraphCatalog::preset(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(preset);
    QCOMPARE(preset->vulkanOnly, vulkanOnly);
    QCOMPARE(preset->usesFrameCount, usesFrameCount);
}

void TestVulkanRenderGraphCatalog::unknownName_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name :
         {"", "crt", "crt-pvm.glslp", ":/shaders/crt-pvm.glslp", "CRT-PVM", "crt_pvm"})
        QTest::addRow("'%s'", name) << QString::fromLatin1(name);
}

void TestVulkanRenderGraphCatalog::unknownName()
{
    QFETCH(QString, name);
    QVERIFY(!VulkanRenderGraphCatalog::preset(name));
}

QTEST_GUILESS_MAIN(TestVulkanRenderGraphCatalog)
#include "tst_VulkanRenderGraphCatalog.moc"
