#include "../TestSupport.h"

#include <GlslCompiler.h>
#include <renderer/ModuleCheck.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

using namespace Qt::StringLiterals;

// What is refused, and in which words. The modules are compiled here, and each is looked at as it
// was compiled and optimized.

namespace {

constexpr int kPass = 18;

// A graph whose pass kPass samples so many images.
VulkanRenderGraph graphWith(int imageCount)
{
    VulkanRenderGraph graph;
    graph.presetQrcPath = u":/shaders/crt-pvm.glslp"_s;
    graph.passes.resize(kPass + 2);
    graph.passes[kPass].sampledInputs.resize(imageCount);
    return graph;
}

const QByteArray kHead = "#version 450\n"
                         "layout(location = 0) out vec4 fragColor;\n";

// As examples/shaders/vulkan/include/component.glsl has it.
const QByteArray kBlock = "layout(push_constant) uniform PushConstants\n"
                          "{\n"
                          "    vec4 sourceSize;\n"
                          "    vec4 outputSize;\n"
                          "    vec4 originalSize;\n"
                          "    uint frameCount;\n"
                          "    int frameDirection;\n"
                          "    uint hdrOutputActive;\n"
                          "    float frameSeconds;\n"
                          "    float hdrHeadroom;\n"
                          "    float params[15];\n"
                          "} pc;\n";

const QByteArray kComponent = kHead + kBlock
        + "layout(location = 0) in vec2 texCoord;\n"
          "layout(binding = 0) uniform sampler2D Picture;\n"
          "layout(binding = 1) uniform sampler2D Beam;\n"
          "void main() { fragColor = texture(Picture, texCoord) * pc.params[14]\n"
          "                       + texture(Beam, texCoord); }\n";

QByteArray compiled(const QByteArray &source, ShaderStage stage = ShaderStage::Fragment)
{
    writeFile(u"source"_s, source);
    QByteArray spirv;
    QStringList files;
    QString error;
    if (!compileGlsl(u"source"_s, stage, spirv, files, error))
        qFatal("%s", qPrintable(error));
    return spirv;
}

// What one of SPIR-V's programs makes of the module or text.
QByteArray converted(const QString &program, const QStringList &options, const QByteArray &input)
{
    writeFile(u"input"_s, input);
    const Run run = runProgram(program, options + QStringList({u"input"_s, u"-o"_s, u"output"_s}));
    if (run.exitStatus != 0)
        qFatal("%s", run.err.constData());
    return readFile(u"output"_s);
}

// The error, or "" if the module can be drawn with.
QString fragmentError(const QByteArray &spirv, int imageCount)
{
    QString error;
    const bool isFit = VulkanGraph::checkFragmentModule(spirv, graphWith(imageCount), kPass, error);
    return isFit && error.isEmpty() ? QString() : error;
}

QString vertexError(const QByteArray &spirv)
{
    QString error;
    return VulkanGraph::checkVertexModule(spirv, error) && error.isEmpty() ? QString() : error;
}

const QString kDamaged = u"the module is not SPIR-V, or is damaged"_s;

using Words = std::vector<std::uint32_t>;

Words wordsOf(const QByteArray &spirv)
{
    Words words(std::size_t(spirv.size()) / 4);
    std::memcpy(words.data(), spirv.constData(), words.size() * 4);
    return words;
}

// Not a copy: the address sanitizer sees what is read after its end.
QByteArray bytesOf(const Words &words)
{
    return QByteArray::fromRawData(reinterpret_cast<const char *>(words.data()),
                                   4 * qsizetype(words.size()));
}

} // namespace

class TestModuleCheck : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void fragment_data();
    void fragment();
    void vertex_data();
    void vertex();
    void assembled_data();
    void assembled();
    void namesThatAreStripped();
    void damaged_data();
    void damaged();
    void everyWordMayBeWrong();
};

