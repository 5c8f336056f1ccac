#include <ManifestWriter.h>
#include <VulkanRenderGraphCatalog.h>

#include "DrawingSupport.h"
#include "TestSupport.h"

#include <QMap>

using namespace Qt::StringLiterals;

namespace {

const QString kShadersDir = QStringLiteral(EXAMPLE_SHADERS_DIR);

// The module of an example component or of fullscreen.vert as glslangValidator compiles it, without
// the debug information and optimization of a build type.
QByteArray compiledModule(const QString &file)
{
    const QString vulkan = kShadersDir + u"/vulkan/"_s;
    const QString component = vulkan + u"components/"_s + file.chopped(9); // ".frag.spv"
    const bool isVertex = file == "fullscreen.vert.spv"_L1;
    const QString slang = component + u".slang"_s;
    const QString source = isVertex ? vulkan + u"fullscreen.vert"_s
            : QFile::exists(slang)  ? slang
                                    : component + u".frag"_s;
    const Run glslang = runProgram(
            QStringLiteral(GLSLANG),
            {u"-V"_s, u"-S"_s, isVertex ? u"vert"_s : u"frag"_s, u"-o"_s, u"module"_s, source});
    return glslang.exitStatus == 0 ? readFile(u"module"_s) : QByteArray();
}

} // namespace

class TestPresetOnDisk : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void presetsAreTheManifests();
    void modulesAreTheBuilds();
    void initialValuesAreTheTunedOnes();
    void nothingIsPrinted();
    void filesAreInOrderOfReading();
    void errors_data();
    void errors();
};

// Written by the tool's writer, all presets give the golden manifest. The fields that a
// PresetOnDisk does not have are the catalog's.
void TestPresetOnDisk::presetsAreTheManifests()
{
    QList<EmittedPreset> presets;
    const QStringList names = presetNames();
    for (const QString &name : names) {
        const PresetOnDisk preset = examplePreset(name);
        QCOMPARE(preset.name, name);
        const auto entry = VulkanRenderGraphCatalog::preset(name);
        QVERIFY(entry);
        presets.append({.name = name,
                        .graph = preset.graph,
                        .presetParams = preset.parameters,
                        .vulkanOnly = entry->vulkanOnly,
                        .usesFrameCount = entry->usesFrameCount});
    }
    QVERIFY(writeManifest(u"manifest.h"_s, presets));
    QCOMPARE(firstDifference(readFile(u"manifest.h"_s),
                             readFile(QStringLiteral(
                                     SOURCE_DIR "/tests/manifest/golden/RenderGraphManifest.h"))),
             "");
}

// The modules are those of the build, byte for byte, and the presets refer to all of these.
void TestPresetOnDisk::modulesAreTheBuilds()
{
    QMap<QString, QByteArray> expected;
    const QStringList names = presetNames();
    for (const QString &name : names) {
        const PresetOnDisk preset = examplePreset(name);
        for (const VulkanRenderGraph::Pass &pass : preset.graph.passes) {
            QVERIFY(preset.modules.contains(pass.vertexSpirvResource));
            QVERIFY(preset.modules.contains(pass.fragmentSpirvResource));
        }
        for (auto module = preset.modules.cbegin(); module != preset.modules.cend(); ++module) {
            const QString file = module.key().section(u'/', -1);
            QCOMPARE(module.key(), ":/shaders/vulkan/spirv/"_L1 + file);
            if (!expected.contains(file))
                expected.insert(file, compiledModule(file));
            QVERIFY(!expected.value(file).isEmpty());
            QVERIFY2(module.value() == expected.value(file), qPrintable(file));
        }
    }
    QCOMPARE(expected.keys(),
             QDir(QStringLiteral(SPIRV_DIR)).entryList({u"*.spv"_s}, QDir::Files, QDir::Name));
}

