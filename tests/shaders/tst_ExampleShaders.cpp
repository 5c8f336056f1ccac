#include <FirstPartyPresets.h>

#include "TestSupport.h"

#include <QRegularExpression>
#include <QSet>

using namespace Qt::StringLiterals;
using namespace FirstPartyPresetSource;

// The sources of the components: each is used, and names its slots as they are.

namespace {

const QString kShadersDir = QStringLiteral(EXAMPLE_SHADERS_DIR);

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

QTEST_APPLESS_MAIN(TestExampleShaders)
#include "tst_ExampleShaders.moc"