void TestModuleCheck::fragment_data()
{
    QTest::addColumn<QByteArray>("source"); // after kHead
    QTest::addColumn<int>("imageCount");
    QTest::addColumn<QString>("error");

    // Samplers.
    const auto addSampler = [](const char *name, const QByteArray &source, int imageCount,
                               const QString &error = {}) {
        QTest::newRow(name) << source << imageCount << error;
    };
    const QByteArray beam = "layout(binding = 5) uniform sampler2D Beam;\n";
    const QByteArray sampled = "void main() { fragColor = texture(Beam, vec2(0.5)); }";
    const QByteArray notSampled = "void main() { fragColor = vec4(1.0); }";
    const QString beamIsMissing =
            u"binding 5 ('Beam') is sampled, but pass 18 of 'crt-pvm' has 4 images: is an //! input line or feedback missing?"_s;
    addSampler("a component", kComponent.mid(kHead.size()), 2);
    addSampler("more images than it samples", kComponent.mid(kHead.size()), 8);
    addSampler("declared and not sampled", beam + notSampled, 4);
    addSampler("numbers that equal ids",
               beam
                       + "layout(push_constant) uniform Block { vec4 sourceSize; } pc;\n"
                         "void main() { fragColor = vec4(1.0); switch (int(pc.sourceSize.x)) {\n"
                         "case 8: case 9: case 10: case 11: case 12: case 13: case 14: case 15:\n"
                         "case 16: case 17: case 18: case 19: case 20: case 21: case 22: case 23:\n"
                         "case 24: case 25: case 26: case 27: case 28: case 29: case 30: case 31:\n"
                         "case 32: case 33: case 34: case 35: case 36: case 37: case 38: case 39:\n"
                         "fragColor = vec4(0.5); } }",
               4);
    addSampler("the last image", beam + sampled, 6);
    addSampler(
            "after the last", beam + sampled, 5,
            u"binding 5 ('Beam') is sampled, but pass 18 of 'crt-pvm' has 5 images: is an //! input line or feedback missing?"_s);
    addSampler(
            "after the only one", beam + sampled, 1,
            u"binding 5 ('Beam') is sampled, but pass 18 of 'crt-pvm' has 1 image: is an //! input line or feedback missing?"_s);
    addSampler(
            "without images", beam + sampled, 0,
            u"binding 5 ('Beam') is sampled, but pass 18 of 'crt-pvm' has no images: is an //! input line or feedback missing?"_s);
    addSampler(
            "binding 40", "layout(binding = 40) uniform sampler2D Beam;\n" + sampled, 8,
            u"binding 40 ('Beam') is sampled, but pass 18 of 'crt-pvm' has 8 images: is an //! input line or feedback missing?"_s);
    addSampler("an argument of a function",
               beam
                       + "vec4 middle(sampler2D image) { return texture(image, vec2(0.5)); }\n"
                         "void main() { fragColor = middle(Beam); }",
               4, beamIsMissing);
    addSampler("in another function",
               beam
                       + "vec4 middle() { return texture(Beam, vec2(0.5)); }\n"
                         "void main() { fragColor = middle(); }",
               4, beamIsMissing);
    addSampler("only its size",
               beam + "void main() { fragColor = vec4(textureSize(Beam, 0), 0.0, 1.0); }", 4,
               beamIsMissing);
    const QByteArray set1 = "layout(set = 1, binding = 0) uniform sampler2D Beam;\n";
    addSampler("in set 1", set1 + sampled, 4,
               u"binding 0 ('Beam') is in set 1, but all images of a pass are in set 0"_s);
    addSampler("in set 1 and not sampled", set1 + notSampled, 4);

    // Other resources.
    const auto addResource =
            [](const char *name, const QByteArray &declaration, const QByteArray &statement) {
                QTest::newRow(name)
                        << "layout(binding = 0" + declaration + ";\nvoid main() { " + statement
                                + "; }"
                        << 4
                        << u"binding 0 ('Beam') is not a sampler2D, as all images of a pass are"_s;
            };
    addResource("an array", ") uniform sampler2D Beam[2]",
                "fragColor = texture(Beam[1], vec2(0.5))");
    addResource("whole numbers", ") uniform isampler2D Beam",
                "fragColor = texture(Beam, vec2(0.5))");
    addResource("three dimensions", ") uniform sampler3D Beam",
                "fragColor = texture(Beam, vec3(0.5))");
    addResource("layers", ") uniform sampler2DArray Beam", "fragColor = texture(Beam, vec3(0.5))");
    addResource("a depth comparison", ") uniform sampler2DShadow Beam",
                "fragColor = vec4(texture(Beam, vec3(0.5)))");
    addResource("several samples", ") uniform sampler2DMS Beam",
                "fragColor = texelFetch(Beam, ivec2(0), 0)");
    addResource("a texture alone",
                ") uniform texture2D Beam; layout(binding = 1) uniform sampler Filter",
                "fragColor = texture(sampler2D(Beam, Filter), vec2(0.5))");
    addResource("a uniform buffer", ") uniform Block { vec4 number; } Beam",
                "fragColor = Beam.number");
    addResource("a storage buffer", ") buffer Block { vec4 number; } Beam",
                "Beam.number = vec4(1.0)");
    addResource("only the length of a storage buffer", ") buffer Block { float numbers[]; } Beam",
                "fragColor = vec4(Beam.numbers.length())");
    addResource("a storage image", ", rgba8) uniform image2D Beam",
                "fragColor = imageLoad(Beam, ivec2(0))");
    addResource("a storage image that only counts", ", r32ui) uniform uimage2D Beam",
                "imageAtomicAdd(Beam, ivec2(0), 1)");
    addSampler("a buffer that is not used",
               "layout(binding = 0) uniform Block { vec4 number; } Beam;\n" + notSampled, 4);

    // Push constants.
    const auto addBlock = [](const char *name, const QByteArray &members, const QByteArray &use,
                             const QString &error = {}) {
        QTest::newRow(name) << "layout(push_constant) uniform PushConstants { " + members
                        + " } pc;\nvoid main() { fragColor = vec4(" + use + "); }"
                            << 1 << error;
    };
    const QByteArray toHeadroom = "vec4 sourceSize, outputSize, originalSize; uint frameCount; "
                                  "int frameDirection; uint hdrOutputActive; float frameSeconds; "
                                  "float hdrHeadroom; ";
    addBlock("two members", "vec4 sourceSize, outputSize;", "pc.outputSize");
    addBlock("no parameters", toHeadroom, "pc.hdrHeadroom");
    addBlock("one parameter", toHeadroom + "float params[1];", "pc.params[0]");
    addBlock("after the parameters", toHeadroom + "float params[14]; float more;", "pc.more",
             u"push constant 9 ('more') is beyond the last member of the block, params"_s);
    addBlock("a member at another byte", "vec4 sourceSize; layout(offset = 20) float width;",
             "pc.sourceSize", u"push constant 1 ('width') is at byte 20, not 16"_s);
    addBlock("a member after 128 bytes", "layout(offset = 128) float more;", "pc.more",
             u"push constant 0 ('more') is at byte 128, not 0"_s);
    addBlock("a wrong block that is not used", "mat4 sourceSize;", "1.0");

    // Inputs.
    const auto addInput = [](const char *name, const QByteArray &declaration, const QByteArray &use,
                             const QString &error = {}) {
        QTest::newRow(name) << declaration + "\nvoid main() { fragColor = vec4(" + use + "); }" << 1
                            << error;
    };
    addInput("a built-in input", "", "gl_FragCoord");
    addInput("texCoord", "layout(location = 0) in vec2 texCoord;", "texCoord, 0.0, 1.0");
    addInput(
            "a second input", "layout(location = 1) in vec4 normal;", "normal",
            u"input 1 ('normal') does not exist: a component's only input is texCoord, at location 0"_s);
}