void TestPresetOnDisk::initialValuesAreTheTunedOnes()
{
    const QHash<QString, float> values = initialValues(examplePreset(u"dmg-lcd"_s).parameters);
    QCOMPARE(values.size(), 13);
    QCOMPARE(values.value(u"ghost_rise"_s), 0.2573F); // its default is 0.5
}

void TestPresetOnDisk::nothingIsPrinted()
{
    QByteArray errors;
    const QByteArray notes = captured(stdout, [&errors] {
        errors = captured(stderr, [] {
            PresetOnDisk preset;
            QString error;
            loadPreset(kShadersDir, u"dmg-lcd"_s, preset, error);
            loadPreset(u"nowhere"_s, u"dmg-lcd"_s, preset, error);
        });
    });
    QCOMPARE(notes, "");
    QCOMPARE(errors, "");
}

void TestPresetOnDisk::filesAreInOrderOfReading()
{
    const PresetOnDisk preset = examplePreset(u"dmg-lcd"_s);
    QStringList files;
    for (const QString &file : preset.files)
        files.append(QDir(kShadersDir).relativeFilePath(file));
    QCOMPARE(files,
             QStringList({
                     u"vulkan/components/dmg-color.slang"_s, // not there: the .frag is taken
                     u"vulkan/components/dmg-ghost.slang"_s,
                     u"vulkan/components/dmg-crosstalk.slang"_s,
                     u"vulkan/components/dmg-occlusion.slang"_s,
                     u"vulkan/components/crt-dmg-grid.slang"_s,
                     u"dmg-lcd.glslp"_s, // not there either
                     u"vulkan/fullscreen.vert"_s,
                     u"vulkan/components/dmg-color.frag"_s,
                     u"vulkan/include/component.glsl"_s,
                     u"vulkan/include/color.glsl"_s,
                     u"vulkan/include/lcd.glsl"_s,
                     u"vulkan/include/noise.glsl"_s,
                     u"vulkan/components/hdr-color-boost.slang"_s,
             }));
}

