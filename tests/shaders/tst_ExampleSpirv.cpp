#include "../TestSupport.h"

#include <RenderGraphManifest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>

using namespace Qt::StringLiterals;
using namespace RenderGraphManifestData;

// That the compiled modules are clean, and that they and the manifest's tables agree.

namespace {

const QString kShadersDir = QStringLiteral(EXAMPLE_SHADERS_DIR);
const QString kSpirvDir = QStringLiteral(SPIRV_DIR);

// With both streams in `out`.
Run run(const QString &program, const QStringList &arguments)
{
    return runProgram(program, arguments, [](QProcess &process) {
        process.setProcessChannelMode(QProcess::MergedChannels);
    });
}

QString modulePath(const char *resource)
{
    const QString name = QString::fromUtf8(resource);
    const QString prefix = u":/shaders/vulkan/spirv/"_s;
    if (!name.startsWith(prefix))
        qFatal("unexpected resource %s", resource);
    return kSpirvDir + u'/' + name.mid(prefix.size());
}

// What a fragment module binds and reads.
struct Interface
{
    QSet<int> bindings;
    int imageCount = 0;
    int pushConstantSize = 0;
    QSet<int> slotIndices; // of pc.params
    bool indexesParamsDynamically = false;
};

int sizeOf(const QJsonObject &member)
{
    static const QHash<QString, int> kSizes = {
            {u"float"_s, 4}, {u"int"_s, 4}, {u"uint"_s, 4}, {u"vec4"_s, 16}};
    const int count = member[u"array"_s].toArray().isEmpty()
            ? 1
            : member[u"array"_s].toArray().first().toInt();
    return kSizes.value(member[u"type"_s].toString()) * count;
}

// Images and the push-constant block, from the reflection.
void reflect(const QString &module, Interface &found)
{
    const Run reflection = run(u"spirv-cross"_s, {module, u"--reflect"_s});
    const QJsonObject json = QJsonDocument::fromJson(reflection.out).object();
    const QJsonArray textures = json[u"textures"_s].toArray();
    for (const auto &texture : textures) {
        if (texture[u"set"_s].toInt() != 0)
            qFatal("an image outside set 0");
        found.bindings.insert(texture[u"binding"_s].toInt());
        ++found.imageCount;
    }
    const QJsonArray blocks = json[u"push_constants"_s].toArray();
    for (const auto &block : blocks) {
        const QJsonArray members =
                json[u"types"_s][block[u"type"_s].toString()][u"members"_s].toArray();
        for (const auto &member : members) {
            const QJsonObject object = member.toObject();
            found.pushConstantSize =
                    qMax(found.pushConstantSize, object[u"offset"_s].toInt() + sizeOf(object));
        }
    }
}

// Which slots the code really reads: the access chains to the block's member `params`.
void disassemble(const QString &module, Interface &found)
{
    const QString text = QString::fromUtf8(run(u"spirv-dis"_s, {u"--raw-id"_s, module}).out);
    const auto capture = [&text](const QString &pattern) {
        return QRegularExpression(pattern, QRegularExpression::MultilineOption)
                .match(text)
                .captured(1);
    };
    const QString block = capture(u"OpName (%\\d+) \"pc\""_s);
    const QString member = capture(u"OpMemberName %\\d+ (\\d+) \"params\""_s);
    QHash<QString, int> constants;
    static const QRegularExpression kConstant(u"(%\\d+) = OpConstant %\\d+ (\\d+)$"_s,
                                              QRegularExpression::MultilineOption);
    auto matches = kConstant.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        constants.insert(match.captured(1), match.captured(2).toInt());
    }
    const QRegularExpression chain(u"OpAccessChain %\\d+ "_s + block + u" (%\\d+) (%\\d+)$"_s,
                                   QRegularExpression::MultilineOption);
    matches = chain.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        if (constants.value(match.captured(1), -1) != member.toInt())
            continue;
        if (constants.contains(match.captured(2)))
            found.slotIndices.insert(constants.value(match.captured(2)));
        else
            found.indexesParamsDynamically = true;
    }
}

Interface interfaceOf(const QString &module)
{
    Interface found;
    reflect(module, found);
    disassemble(module, found);
    return found;
}

QSet<int> upTo(int count)
{
    QSet<int> numbers;
    for (int i = 0; i < count; ++i)
        numbers.insert(i);
    return numbers;
}

} // namespace

class TestExampleSpirv : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void sourcesCompileWithoutAWarning_data();
    void sourcesCompileWithoutAWarning();
    void componentInTheDocumentCompiles();
    void everySourceHasItsModule();
    void modulesAgreeWithTheManifest_data();
    void modulesAgreeWithTheManifest();

private:
    const Run &compiled(const QString &path);
    QString compiledModule(const QString &path) const;
    const Interface &declaredBy(const QString &component);

    QTemporaryDir m_modules;
    QHash<QString, Run> m_compiled;
    QHash<QString, Interface> m_declared;
};

// Each source is compiled once for all tests, and not optimized.
const Run &TestExampleSpirv::compiled(const QString &path)
{
    if (!m_compiled.contains(path)) {
        const QString stage = path.endsWith(u".vert") ? u"vert"_s : u"frag"_s;
        m_compiled.insert(path,
                          run(u"glslangValidator"_s,
                              {u"-V"_s, u"-S"_s, stage, path, u"-o"_s, compiledModule(path)}));
    }
    return m_compiled[path];
}

