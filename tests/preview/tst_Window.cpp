#include <ParameterPanel.h>
#include <PictureView.h>
#include <TestSupport.h>
#include <Window.h>

#include <FirstPartyPresets.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProcess>
#include <QSlider>
#include <QToolButton>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPatience = 600000; // for a busy machine with a software device

void copyDirectory(const QString &from, const QString &to)
{
    QDir().mkpath(to);
    for (const QFileInfo &entry :
         QDir(from).entryInfoList(QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot)) {
        const QString target = to + u'/' + entry.fileName();
        if (entry.isDir())
            copyDirectory(entry.filePath(), target);
        else
            QFile::copy(entry.filePath(), target);
    }
}

} // namespace

// The window as it is, on Qt's offscreen platform: a preset, drawn small.
class TestWindow : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void aSliderChangesThePicture();
    void aSavedFileShows_data();
    void aSavedFileShows();
    void aBrokenComponentKeepsThePicture();
    void copiedOverridesAreRows();
    void copiedOverridesCompile();
    void overrideRows();
    void valuesAreReset();
    void theFilterHidesParameters();
    void framesGoOnAndStop();
    void passesAreShown();
    void picturesAreCompared();
    void hdrIsToneMappedAndLabelled();
    void aSourceThatCannotBeRead();
    void closingWhileDrawing();

private:
    // A window on a copy of the example shaders, with its first frame, of 64x48.
    std::unique_ptr<Window> open(const QString &preset);
    // What is shown once nothing is being drawn any more.
    static QImage settled(Window &window);
};

std::unique_ptr<Window> TestWindow::open(const QString &preset)
{
    copyDirectory(QStringLiteral(EXAMPLE_SHADERS_DIR), u"shaders"_s);
    auto window = std::make_unique<Window>(u"shaders"_s, QString(), preset);
    window->show();
    window->findChild<QComboBox *>(u"source"_s)->setCurrentText(u"scene-160x144"_s);
    auto *const sizes = window->findChild<QComboBox *>(u"size"_s);
    sizes->addItem(u"64x48"_s, QSize(64, 48));
    sizes->setCurrentText(u"64x48"_s);
    const auto isDrawn = [&window] {
        return window->session().frame() && window->session().frame()->image.height() == 48;
    };
    if (!QTest::qWaitFor(isDrawn, kPatience))
        qFatal("no frame: %s", qPrintable(window->session().message()));
    return window;
}

QImage TestWindow::settled(Window &window)
{
    if (!QTest::qWaitFor([&window] { return !window.session().isBusy(); }, kPatience))
        qFatal("a frame never ends");
    return window.session().frame()->image;
}

void TestWindow::aSliderChangesThePicture()
{
    const auto window = open(u"dmg-lcd"_s);
    const QImage before = settled(*window);
    auto *const slider = window->findChild<QSlider *>(u"DMG_TINT.slider"_s);
    slider->setFocus();
    QTest::keyClick(slider, Qt::Key_Home);
    QCOMPARE(window->findChild<QDoubleSpinBox *>(u"DMG_TINT.number"_s)->text(), u"0.0"_s);
    const QImage after = settled(*window);
    QCOMPARE(after.size(), before.size());
    QVERIFY(after != before);
    QTest::keyClick(slider, Qt::Key_End);
    QCOMPARE(settled(*window), before);
}

void TestWindow::aSavedFileShows_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<bool>("isRemovedFirst");

    const QByteArray red = "fragColor = vec4(1.0, 0.0, 0.0, 1.0); }";
    const QString component = u"shaders/vulkan/components/stock.frag"_s;
    QTest::newRow("component, written in place") << component << QByteArray("}") << red << false;
    QTest::newRow("component, removed and written anew")
            << component << QByteArray("}") << red << true;
    QTest::newRow("include") << u"shaders/vulkan/include/component.glsl"_s
                             << QByteArray("layout(location = 0) out vec4 fragColor;")
                             << QByteArray("vec4 fragColor;\n"
                                           "layout(location = 0) out vec4 swallowed;")
                             << false;
}

void TestWindow::aSavedFileShows()
{
    QFETCH(const QString, path);
    QFETCH(const QByteArray, before);
    QFETCH(const QByteArray, after);
    QFETCH(const bool, isRemovedFirst);

    const auto window = open(u"stock"_s);
    const QImage first = settled(*window);
    const QByteArray content = readFile(path);
    QVERIFY(content.contains(before));
    QByteArray changed = content;
    changed.replace(before, after);
    if (isRemovedFirst) {
        QFile::remove(path);
        QTRY_VERIFY_WITH_TIMEOUT(!window->session().message().isEmpty(), kPatience);
    }
    writeFile(path, changed);
    QTRY_VERIFY_WITH_TIMEOUT(settled(*window) != first, kPatience);
    QCOMPARE(window->session().message(), QString());
    // And again: a file that was gone is still watched.
    writeFile(path, content);
    QTRY_COMPARE_WITH_TIMEOUT(settled(*window), first, kPatience);
}

