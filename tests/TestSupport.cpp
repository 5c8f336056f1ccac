#include "TestSupport.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return file.readAll();
}

void copyExampleShaders(const QString &to)
{
    const Run copy =
            runProgram(u"cp"_s, {u"-r"_s, QStringLiteral(SOURCE_DIR "/examples/shaders"), to});
    if (copy.exitStatus != 0)
        qFatal("cannot copy the example shaders: %s", copy.err.constData());
}

Run runProgram(const QString &program, const QStringList &arguments,
               const std::function<void(QProcess &)> &prepare)
{
    QProcess process;
    if (prepare)
        prepare(process);
    process.start(program, arguments);
    process.waitForFinished(-1);
    if (process.error() == QProcess::FailedToStart)
        qFatal("cannot run %s", qPrintable(program));
    return {.exitStatus = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            .out = process.readAllStandardOutput(),
            .err = process.readAllStandardError()};
}

QByteArray firstDifference(const QByteArray &actual, const QByteArray &expected)
{
    if (actual == expected)
        return {};
    const QList<QByteArray> actualLines = actual.split('\n');
    const QList<QByteArray> expectedLines = expected.split('\n');
    qsizetype index = 0;
    while (index < std::min(actualLines.size(), expectedLines.size())
           && actualLines[index] == expectedLines[index])
        ++index;
    const auto shown = [index](const QList<QByteArray> &lines) {
        constexpr int kCount = 3;
        const QList<QByteArray> rest = lines.mid(index, kCount);
        return rest.isEmpty() ? QByteArray("  (nothing more)") : "  " + rest.join("\n  ");
    };
    return "first difference in line " + QByteArray::number(index + 1) + "\nexpected:\n"
            + shown(expectedLines) + "\nactual:\n" + shown(actualLines);
}

QList<QHash<QString, QString>> declaredPresets()
{
    static const QRegularExpression kField(uR"re(^  (\w+) = "?(.*?)"?$)re"_s,
                                           QRegularExpression::MultilineOption);
    const QByteArray golden =
            readFile(QStringLiteral(SOURCE_DIR "/tests/presets/golden/presets.txt"));
    QList<QHash<QString, QString>> presets;
    for (const QString &block : QString::fromUtf8(golden).split(u"\n\n"_s)) {
        if (!block.startsWith("preset "_L1))
            continue;
        QHash<QString, QString> fields;
        for (auto matches = kField.globalMatch(block); matches.hasNext();) {
            const QRegularExpressionMatch match = matches.next();
            fields.insert(match.captured(1), match.captured(2));
        }
        presets.append(fields);
    }
    return presets;
}

QStringList declaredPresetNames()
{
    QStringList names;
    for (const auto &preset : declaredPresets())
        names.append(preset[u"name"_s]);
    return names;
}

bool isTested(const QString &preset)
{
    const QString only = qEnvironmentVariable("TESTED_PRESET");
    return only.isEmpty() || only == preset;
}

void enableValidation(const QString &layerFile, const QString &directory)
{
    // Newer layers warn of the older name, and the older ones do not know the newer.
    const bool isNewer = readFile(layerFile).contains("\"validate_sync\"");
    const QDir settings(directory);
    writeFile(settings.filePath(QStringLiteral("vk_layer_settings.txt")),
              "khronos_validation.debug_action = VK_DBG_LAYER_ACTION_LOG_MSG\n"
              "khronos_validation.report_flags = error,warn,perf\n"
              "khronos_validation.log_filename = "
                      + settings.filePath(QStringLiteral("messages")).toUtf8() + '\n'
                      + (isNewer ? "khronos_validation.validate_sync = true\n"
                                   "khronos_validation.syncval_submit_time_validation = true\n"
                                 : "khronos_validation.enables = "
                                   "VK_VALIDATION_FEATURE_ENABLE_SYNCHRONIZATION_VALIDATION_EXT,"
                                   "VALIDATION_CHECK_ENABLE_SYNCHRONIZATION_VALIDATION_QUEUE_"
                                   "SUBMIT\n"));
    qputenv("VK_LAYER_SETTINGS_PATH", directory.toUtf8());
    qputenv("VK_INSTANCE_LAYERS", "VK_LAYER_KHRONOS_validation");
}

QByteArray utf16WithMark(const QByteArray &latin1, bool isBigEndian)
{
    QByteArray bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : latin1)
        bytes += isBigEndian ? QByteArray(1, '\0') + c : QByteArray(1, c) + '\0';
    return bytes;
}

void TestInEmptyDirectory::init()
{
    m_previous = QDir::currentPath();
    m_directory.emplace();
    if (!m_directory->isValid() || !QDir::setCurrent(m_directory->path()))
        qFatal("no temporary directory");
}

void TestInEmptyDirectory::cleanup()
{
    QDir::setCurrent(m_previous);
    m_directory.reset();
}