void TestModuleCheck::fragment()
{
    QFETCH(QByteArray, source);
    QFETCH(int, imageCount);
    QFETCH(QString, error);
    const QByteArray spirv = compiled(kHead + source);
    QCOMPARE(fragmentError(spirv, imageCount), error);
    const QByteArray optimized = converted(QStringLiteral(SPIRV_OPT), {u"-O"_s}, spirv);
    QCOMPARE(fragmentError(optimized, imageCount), error);
}

void TestModuleCheck::vertex_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QString>("error");
    QTest::newRow("the shader of all passes")
            << readFile(QStringLiteral(EXAMPLE_SHADERS_DIR "/vulkan/fullscreen.vert")) << QString();
    QTest::newRow("a vertex buffer")
            << QByteArray("#version 450\nlayout(location = 0) in vec2 position;\n"
                          "void main() { gl_Position = vec4(1.0); }")
            << u"input 0 ('position') does not exist: no pass has vertices of its own"_s;
}

void TestModuleCheck::vertex()
{
    QFETCH(QByteArray, source);
    QFETCH(QString, error);
    const QByteArray spirv = compiled(source, ShaderStage::Vertex);
    QCOMPARE(vertexError(spirv), error);
    QCOMPARE(fragmentError(spirv, 1), u"the module has no main() of a fragment shader"_s);
}