void TestPresetOnDisk::errors_data()
{
    QTest::addColumn<QString>("preset");
    QTest::addColumn<QString>("file"); // below shaders; replaced
    QTest::addColumn<QByteArray>("content"); // null: the file is removed
    QTest::addColumn<QString>("expected");

    QTest::newRow("no preset of that name")
            << u"crt"_s << QString() << QByteArray()
            << u"no preset 'crt'; there are "_s + declaredPresetNames().join(u", "_s);
    const auto row = [](const char *name, const char *file, const QByteArray &content,
                        const char *expected) {
        QTest::newRow(name) << u"stock"_s << QString::fromLatin1(file) << content
                            << QString::fromLatin1(expected);
    };
    const QByteArray start = "#version 450\n#extension GL_GOOGLE_include_directive : require\n";
    row("no component", "vulkan/components/stock.frag", {},
        "preset 'stock' pass 0 ('stock') has no shaders/vulkan/components source");
    row("no final pass", "vulkan/components/hdr-color-boost.slang", {},
        "shaders/vulkan/components/hdr-color-boost.slang: cannot be read");
    row("no vertex shader", "vulkan/fullscreen.vert", {},
        "shaders/vulkan/fullscreen.vert: cannot be read");
    row("reserved word", "vulkan/components/stock.frag", start + "void main()\n{\n    half;\n}\n",
        "shaders/vulkan/components/stock.frag:5: 'half' : Reserved word.");
    row("undeclared name", "vulkan/components/stock.frag",
        start + "void main()\n{\n    nothing = 1;\n}\n",
        "shaders/vulkan/components/stock.frag:5: 'nothing' : undeclared identifier");
    row("no main", "vulkan/components/stock.frag", start + "float f() { return 1.0; }\n",
        "shaders/vulkan/components/stock.frag: Linking fragment stage: Missing entry point: Each "
        "stage requires one entry point");
    row("empty", "vulkan/components/stock.frag", "",
        "shaders/vulkan/components/stock.frag: #version: ES shaders for SPIR-V require version 310 "
        "or higher");
    row("file that two components include", "vulkan/include/component.glsl", "\n\nbroken\n",
        "shaders/vulkan/include/component.glsl:3: '' : syntax error, unexpected IDENTIFIER");
    row("two components", "vulkan/include/component.glsl", {},
        "shaders/vulkan/components/stock.frag:3: '#include' : Could not process include directive "
        "for header name: ../include/component.glsl\n"
        "shaders/vulkan/components/hdr-color-boost.slang:3: '#include' : Could not process include "
        "directive for header name: ../include/component.glsl");
    row("file that includes itself", "vulkan/include/component.glsl",
        "#include \"component.glsl\"\n",
        "shaders/vulkan/include/component.glsl:1: '#include' : Could not process include directive "
        "for header name: component.glsl\n"
        "shaders/vulkan/components/stock.frag:11: 'fragColor' : undeclared identifier\n"
        "shaders/vulkan/components/hdr-color-boost.slang:15: 'texCoord' : undeclared identifier\n"
        "shaders/vulkan/components/hdr-color-boost.slang:15: 'texture' : no matching overloaded "
        "function found\n"
        "shaders/vulkan/components/hdr-color-boost.slang:15: '=' : cannot convert from ' const "
        "float' to ' temp highp 4-component vector of float'");

    row("sampler without an input", "vulkan/components/stock.frag",
        start
                + "layout(location = 0) out vec4 color;\n"
                  "layout(binding = 3) uniform sampler2D Extra;\n"
                  "void main() { color = texture(Extra, vec2(0.5)); }\n",
        "shaders/vulkan/components/stock.frag:4: binding 3 ('Extra') is sampled, but pass 0 of "
        "'stock' has 1 image: is an //! input line or feedback missing?");
    const QString crosstalk = u"vulkan/components/dmg-crosstalk.slang"_s;
    QTest::newRow("slots of other parameters")
            << u"dmg-lcd"_s << crosstalk
            << readFile(QStringLiteral(EXAMPLE_SHADERS_DIR "/") + crosstalk)
                       .replace("pc.params[1]", "pc.params[0]")
            << u"shaders/vulkan/components/dmg-crosstalk.slang:16: the slot of "
               "dmg_crosstalk_reach is 1, not 0"_s;

    // The compiler's error, and then its place.
    const auto placed = [](const char *name, const char *preset, const char *file,
                           const QByteArray &content, const char *line, const char *place) {
        QTest::newRow(name) << QString::fromLatin1(preset) << QString::fromLatin1(file) << content
                            << QString::fromLatin1(line) + u'\n' + QString::fromLatin1(place);
    };
    const char *const noise = "vulkan/components/rewind-noise.slang";
    placed("alias", "rewind", noise, "\n//! input NONE\n",
           "preset 'rewind' pass 1 ('rewind-noise') declares //! input NONE but no earlier pass "
           "carries that alias (shaders/vulkan/components/rewind-noise.slang)",
           "shaders/vulkan/components/rewind-noise.slang:2: //! input NONE is declared here");
    placed("parameter", "rewind", noise, "//! param smear\n\n//! param DMG_TINT\n",
           "rewind pass 1 declares parameter 'DMG_TINT' without metadata",
           "shaders/vulkan/components/rewind-noise.slang:3: //! param DMG_TINT is declared here");
    placed("slot", "rewind", noise,
           "//! param wiggle\n//! param mask_hdr_ready\n//! param smear\n"
           "/* pc.params[2] */ pc.params[1];\npc.params[3] + pc.params[2];\n",
           "preset 'rewind' pass 1: code reads pc.params[2] but its own //! param directives only "
           "declare 2 slot(s) (shaders/vulkan/components/rewind-noise.slang)",
           "shaders/vulkan/components/rewind-noise.slang:5: pc.params[2] is read here; the slots "
           "are "
           "[0] smear, [1] wiggle");
    placed("slot without directives", "rewind", noise, "pc.params[99999999999]\n",
           "preset 'rewind' pass 1: code reads pc.params[0] but its own //! param directives only "
           "declare 0 slot(s) (shaders/vulkan/components/rewind-noise.slang)",
           "shaders/vulkan/components/rewind-noise.slang:1: pc.params[0] is read here; there is no "
           "//! param");
    QByteArray directives = "//! param mask_hdr_ready\n";
    for (const char *id :
         {"abl_strength", "barrel_distortion", "beam_max", "beam_min", "black_floor", "conv_bx",
          "conv_by", "conv_rx", "conv_ry", "corner_radius", "crt_white", "desaturate", "gun_cutoff",
          "halation_sigma", "abl_strength", "hdr_peak", "persist_b", "persist_g"})
        directives += "//! param " + QByteArray(id) + '\n';
    placed("too many parameters", "crt-pvm", "vulkan/components/crt-linearize.slang", directives,
           "preset 'crt-pvm' pass 0 ('crt-linearize') exceeds MaxParamFloatsPerPass",
           "shaders/vulkan/components/crt-linearize.slang:18: //! param persist_b is number 16 of "
           "17; "
           "a pass takes at most 15");
    directives.clear();
    for (const char *alias : {"LINEARIZED", "ABL", "DRIVE", "OPTICAL", "ENVELOPE", "BEAM",
                              "SCANLINE", "OPTICS_DOWN", "ABL"})
        directives += "//! input CRT_" + QByteArray(alias) + '\n';
    placed("too many inputs", "crt-pvm", "vulkan/components/crt-screen.slang", directives,
           "preset 'crt-pvm' pass 17 ('crt-screen') exceeds MaxSampledInputsPerPass",
           "shaders/vulkan/components/crt-screen.slang:8: //! input CRT_OPTICS_DOWN is the last of "
           "8; "
           "with the images that take no directive, a pass samples at most 8");
    const auto drift = [&placed](const char *name, const char *content, const QByteArray &listed,
                                 const char *place) {
        const QByteArray line = "preset 'rewind' ownParams union {lineNoise;noiseAmount;smear;"
                                "tapeSpeed;wiggle} does not match its .glslp parameters= list {"
                + listed + '}';
        placed(name, "rewind", "rewind.glslp", content, line.constData(), place);
    };
    drift("drift", "\nparameters = \"smear; wiggle;tapeSpeed;lineNoise;Smear; wiggle\"\n",
          " wiggle; wiggle;Smear;lineNoise;smear;tapeSpeed",
          "shaders/rewind.glslp:2: only the passes have 'noiseAmount', 'wiggle'; only this list "
          "has "
          "' wiggle', 'Smear'");
    drift("an id twice", "parameters = \"smear;wiggle;tapeSpeed;lineNoise;noiseAmount;smear\"\n",
          "lineNoise;noiseAmount;smear;smear;tapeSpeed;wiggle",
          "shaders/rewind.glslp:1: an id is listed more than once");
    drift("no list", "parameters = smear\n", "",
          "shaders/rewind.glslp: no line 'parameters = \"...\"' can be read here");
}

void TestPresetOnDisk::errors()
{
    QFETCH(QString, preset);
    QFETCH(QString, file);
    QFETCH(QByteArray, content);
    QFETCH(QString, expected);
    copyExampleShaders();
    if (content.isNull())
        QFile::remove(u"shaders/"_s + file);
    else
        writeFile(u"shaders/"_s + file, content);
    PresetOnDisk loaded;
    QString error;
    QVERIFY(!loadPreset(u"shaders"_s, preset, loaded, error));
    QCOMPARE(error, expected);
}

QTEST_APPLESS_MAIN(TestPresetOnDisk)
#include "tst_PresetOnDisk.moc"
