#include <FirstPartyPresets.h>
#include <PresetCompiler.h>

#include "TestSupport.h"

#include <QRegularExpression>
#include <QSet>

using namespace Qt::StringLiterals;
using namespace FirstPartyPresetSource;

// That the shipped components say what their presets' graphs need.

namespace {

const QString kShadersDir = QStringLiteral(EXAMPLE_SHADERS_DIR);

using Inputs = QList<QList<int>>; // per pass, in binding order

const PresetDecl &presetNamed(std::string_view name)
{
    const auto *const found = std::ranges::find(kPresets, name, &PresetDecl::name);
    if (found == std::end(kPresets))
        qFatal("no such preset");
    return *found;
}

// The parameter ids that the component's text declares, sorted; a .frag file declares none itself.
QStringList declaredIds(const QString &source)
{
    static const QRegularExpression kDirective(u"^//! param (\\w+)$"_s,
                                               QRegularExpression::MultilineOption);
    QStringList ids;
    auto matches = kDirective.globalMatch(source);
    while (matches.hasNext())
        ids.append(matches.next().captured(1));
    ids.sort();
    return ids;
}

} // namespace

class TestExampleShaders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyComponentIsThere();
    void slotsFollowTheSortedIds_data();
    void slotsFollowTheSortedIds();
    void sampledInputs_data();
    void sampledInputs();
    void everyParameterIsBound_data();
    void everyParameterIsBound();
};

void TestExampleShaders::everyComponentIsThere()
{
    QSet<QString> named;
    for (const PresetDecl &preset : kPresets) {
        for (const PassDecl &pass : passesOf(preset))
            named.insert(QString::fromLatin1(pass.component));
    }
    QSet<QString> shipped;
    const QFileInfoList files =
            QDir(kShadersDir + u"/vulkan/components"_s).entryInfoList(QDir::Files);
    for (const QFileInfo &file : files)
        shipped.insert(file.completeBaseName());
    shipped.remove(u"hdr-color-boost"_s); // closes every graph, declared by none
    QCOMPARE(shipped, named);
}

void TestExampleShaders::slotsFollowTheSortedIds_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("ids");
    const QFileInfoList files =
            QDir(kShadersDir + u"/vulkan/components"_s).entryInfoList({u"*.slang"_s}, QDir::Files);
    for (const QFileInfo &file : files) {
        QTest::newRow(qPrintable(file.fileName()))
                << file.filePath() << declaredIds(QString::fromUtf8(readFile(file.filePath())));
    }
    // The fallbacks take the ids that their passes declare.
    QTest::newRow("dmg-color.frag")
            << kShadersDir + u"/vulkan/components/dmg-color.frag"_s << QStringList({u"DMG_TINT"_s});
    QTest::newRow("stock.frag") << kShadersDir + u"/vulkan/components/stock.frag"_s
                                << QStringList();
}

// Each id is defined once, as the slot of its rank, and slots are read nowhere else.
void TestExampleShaders::slotsFollowTheSortedIds()
{
    QFETCH(QString, path);
    QFETCH(QStringList, ids);
    const QString source = QString::fromUtf8(readFile(path));

    static const QRegularExpression kSlot(u"^#define (\\w+) pc\\.params\\[(\\d+)\\]$"_s,
                                          QRegularExpression::MultilineOption);
    QStringList defined;
    auto matches = kSlot.globalMatch(source);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        QCOMPARE(match.captured(2).toInt(), defined.size());
        defined.append(match.captured(1));
    }
    QCOMPARE(defined, ids);
    QCOMPARE(source.count(u"pc.params["_s), ids.size());
}

void TestExampleShaders::sampledInputs_data()
{
    QTest::addColumn<Inputs>("expected");
    const Inputs crt = {{-2}, {0},  {1},  {2},  {3},  {4, 0}, {5}, {6, -1},         {7}, {8, -1},
                        {9},  {10}, {11}, {12}, {13}, {14},   {},  {16, 9, 12, 15}, {17}};
    for (const char *name : {"crt-pvm", "crt-bvm", "crt-arcade", "crt-pc", "crt-bw"})
        QTest::newRow(name) << crt;
    QTest::newRow("crt-consumer") << Inputs(
            {{-2},    {0},  {1},  {2},  {3},  {4},  {5, 1}, {6}, {7, -1},          {8},
             {9, -1}, {10}, {11}, {12}, {13}, {14}, {15},   {},  {17, 10, 13, 16}, {18}});
    QTest::newRow("gba-lcd") << Inputs({{-2}, {0, -1}, {1}, {2}});
    QTest::newRow("gameboy-lcd") << Inputs({{-2}, {0, -1}, {1}, {2}});
    QTest::newRow("dmg-lcd") << Inputs({{-2}, {0, -1}, {1}, {2}, {3, 2}, {4}});
    QTest::newRow("no-pixels") << Inputs({{-2}, {0}, {1}, {2, 1}, {3}, {4, 0}, {5}, {6}});
    QTest::newRow("rewind") << Inputs({{-2}, {0}, {1}});
    QTest::newRow("stock") << Inputs({{-2}, {0}});
}

void TestExampleShaders::sampledInputs()
{
    QFETCH(Inputs, expected);
    const PresetDecl &preset = presetNamed(QTest::currentDataTag());
    VulkanRenderGraph graph;
    QVERIFY(compilePreset(kShadersDir, preset, graph));
    Inputs inputs;
    for (const VulkanRenderGraph::Pass &pass : std::as_const(graph.passes)) {
        QList<int> &list = inputs.emplaceBack();
        for (const VulkanRenderGraph::ResourceRef &input : pass.sampledInputs)
            list.append(input.passIndex);
    }
    QCOMPARE(inputs, expected);
}

void TestExampleShaders::everyParameterIsBound_data()
{
    QTest::addColumn<const PresetDecl *>("preset");
    for (const PresetDecl &preset : kPresets)
        QTest::newRow(preset.name) << &preset;
}

void TestExampleShaders::everyParameterIsBound()
{
    QFETCH(const PresetDecl *, preset);
    VulkanRenderGraph graph;
    QVERIFY(compilePreset(kShadersDir, *preset, graph));
    QSet<QString> bound;
    for (const VulkanRenderGraph::Pass &pass : std::as_const(graph.passes)) {
        for (const VulkanRenderGraph::PushConstantParam &param : pass.params)
            bound.insert(param.id);
    }
    for (const PassDecl &pass : passesOf(*preset)) {
        for (const ParamDecl &param : paramsOf(pass))
            QVERIFY2(bound.contains(QString::fromLatin1(param.id)), param.id);
    }
}

QTEST_APPLESS_MAIN(TestExampleShaders)
#include "tst_ExampleShaders.moc"