QString TestExampleSpirv::compiledModule(const QString &path) const
{
    return m_modules.filePath(QFileInfo(path).fileName() + u".spv"_s);
}

void TestExampleSpirv::sourcesCompileWithoutAWarning_data()
{
    QTest::addColumn<QString>("path");
    const QFileInfoList files =
            QDir(kShadersDir + u"/vulkan/components"_s).entryInfoList(QDir::Files);
    for (const QFileInfo &file : files)
        QTest::newRow(qPrintable(file.fileName())) << file.filePath();
    QTest::newRow("fullscreen.vert") << kShadersDir + u"/vulkan/fullscreen.vert"_s;
}

void TestExampleSpirv::sourcesCompileWithoutAWarning()
{
    QFETCH(QString, path);
    QCOMPARE(compiled(path).out, path.toUtf8() + '\n');
    QCOMPARE(compiled(path).exitStatus, 0);
    const Run validated =
            run(u"spirv-val"_s, {u"--target-env"_s, u"vulkan1.1"_s, compiledModule(path)});
    QCOMPARE(validated.out, "");
    QCOMPARE(validated.exitStatus, 0);
}

void TestExampleSpirv::componentInTheDocumentCompiles()
{
    const QString text =
            QString::fromUtf8(readFile(QStringLiteral(SOURCE_DIR "/docs/components.md")));
    const QString component = text.section(u"A new component, in ten lines"_s, 1, 1)
                                      .section(u"```glsl\n"_s, 1, 1)
                                      .section(u"```"_s, 0, 0);
    QCOMPARE(component.count(u'\n'), 10);
    writeFile(u"vulkan/components/negative.slang"_s, component.toUtf8());
    QVERIFY(QFile::link(kShadersDir + u"/vulkan/include"_s, u"vulkan/include"_s));
    const QString path = u"vulkan/components/negative.slang"_s;
    QCOMPARE(compiled(path).out, path.toUtf8() + '\n');
    QCOMPARE(interfaceOf(compiledModule(path)).slotIndices, QSet<int>({0}));
}

void TestExampleSpirv::everySourceHasItsModule()
{
    QStringList expected = {u"fullscreen.vert.spv"_s};
    const QFileInfoList files =
            QDir(kShadersDir + u"/vulkan/components"_s).entryInfoList(QDir::Files);
    for (const QFileInfo &file : files)
        expected.append(file.completeBaseName() + u".frag.spv"_s);
    expected.sort();
    QStringList modules = QDir(kSpirvDir).entryList({u"*.spv"_s}, QDir::Files);
    modules.sort();
    QCOMPARE(modules, expected);
}

// What the component's source declares, and that no image of its module is another: an optimized
// one may lack what is not read. Presets share components, so each is looked at once.
const Interface &TestExampleSpirv::declaredBy(const QString &component)
{
    if (!m_declared.contains(component)) {
        QString source = kShadersDir + u"/vulkan/components/"_s + component;
        source += QFile::exists(source + u".slang"_s) ? u".slang"_s : u".frag"_s;
        if (compiled(source).exitStatus != 0)
            qFatal("%s: %s", qPrintable(component), compiled(source).out.constData());
        const Interface declared = interfaceOf(compiledModule(source));
        Interface built;
        reflect(kSpirvDir + u'/' + component + u".frag.spv"_s, built);
        if (!declared.bindings.contains(built.bindings))
            qFatal("%s: the module has other images", qPrintable(component));
        m_declared.insert(component, declared);
    }
    return m_declared[component];
}

void TestExampleSpirv::modulesAgreeWithTheManifest_data()
{
    QTest::addColumn<const PresetEntry *>("preset");
    for (const PresetEntry &preset : kPresets) {
        const QString name = QFileInfo(QString::fromUtf8(preset.presetQrcPath)).baseName();
        if (isTested(name))
            QTest::newRow(qUtf8Printable(name)) << &preset;
    }
}

void TestExampleSpirv::modulesAgreeWithTheManifest()
{
    QFETCH(const PresetEntry *, preset);
    for (int i = 0; i < preset->passCount; ++i) {
        const PassEntry &pass = preset->passes[i];
        const QString module = modulePath(pass.fragmentSpirvResource);
        QVERIFY2(QFile::exists(module), qPrintable(module));
        QVERIFY(QFile::exists(modulePath(pass.vertexSpirvResource)));

        const Interface &found =
                declaredBy(QFileInfo(QString::fromLatin1(pass.fragmentSpirvResource)).baseName());
        const QByteArray where = pass.debugName;
        QVERIFY2(found.imageCount == pass.sampledInputCount, where.constData());
        QVERIFY2(found.bindings == upTo(pass.sampledInputCount), where.constData());
        QVERIFY2(!found.indexesParamsDynamically, where.constData());
        // Each slot that the manifest fills is read, and none beyond.
        QVERIFY2(found.slotIndices == upTo(pass.paramCount), where.constData());
        QVERIFY2(found.pushConstantSize <= 128, where.constData());
    }
}

QTEST_GUILESS_MAIN(TestExampleSpirv)
#include "tst_ExampleSpirv.moc"
