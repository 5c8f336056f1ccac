#include "RunTool.h"

#include <sys/prctl.h>

#include <linux/capability.h>

using namespace Qt::StringLiterals;

Run run(const QStringList &arguments, const Prepare &prepare)
{
    QProcess process;
    if (prepare)
        prepare(process);
    process.start(QStringLiteral(RENDER_GRAPH_COMPILE), arguments);
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit)
        return {-1, process.readAllStandardOutput(),
                process.readAllStandardError() + process.errorString().toUtf8()};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

Run compile(const QString &shadersDir, const QString &out, const Prepare &prepare)
{
    return run({u"--shaders-dir"_s, shadersDir, u"--out"_s, out}, prepare);
}

void obeyPermissions(QProcess &process)
{
    process.setChildProcessModifier([] {
        ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
        ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
    });
}

void copyExampleShaders(const QString &to)
{
    QProcess copy;
    copy.start(u"cp"_s, {u"-r"_s, QStringLiteral(EXAMPLE_SHADERS_DIR), to});
    if (!copy.waitForFinished(-1) || copy.exitCode() != 0)
        qFatal("cannot copy the example shaders");
}

QString component(const char *name)
{
    return u"shaders/vulkan/components/"_s + QString::fromLatin1(name);
}

void replaceText(const QString &path, const QByteArray &before, const QByteArray &after)
{
    QByteArray text = readFile(path);
    if (!text.contains(before))
        qFatal("%s does not contain %s", qPrintable(path), before.constData());
    writeFile(path, text.replace(before, after));
}
