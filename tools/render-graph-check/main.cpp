// Holds the compiled modules against the passes that draw with them: the graphs of all presets are
// compiled as the tool does.

#include "ComponentSource.h"
#include "PresetCompiler.h"

#include <FirstPartyPresets.h>

#include <renderer/ModuleCheck.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <cstdio>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using FirstPartyPresetSource::PresetDecl;

class ModuleChecker
{
public:
    ModuleChecker(QString shadersDir, QString modulesDir)
        : m_shadersDir(std::move(shadersDir)),
          m_modulesDir(std::move(modulesDir))
    {
    }

    void check(const VulkanRenderGraph &graph)
    {
        for (int pass = 0; pass < graph.passes.size(); ++pass) {
            const VulkanRenderGraph::Pass &drawn = graph.passes[pass];
            QString error;
            const std::optional<QByteArray> fragment = content(drawn.fragmentSpirvResource);
            if (fragment && !VulkanGraph::checkFragmentModule(*fragment, graph, pass, error))
                report(componentFile(drawn.debugName), error);
            const std::optional<QByteArray> vertex = content(drawn.vertexSpirvResource);
            if (vertex && !VulkanGraph::checkVertexModule(*vertex, error))
                report(QFileInfo(drawn.vertexSpirvResource).completeBaseName(), error);
        }
    }

    // One line each, in the order in which they were found.
    const QStringList &errors() const
    {
        return m_errors;
    }

private:
    // Empty if the module cannot be read, which is reported. Passes share modules, so each file is
    // read once.
    std::optional<QByteArray> content(const QString &resource)
    {
        const QString name = QFileInfo(resource).fileName();
        const auto known = m_modules.constFind(name);
        if (known != m_modules.cend())
            return *known;
        std::optional<QByteArray> spirv;
        QFile file(QDir(m_modulesDir).filePath(name));
        if (file.open(QFile::ReadOnly))
            spirv = file.readAll();
        else
            report(name, u"cannot be read"_s);
        m_modules.insert(name, spirv);
        return spirv;
    }

    QString componentFile(const QString &component) const
    {
        const QString slangPath = slangComponentPath(m_shadersDir, component);
        return QFileInfo(QFile::exists(slangPath) ? slangPath
                                                  : fragComponentPath(m_shadersDir, component))
                .fileName();
    }

    void report(const QString &file, const QString &text)
    {
        const QString line = file + ": "_L1 + text;
        if (!m_errors.contains(line))
            m_errors.append(line);
    }

    QString m_shadersDir;
    QString m_modulesDir;
    QHash<QString, std::optional<QByteArray>> m_modules; // by file name
    QStringList m_errors;
};

} // namespace

int main(int argc, char *argv[])
{
    // Comes first because it removes Qt's own arguments from argv.
    const QCoreApplication application(argc, argv);

    QString shadersDir;
    QString modulesDir;
    for (int i = 1; i + 1 < argc; i += 2) {
        const QString option = QString::fromLocal8Bit(argv[i]);
        const QString value = QString::fromLocal8Bit(argv[i + 1]);
        if (option == "--shaders-dir"_L1)
            shadersDir = value;
        else if (option == "--modules"_L1)
            modulesDir = value;
    }
    if (shadersDir.isEmpty() || modulesDir.isEmpty()) {
        std::fputs("usage: render-graph-check --shaders-dir <path> --modules <path>\n", stderr);
        return 1;
    }

    ModuleChecker checker(shadersDir, modulesDir);
    for (const PresetDecl &decl : FirstPartyPresetSource::kPresets) {
        VulkanRenderGraph graph;
        if (!compilePreset(shadersDir, decl, graph))
            return 1;
        checker.check(graph);
    }
    for (const QString &error : checker.errors())
        std::fputs(qPrintable(error + u'\n'), stderr);
    return checker.errors().isEmpty() ? 0 : 1;
}