void TestWindow::aBrokenComponentKeepsThePicture()
{
    const auto window = open(u"stock"_s);
    const QImage first = settled(*window);
    const auto *const message = window->findChild<QLabel *>(u"message"_s);
    QVERIFY(!message->isVisible());
    const QString path = u"shaders/vulkan/components/stock.frag"_s;
    const QByteArray content = readFile(path);
    writeFile(path, "#version 450\nvoid main() { oops; }\n");
    QTRY_COMPARE_WITH_TIMEOUT(
            message->text(),
            u"shaders/vulkan/components/stock.frag:2: 'oops' : undeclared identifier"_s, kPatience);
    QVERIFY(message->isVisible());
    QCOMPARE(settled(*window), first);
    // What does not depend on the component still works.
    window->findChild<QComboBox *>(u"source"_s)->setCurrentText(u"card-160x144"_s);
    QTRY_VERIFY_WITH_TIMEOUT(settled(*window) != first, kPatience);
    QVERIFY(message->isVisible());

    QByteArray repaired = content;
    writeFile(path, repaired.replace("}", "fragColor = vec4(0.0, 1.0, 0.0, 1.0); }"));
    QTRY_COMPARE_WITH_TIMEOUT(settled(*window).pixel(5, 5), qRgb(0, 255, 0), kPatience);
    QVERIFY(!message->isVisible());
}

void TestWindow::overrideRows()
{
    // Every row that stands in the table.
    const QByteArray table =
            readFile(QStringLiteral(SOURCE_DIR "/tools/render-graph-compile/FirstPartyPresets.h"));
    for (const auto &preset : FirstPartyPresetSource::kPresets) {
        for (const auto &row : valueOverridesOf(preset)) {
            const QByteArray text = overrideRow(QLatin1StringView(row.id), row.value).toUtf8();
            QVERIFY2(table.contains('\n' + text), text.constData());
        }
    }
    QCOMPARE(overrideRow(u"a"_s, 100.0F), u"    {.id = \"a\", .value = 100.0F},\n"_s);
    QCOMPARE(overrideRow(u"b"_s, -0.15F), u"    {.id = \"b\", .value = -0.15F},\n"_s);
    QCOMPARE(overrideRow(u"c"_s, 0.000002F), u"    {.id = \"c\", .value = 0.000002F},\n"_s);
    QCOMPARE(overrideRow(u"d"_s, 4.188482F), u"    {.id = \"d\", .value = 4.188482F},\n"_s);
}

void TestWindow::copiedOverridesAreRows()
{
    const auto window = open(u"gba-lcd"_s);
    auto *const copy = window->findChild<QAction *>(u"copyOverrides"_s);
    copy->trigger();
    QCOMPARE(QApplication::clipboard()->text(), QString());

    // One step of 0.05 from the tuned 0.55, one by one, a number as typed, and the tuned value.
    QTest::keyClick(window->findChild<QSlider *>(u"lcd_diffuse.slider"_s), Qt::Key_Right);
    auto *const number = window->findChild<QDoubleSpinBox *>(u"ghost_rise.number"_s);
    number->selectAll();
    QTest::keyClicks(number, u"0.1234"_s);
    QTest::keyClick(number, Qt::Key_Return);
    window->session().setValue(u"ghost_fall"_s, 0.521F);
    copy->trigger();
    QCOMPARE(QApplication::clipboard()->text(),
             u"    {.id = \"ghost_rise\", .value = 0.1234F},\n"
             "    {.id = \"lcd_diffuse\", .value = 0.6F},\n"_s);
}

void TestWindow::copiedOverridesCompile()
{
    const auto window = open(u"gba-lcd"_s);
    for (const PresetParamMeta &parameter : window->session().parameters())
        window->session().setValue(parameter.id,
                                   parameter.initialValue == parameter.max ? parameter.min
                                                                           : parameter.max);
    window->findChild<QAction *>(u"copyOverrides"_s)->trigger();
    const QByteArray rows = QApplication::clipboard()->text().toUtf8();
    QCOMPARE(rows.count('\n'), window->session().parameters().size());
    writeFile(u"pasted.cpp"_s,
              "#include <PresetDeclarations.h>\n"
              "namespace FirstPartyPresetSource {\n"
              "inline constexpr ValueOverride kPasted[] = {\n"
                      + rows + "};\n}\n");
    QProcess compiler;
    compiler.start(QStringLiteral(CXX_COMPILER),
                   {u"-std=c++20"_s, u"-fsyntax-only"_s, u"-Wall"_s, u"-Werror"_s,
                    u"-I" SOURCE_DIR "/tools/render-graph-compile"_s, u"pasted.cpp"_s});
    QVERIFY(compiler.waitForFinished(-1));
    QCOMPARE(compiler.readAllStandardError(), QByteArray());
    QCOMPARE(compiler.exitCode(), 0);
}

