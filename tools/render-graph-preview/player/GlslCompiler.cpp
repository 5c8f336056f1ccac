#include "GlslCompiler.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QScopeGuard>

#include <glslang/Public/ResourceLimits.h>
#include <glslang/Public/ShaderLang.h>
#include <glslang/SPIRV/GlslangToSpv.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kMaxIncludeDepth = 32; // stops a file that includes itself

std::optional<std::string> contentOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return content.toStdString();
}

class Includer : public glslang::TShader::Includer
{
public:
    explicit Includer(QStringList &files) : m_files(files) { }

    IncludeResult *includeLocal(const char *header, const char *includer,
                                std::size_t depth) override
    {
        if (depth > kMaxIncludeDepth)
            return nullptr;
        m_directories.resize(qsizetype(depth - 1));
        m_directories.append(QFileInfo(QFile::decodeName(includer)).path());
        for (qsizetype i = m_directories.size(); i-- > 0;) {
            const QString path =
                    QDir::cleanPath(QDir(m_directories.at(i)).filePath(QFile::decodeName(header)));
            m_files.append(path);
            if (const std::optional<std::string> content = contentOf(path)) {
                auto *const kept = new std::string(*content);
                return new IncludeResult(QFile::encodeName(path).toStdString(), kept->data(),
                                         kept->size(), kept);
            }
        }
        return nullptr;
    }

    void releaseInclude(IncludeResult *result) override
    {
        if (result == nullptr)
            return;
        delete static_cast<std::string *>(result->userData);
        delete result;
    }

private:
    QStringList &m_files;
    QStringList m_directories; // of the current chain of includes, outermost first
};

// The compiler's errors without its prefix and summary. Errors without a line number get the file's
// name.
QString errorsOf(const QString &path, const char *log)
{
    static const QRegularExpression kPlace(u"^.+:\\d+: "_s);
    QStringList errors;
    const QStringList lines = QString::fromLocal8Bit(log).split(u'\n', Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        if (!line.startsWith("ERROR: "_L1) || line.contains(" compilation errors. "_L1)
            || line.contains("compilation terminated"_L1))
            continue;
        const QString text = line.sliced(7).simplified();
        errors.append(kPlace.match(text).hasMatch() ? text : path + ": "_L1 + text);
    }
    return errors.isEmpty() ? path + ": does not compile"_L1 : errors.join(u'\n');
}

} // namespace

bool compileGlsl(const QString &path, ShaderStage stage, QByteArray &spirv, QStringList &files,
                 QString &error)
{
    [[maybe_unused]] static const bool isInitialized = glslang::InitializeProcess();
    static const auto finalize = qScopeGuard([] { glslang::FinalizeProcess(); });

    files.append(path);
    const std::optional<std::string> source = contentOf(path);
    if (!source) {
        error = path + ": cannot be read"_L1;
        return false;
    }

    const EShLanguage language = stage == ShaderStage::Vertex ? EShLangVertex : EShLangFragment;
    const QByteArray name = QFile::encodeName(path);
    const char *const text = source->data();
    const int size = int(source->size());
    const char *const nameText = name.constData();
    glslang::TShader shader(language);
    shader.setStringsWithLengthsAndNames(&text, &size, &nameText, 1);
    shader.setEnvInput(glslang::EShSourceGlsl, language, glslang::EShClientVulkan, 100);
    shader.setEnvClient(glslang::EShClientVulkan, glslang::EShTargetVulkan_1_0);
    shader.setEnvTarget(glslang::EShTargetSpv, glslang::EShTargetSpv_1_0);
    const auto messages = EShMessages(EShMsgSpvRules | EShMsgVulkanRules);
    Includer includer(files);
    if (!shader.parse(GetDefaultResources(), 100, false, messages, includer)) {
        error = errorsOf(path, shader.getInfoLog());
        return false;
    }

    glslang::TProgram program;
    program.addShader(&shader);
    if (!program.link(messages) || !program.mapIO()) {
        error = errorsOf(path, program.getInfoLog());
        return false;
    }
    std::vector<unsigned int> words;
    spv::SpvBuildLogger logger;
    glslang::SpvOptions options;
    glslang::GlslangToSpv(*program.getIntermediate(language), words, &logger, &options);
    spirv = QByteArray(reinterpret_cast<const char *>(words.data()),
                       qsizetype(words.size() * sizeof(words.front())));
    return true;
}
