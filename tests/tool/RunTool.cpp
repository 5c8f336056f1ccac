#include "RunTool.h"

#include "PresetTables.h"

#include <sys/prctl.h>

#include <linux/capability.h>
#include <sanitizer/asan_interface.h>
#include <unistd.h>

#include <vector>

using namespace Qt::StringLiterals;

QString toolPath()
{
    return QStringLiteral(RENDER_GRAPH_COMPILE);
}

Run run(const QStringList &arguments, const Prepare &prepare)
{
    QProcess process;
    if (prepare)
        prepare(process);
    start(process, arguments);
    return finish(process);
}

Run compile(const QString &shadersDir, const QString &out, const Prepare &prepare)
{
    return run({u"--shaders-dir"_s, shadersDir, u"--out"_s, out}, prepare);
}

void start(QProcess &process, const QStringList &arguments)
{
    process.start(toolPath(), arguments);
}

Run finish(QProcess &process)
{
    if (process.state() != QProcess::NotRunning)
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

std::function<void()> executeTool(const QByteArrayList &arguments)
{
    std::vector<char *> words;
    for (const QByteArray &argument : arguments)
        words.push_back(const_cast<char *>(argument.constData()));
    words.push_back(nullptr);
    // Until execv() the child may share the parent's memory: it changes nothing there, and leaves
    // none of its stack forbidden to touch.
    return [arguments, words] {
        if constexpr (kIsSanitized)
            __asan_handle_no_return();
        ::execv(RENDER_GRAPH_COMPILE, words.data());
        ::_exit(127);
    };
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

QByteArray retired(const QByteArray &end, const QString &shadersDir)
{
    QByteArray lines;
    for (const PresetTableRow &preset : presetTable("presets")) {
        const QByteArray name = preset.text("name");
        if (name == end)
            return lines;
        if (preset.text("presetExtension") == "glslp"
            && !QFile::exists(shadersDir + u'/' + QString::fromLatin1(name) + u".glslp"_s)) {
            lines += "render-graph-compile: preset '" + name
                    + "' has no .glslp source on disk (retired) -- skipping drift check, using "
                    + preset.text("valueOverrideCount") + " hand-authored value override(s)\n";
        }
    }
    return lines;
}