void TestWindow::valuesAreReset()
{
    const auto window = open(u"gba-lcd"_s);
    Session &session = window->session();
    session.setValue(u"lcd_diffuse"_s, 0.1F);
    session.setValue(u"ghost_rise"_s, 0.1F);
    window->findChild<QToolButton *>(u"lcd_diffuse.reset"_s)->click();
    QCOMPARE(session.overrides(), u"    {.id = \"ghost_rise\", .value = 0.1F},\n"_s);
    QCOMPARE(window->findChild<QDoubleSpinBox *>(u"lcd_diffuse.number"_s)->text(), u"0.55"_s);
    window->findChild<QAction *>(u"resetAll"_s)->trigger();
    QCOMPARE(session.overrides(), QString());
    QCOMPARE(window->findChild<QDoubleSpinBox *>(u"ghost_rise.number"_s)->text(), u"0.706"_s);
}

void TestWindow::theFilterHidesParameters()
{
    const auto window = open(u"gba-lcd"_s);
    window->findChild<QLineEdit *>(u"filter"_s)->setText(u"APERTURE_X"_s);
    QVERIFY(window->findChild<QSlider *>(u"lcd_aperture_x.slider"_s)->isVisible());
    QVERIFY(!window->findChild<QSlider *>(u"lcd_aperture_y.slider"_s)->isVisible());
}

void TestWindow::framesGoOnAndStop()
{
    const auto window = open(u"stock"_s);
    Session &session = window->session();
    QCOMPARE(session.frame()->number, 0);
    session.step();
    settled(*window);
    QCOMPARE(session.frame()->number, 1);
    session.setRunning(true);
    QTRY_VERIFY_WITH_TIMEOUT(session.frame()->number >= 4, kPatience);
    session.setRunning(false);
    settled(*window);
    const int stopped = session.frame()->number;
    QTest::qWait(200);
    session.resetAll();
    settled(*window);
    QCOMPARE(session.frame()->number, stopped);
}

void TestWindow::passesAreShown()
{
    const auto window = open(u"dmg-lcd"_s);
    auto *const strip = window->findChild<QListWidget *>(u"strip"_s);
    QCOMPARE(strip->count(), 6);
    QCOMPARE(strip->item(1)->text().section(u'\n', 0, 1), u"1 dmg-ghost\n160x144 RGBA16F"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!strip->item(1)->icon().isNull(), kPatience);
    strip->setCurrentRow(1);
    QCOMPARE(settled(*window).size(), QSize(160, 144));
    QCOMPARE(window->session().frame()->pass, 1);
    auto *const view = window->findChild<PictureView *>();
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Right);
    QVERIFY(window->findChild<QLabel *>(u"pixel"_s)->text().startsWith(u"(1, 0): "_s));
    // Another preset has other passes: its last one is shown.
    window->findChild<QComboBox *>(u"preset"_s)->setCurrentText(u"stock"_s);
    QTRY_COMPARE_WITH_TIMEOUT(strip->count(), 2, kPatience);
    settled(*window);
    QCOMPARE(window->session().frame()->pass, 1);
    QCOMPARE(window->session().frame()->components,
             (QStringList{u"stock"_s, u"hdr-color-boost"_s}));
}

void TestWindow::picturesAreCompared()
{
    const auto window = open(u"dmg-lcd"_s);
    auto *const comparison = window->findChild<QComboBox *>(u"comparison"_s);
    comparison->setCurrentIndex(1);
    settled(*window);
    QCOMPARE(window->session().frame()->compared.size(), QSize(160, 144));
    comparison->setCurrentIndex(2);
    const QImage tuned = settled(*window);
    QCOMPARE(window->session().frame()->compared, tuned);
    window->session().setValue(u"DMG_TINT"_s, 0.0F);
    QVERIFY(settled(*window) != tuned);
    QCOMPARE(window->session().frame()->compared, tuned);
}

void TestWindow::hdrIsToneMappedAndLabelled()
{
    const auto window = open(u"stock"_s);
    const QImage sdr = settled(*window);
    QVERIFY(!window->session().frame()->isToneMapped);
    auto *const headroom = window->findChild<QDoubleSpinBox *>(u"headroom"_s);
    headroom->setValue(4.0);
    const QImage hdr = settled(*window);
    QVERIFY(window->session().frame()->isToneMapped);
    QVERIFY(hdr != sdr);
    headroom->setValue(0.0);
    settled(*window);
    QVERIFY(!window->session().frame()->isToneMapped);
}

void TestWindow::aSourceThatCannotBeRead()
{
    const auto window = open(u"stock"_s);
    const QImage first = settled(*window);
    ViewSettings view = window->session().view();
    view.source = u"none.png"_s;
    window->session().setView(view);
    QCOMPARE(settled(*window), first);
    QCOMPARE(window->session().message(),
             u"cannot read source picture 'none.png': File not found; 'list' names the test "
             "pictures"_s);
}

void TestWindow::closingWhileDrawing()
{
    auto window = open(u"crt-consumer"_s);
    window->findChild<QComboBox *>(u"size"_s)->setCurrentText(u"1440x1080"_s);
    window->session().setRunning(true);
    QVERIFY(window->session().isBusy());
    window->close();
    window.reset();
}

QTEST_MAIN(TestWindow)
#include "tst_Window.moc"