void TestModuleCheck::assembled_data()
{
    QTest::addColumn<QByteArray>("before"); // in the assembly of kComponent
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<QString>("error");
    QTest::newRow("unchanged") << QByteArray(" Fragment ") << QByteArray(" Fragment ") << QString();
    QTest::newRow("another stage") << QByteArray(" Fragment ") << QByteArray(" GLCompute ")
                                   << u"the module has no main() of a fragment shader"_s;
    QTest::newRow("another name") << QByteArray("\"main\" %") << QByteArray("\"draw\" %")
                                  << u"the module has no main() of a fragment shader"_s;
}

void TestModuleCheck::assembled()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    QFETCH(QString, error);
    QByteArray text = converted(QStringLiteral(SPIRV_DIS), {}, compiled(kComponent));
    QCOMPARE(text.count(before), 1);
    text.replace(before, after);
    QCOMPARE(fragmentError(converted(QStringLiteral(SPIRV_AS), {}, text), 2), error);
    QCOMPARE(vertexError(compiled(kComponent)), u"the module has no main() of a vertex shader"_s);
}

void TestModuleCheck::namesThatAreStripped()
{
    const QByteArray spirv =
            converted(QStringLiteral(SPIRV_OPT), {u"--strip-debug"_s}, compiled(kComponent));
    QCOMPARE(fragmentError(spirv, 1),
             u"binding 1 is sampled, but pass 18 of 'crt-pvm' has 1 "
             "image: is an //! input line or feedback missing?"_s);
}

void TestModuleCheck::damaged_data()
{
    QTest::addColumn<int>("word");
    QTest::addColumn<quint32>("value");
    QTest::newRow("another magic number") << 0 << 0x07230204U;
    QTest::newRow("bytes in the other order") << 0 << 0x03022307U;
    QTest::newRow("an instruction without a length") << 5 << 0x00000011U;
    QTest::newRow("an instruction beyond the end") << 5 << 0xFFFF0011U;
}

void TestModuleCheck::damaged()
{
    QFETCH(int, word);
    QFETCH(quint32, value);
    Words words = wordsOf(compiled(kComponent));
    words[std::size_t(word)] = value;
    QCOMPARE(fragmentError(bytesOf(words), 2), kDamaged);
    QCOMPARE(vertexError(bytesOf(words)), kDamaged);
}

// Each beginning of a module is refused, and no wrong word is taken for a length or an index.
void TestModuleCheck::everyWordMayBeWrong()
{
    const QByteArray spirv = compiled(kComponent);
    const Words words = wordsOf(spirv);
    for (std::size_t count = 0; count < words.size(); ++count) {
        const Words beginning(words.begin(), words.begin() + std::ptrdiff_t(count));
        QVERIFY(!fragmentError(bytesOf(beginning), 2).isEmpty());
        QVERIFY(!vertexError(bytesOf(beginning)).isEmpty());
    }
    for (const int surplus : {1, 2, 3})
        QCOMPARE(fragmentError(spirv + QByteArray(surplus, '\0'), 2), kDamaged);

    int refused = 0;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::uint32_t word = words[i];
        for (const std::uint32_t wrong :
             {0U, ~0U, word ^ 1U, word ^ 0x10000U, word ^ 0x80U, word ^ 0x80000000U, words[3]}) {
            Words changed = words;
            changed[i] = wrong;
            refused += fragmentError(bytesOf(changed), 2).isEmpty() ? 0 : 1;
            vertexError(bytesOf(changed));
        }
    }
    QVERIFY2(refused > int(words.size()), qPrintable(QString::number(refused)));
}

QTEST_GUILESS_MAIN(TestModuleCheck)
#include "tst_ModuleCheck.moc"
