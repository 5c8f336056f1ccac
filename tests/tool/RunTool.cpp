#include "RunTool.h"

using namespace Qt::StringLiterals;

Run run(const QStringList &arguments, const Prepare &prepare)
{
    QProcess process;
    if (prepare)
        prepare(process);
    QStringList command = process.arguments() + QStringList(QStringLiteral(RENDER_GRAPH_COMPILE));
    if (!process.program().isEmpty())
        command.prepend(process.program());
    command += arguments;
    process.start(command.takeFirst(), command);
    process.waitForFinished(-1);

    Run result = {.exitStatus = -1,
                  .out = process.readAllStandardOutput(),
                  .err = process.readAllStandardError(),
                  .signal = 0};
    if (process.error() == QProcess::FailedToStart)
        result.err += process.errorString().toUtf8();
    else if (process.exitStatus() == QProcess::CrashExit)
        result.signal = process.exitCode();
    else
        result.exitStatus = process.exitCode();
    return result;
}

Run compile(const QString &shadersDir, const QString &out, const Prepare &prepare)
{
    return run({u"--shaders-dir"_s, shadersDir, u"--out"_s, out}, prepare);
}

Prepare under(const QString &faults)
{
    return [faults](QProcess &process) {
        process.setProgram(QStringLiteral(UNDER_FAULTS));
        process.setArguments(faults.split(u' ') + QStringList(u"--"_s));
    };
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

QByteArray retired(const QByteArray &end, const QString &shadersDir)
{
    QByteArray lines;
    for (const auto &preset : declaredPresets()) {
        const QString name = preset[u"name"_s];
        if (name.toLatin1() == end)
            return lines;
        if (preset[u"presetExtension"_s] == "glslp"_L1
            && !QFile::exists(shadersDir + u'/' + name + u".glslp"_s)) {
            lines += "render-graph-compile: preset '" + name.toLatin1()
                    + "' has no .glslp source on disk (retired) -- skipping drift check, using "
                    + preset[u"valueOverrideCount"_s].toLatin1()
                    + " hand-authored value override(s)\n";
        }
    }
    return lines;
}
