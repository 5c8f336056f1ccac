#include <Command.h>
#include <DrawingSupport.h>
#include <ParameterPanel.h>
#include <PictureView.h>
#include <TestSupport.h>
#include <Tuning.h>
#include <Window.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QColorSpace>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QMimeData>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSettings>
#include <QSlider>
#include <QStatusBar>
#include <QTextDocumentFragment>
#include <QTimer>
#include <QToolButton>
#include <QToolTip>
#include <QUndoGroup>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>

#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPatience = 600000; // for a busy machine with a software device

} // namespace

// The real window on Qt's offscreen platform, with small pictures.
class TestWindow : public TestInEmptyDirectory
{
    Q_OBJECT

private Q_SLOTS:
    void sliderChangesThePicture();
    void savedFileIsReloaded_data();
    void savedFileIsReloaded();
    void brokenComponentKeepsThePicture();
    void copiedOverridesAreRows();
    void copiedOverridesCompile();
    void numbersAreLiterals();
    void dragIsUndoneInOneStep();
    void dragEndsWithItsSlider();
    void valuesAreKept();
    void newTunedValueIsReported();
    void resetValueIsNotPinned();
    void doubleClickResetsTheValue();
    void switchIsACheckBox();
    void namedChoicesAreAList();
    void choicesAreInTheDescription_data();
    void choicesAreInTheDescription();
    void parametersAreGrouped_data();
    void parametersAreGrouped();
    void groupsAreFolded();
    void tapeIsRewound();
    void windowFitsTheScreen();
    void settingsAreKept();
    void lastPresetIsOpened_data();
    void lastPresetIsOpened();
    void commandOpensValues();
    void valuesAreSavedAndOpened();
    void valuesAreReset();
    void filterHidesParameters();
    void framesRunAndStop();
    void passesAreShown();
    void picturesAreCompared();
    void viewsDrawNoFrame();
    void chosenThumbnailKeepsItsColors();
    void stateIsKept();
    void codeBeforeTheSaveIsCompared();
    void mouseZoomsAndMoves();
    void costsAreShown();
    void hdrIsToneMappedAndLabelled();
    void unreadableSourceKeepsThePicture();
    void lostDeviceIsOpenedAgain();
    void missingDriverIsReported();
    void droppedPictureBecomesTheSource();
    void pictureIsSaved();
    void keyboardReachesEverything();
    void fieldsFitIntoASmallWindow();
    void stretchIsShown();
    void sequenceIsTheSource();
    void clickOpensTheEditor_data();
    void clickOpensTheEditor();
    void keysAreListed();
    void surroundIsDark();
    void tabMovesThroughTheParameters();
    void picturePixelsAreScreenPixels();
    void closingWhileDrawing();
    void closingWithAKeyDown();
    void framesFollowTheSpeed_data();
    void framesFollowTheSpeed();
    void slowFrameIsAnnouncedAndAbandoned();
    void missingMemoryIsReported();
    void otherDropsAreIgnored();
    void brokenPresetIsNotShown();
    void presetIsChosenBackAtOnce();
    void sourceFileIsReloaded();
    void includeBelowMissingDirectoriesIsFound();
    void numberOutOfRangeIsReported();
    void numbersKeepTheirDigits();
    void handleIsAtItsMark();
    void wheelNeedsTheFocus_data();
    void wheelNeedsTheFocus();
    void missingDisplayIsReported_data();
    void missingDisplayIsReported();

private:
    // A copy of the example shaders. The application's settings are beside it.
    static QString copiedShaders();
    // A window on such a copy that draws at 64x48.
    static std::unique_ptr<Window> openWithoutFrame(const QString &preset);
    // The same, with its first frame.
    static std::unique_ptr<Window> open(const QString &preset);
    // Runs the command with copied shaders. When its window has drawn, looks at it and closes it.
    static bool runCommand(const QStringList &arguments, const std::function<void(Window &)> &look);
    // The picture that is shown, without what is around it.
    static QImage shownPicture(Window &window);
    // Waits until all requests are drawn, and returns that.
    static QImage waitForImage(Window &window);
};

QString TestWindow::copiedShaders()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QDir::currentPath());
    copyExampleShaders();
    return u"shaders"_s;
}

std::unique_ptr<Window> TestWindow::openWithoutFrame(const QString &preset)
{
    auto window = std::make_unique<Window>(copiedShaders(), QString(), preset);
    window->show();
    window->findChild<QComboBox *>(u"source"_s)->setCurrentText(u"scene-160x144"_s);
    auto *const sizes = window->findChild<QComboBox *>(u"size"_s);
    sizes->addItem(u"64x48"_s, QSize(64, 48));
    sizes->setCurrentText(u"64x48"_s);
    window->findChild<QComboBox *>(u"zoom"_s)->setCurrentText(u"1:1"_s);
    return window;
}

std::unique_ptr<Window> TestWindow::open(const QString &preset)
{
    auto window = openWithoutFrame(preset);
    const auto isDrawn = [&window] {
        return window->session().frame() && window->session().frame()->size.height() == 48
                && !window->session().isBusy();
    };
    if (!QTest::qWaitFor(isDrawn, kPatience))
        qFatal("no frame: %s", qPrintable(window->session().message()));
    return window;
}

bool TestWindow::runCommand(const QStringList &arguments, const std::function<void(Window &)> &look)
{
    QTimer poll;
    connect(&poll, &QTimer::timeout, &poll, [&look] {
        for (QWidget *const widget : QApplication::topLevelWidgets()) {
            auto *const window = qobject_cast<Window *>(widget);
            if (window == nullptr || !window->isVisible() || window->session().isBusy())
                continue;
            look(*window);
            window->close();
        }
    });
    poll.start(10);
    QCommandLineParser parser;
    parser.addOptions(kWindowCommand.options());
    parser.parse(QStringList(u"window"_s) + arguments);
    QString error;
    return kWindowCommand.run({parser, u"shaders"_s, QString(), parser.positionalArguments()},
                              error);
}

QImage TestWindow::shownPicture(Window &window)
{
    const FrameResult &frame = *window.session().frame();
    return frame.image.copy(frame.state.placement(frame.size) & frame.image.rect());
}

QImage TestWindow::waitForImage(Window &window)
{
    if (!QTest::qWaitFor([&window] { return !window.session().isBusy(); }, kPatience))
        qFatal("a frame never ends");
    return shownPicture(window);
}

void TestWindow::sliderChangesThePicture()
{
    const auto window = open(u"dmg-lcd"_s);
    const QImage before = waitForImage(*window);
    auto *const slider = window->findChild<QSlider *>(u"DMG_TINT.slider"_s);
    slider->setFocus();
    QTest::keyClick(slider, Qt::Key_Home);
    QCOMPARE(window->findChild<QDoubleSpinBox *>(u"DMG_TINT.number"_s)->text(), u"0.0"_s);
    const QImage after = waitForImage(*window);
    QCOMPARE(after.size(), before.size());
    QVERIFY(after != before);
    QTest::keyClick(slider, Qt::Key_End);
    QCOMPARE(waitForImage(*window), before);
}

void TestWindow::savedFileIsReloaded_data()
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
                             << QByteArray("layout(location = 0) in vec2 texCoord;")
                             << QByteArray("layout(location = 0) in vec2 given;\n"
                                           "#define texCoord (0.5 * given)")
                             << false;
}

void TestWindow::savedFileIsReloaded()
{
    QFETCH(const QString, path);
    QFETCH(const QByteArray, before);
    QFETCH(const QByteArray, after);
    QFETCH(const bool, isRemovedFirst);

    const auto window = open(u"stock"_s);
    const QImage first = waitForImage(*window);
    const QByteArray content = readFile(path);
    QVERIFY(content.contains(before));
    QByteArray changed = content;
    changed.replace(before, after);
    if (isRemovedFirst) {
        QFile::remove(path);
        QTRY_VERIFY_WITH_TIMEOUT(!window->session().message().isEmpty(), kPatience);
    }
    QElapsedTimer timer;
    timer.start();
    writeFile(path, changed);
    QTRY_VERIFY_WITH_TIMEOUT(waitForImage(*window) != first, kPatience);
    qInfo("shown %lld ms after it was saved", timer.elapsed());
    QCOMPARE(window->session().message(), QString());
    // A file that was deleted and written again is still watched.
    writeFile(path, content);
    QTRY_COMPARE_WITH_TIMEOUT(waitForImage(*window), first, kPatience);
}

void TestWindow::brokenComponentKeepsThePicture()
{
    const auto window = open(u"stock"_s);
    const QImage first = waitForImage(*window);
    const auto *const message = window->findChild<QLabel *>(u"message"_s);
    QVERIFY(!message->isVisible());
    const QString path = u"shaders/vulkan/components/stock.frag"_s;
    const QByteArray content = readFile(path);
    writeFile(path, "#version 450\nvoid main() { oops; }\n");
    QTRY_COMPARE_WITH_TIMEOUT(
            window->session().message(),
            u"shaders/vulkan/components/stock.frag:2: 'oops' : undeclared identifier"_s, kPatience);
    QVERIFY(message->isVisible());
    QCOMPARE(waitForImage(*window), first);
    // Other changes still work.
    window->findChild<QComboBox *>(u"source"_s)->setCurrentText(u"card-160x144"_s);
    QTRY_VERIFY_WITH_TIMEOUT(waitForImage(*window) != first, kPatience);
    QVERIFY(message->isVisible());

    QByteArray repaired = content;
    writeFile(path, repaired.replace("}", "fragColor = vec4(0.0, 1.0, 0.0, 1.0); }"));
    QTRY_COMPARE_WITH_TIMEOUT(waitForImage(*window).pixel(5, 5), qRgb(0, 255, 0), kPatience);
    QVERIFY(!message->isVisible());
}

void TestWindow::numbersAreLiterals()
{
    QCOMPARE(numberText(100.0F), u"100.0"_s);
    QCOMPARE(numberText(-0.15F), u"-0.15"_s);
    QCOMPARE(numberText(0.000002F), u"0.000002"_s);
    QCOMPARE(numberText(4.188482F), u"4.188482"_s);
}

void TestWindow::copiedOverridesAreRows()
{
    const auto window = open(u"gba-lcd"_s);
    auto *const copy = window->findChild<QAction *>(u"copyOverrides"_s);
    copy->trigger();
    QCOMPARE(QApplication::clipboard()->text(), QString());

    // By a step of the slider, by typing, and to the tuned value. The last has had no row.
    QTest::keyClick(window->findChild<QSlider *>(u"lcd_diffuse.slider"_s), Qt::Key_Right);
    auto *const number = window->findChild<QDoubleSpinBox *>(u"ghost_rise.number"_s);
    number->selectAll();
    QTest::keyClicks(number, u"0.1234"_s);
    QTest::keyClick(number, Qt::Key_Return);
    window->session().setValue(u"ghost_fall"_s, 0.1F);
    window->session().setValue(u"ghost_fall"_s, 0.521F);
    window->session().setValue(u"LCD_COLOR_PROFILE"_s, 0.0F);
    copy->trigger();
    QCOMPARE(QApplication::clipboard()->text(),
             u"    {.id = \"ghost_rise\", .value = 0.1234F},\n"
             "    {.id = \"ghost_fall\", .value = 0.521F},\n"
             "    {.id = \"ghost_hdr_speed\", .value = 1.0F},\n"
             "    {.id = \"lcd_aperture_x\", .value = 0.88F},\n"
             "    {.id = \"lcd_aperture_y\", .value = 0.96F},\n"
             "    {.id = \"lcd_diffuse\", .value = 0.6F},\n"
             "    {.id = \"LCD_COLOR_PROFILE\", .value = 0.0F},\n"_s);
}

// The text replaces the declared one, for every preset. Rows that were not changed stay as they
// are.
void TestWindow::copiedOverridesCompile()
{
    copyExampleShaders();
    QString header = QString::fromUtf8(
            readFile(QStringLiteral(SOURCE_DIR "/tools/render-graph-compile/FirstPartyPresets.h")));
    QString checks;
    const QStringList names = presetNames();
    for (const QString &name : names) {
        QString error;
        PresetOnDisk preset;
        QVERIFY2(loadPreset(u"shaders"_s, name, preset, error), qPrintable(error));
        if (preset.parameters.isEmpty())
            continue;
        const PresetParamMeta &last = preset.parameters.last();
        const float value = last.initialValue == last.max ? last.min : last.max;
        const QString text = declaredText(preset, {{last.id, value}});

        const QString glslp = u"shaders/"_s + name + u".glslp"_s;
        if (QFile::exists(glslp)) {
            const QByteArray before = readFile(glslp);
            const auto values = before.indexOf('\n', before.indexOf("parameters = ")) + 1;
            QCOMPARE(text.count(u'\n'), before.sliced(values).count('\n'));
            writeFile(glslp, before.first(values) + text.toUtf8());
            QVERIFY2(loadPreset(u"shaders"_s, name, preset, error), qPrintable(error));
            QCOMPARE(preset.parameters.last().initialValue, value);
            continue;
        }
        static const QRegularExpression kArray(u"\\.valueOverrides = (\\w+)"_s);
        const auto row = header.indexOf(u"{.name = \"%1\""_s.arg(name));
        const auto rowEnd = header.indexOf(u"},\n"_s, row);
        const QString array = kArray.match(header.mid(row, rowEnd - row)).captured(1);
        if (array.isEmpty()) {
            const QString declaration = text.section(u"\n\n"_s, 0, 0);
            header.insert(rowEnd, u",\n"_s + text.section(u"\n\n"_s, 1).chopped(1));
            header.insert(header.indexOf(u"inline constexpr PresetDecl kPresets"_s),
                          declaration + u'\n');
            checks += u"static_assert(kPresets[%1].valueOverrideCount == 1);\n"_s.arg(
                    names.indexOf(name));
            continue;
        }
        const auto first = header.indexOf(u'\n', header.indexOf(array + u"[] = {"_s)) + 1;
        const auto end = header.indexOf(u"};"_s, first);
        const QString before = header.mid(first, end - first);
        int changed = 0;
        for (const QString &line : before.split(u'\n'))
            changed += text.contains(line) ? 0 : 1;
        QVERIFY2(changed <= 1, qPrintable(text));
        QVERIFY(text != before);
        header.replace(first, before.size(), text);
    }
    QCOMPARE(checks.count(u'\n'), 1); // no-pixels
    writeFile(u"pasted/FirstPartyPresets.h"_s, header.toUtf8());
    writeFile(u"pasted.cpp"_s,
              "#include <FirstPartyPresets.h>\n"
              "namespace FirstPartyPresetSource {\n"
                      + checks.toUtf8() + "}\n");
    const Run compiler = runProgram(
            QStringLiteral(CXX_COMPILER),
            {u"-std=c++20"_s, u"-fsyntax-only"_s, u"-Wall"_s, u"-Werror"_s, u"-Ipasted"_s,
             u"-I" SOURCE_DIR "/tools/render-graph-compile"_s, u"pasted.cpp"_s});
    QCOMPARE(compiler.err, QByteArray());
    QCOMPARE(compiler.exitStatus, 0);
}

void TestWindow::dragIsUndoneInOneStep()
{
    const auto window = open(u"gba-lcd"_s);
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    const auto *const number = window->findChild<QDoubleSpinBox *>(u"ghost_rise.number"_s);
    auto *const slider = window->findChild<QSlider *>(u"ghost_rise.slider"_s);
    slider->setSliderDown(true);
    for (const int step : {3, 4, 5})
        slider->setSliderPosition(100 * step);
    slider->setSliderDown(false);
    QCOMPARE(number->text(), u"0.3"_s);
    QTest::keyClick(slider, Qt::Key_Right);
    window->findChild<QAction *>(u"resetAll"_s)->trigger();
    for (const QString &text : {u"0.35"_s, u"0.3"_s, u"0.706"_s, u"0.706"_s}) {
        QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(number->text(), text);
    }
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(number->text(), u"0.3"_s);
}

// Then later changes are steps of their own.
void TestWindow::dragEndsWithItsSlider()
{
    const auto window = open(u"gba-lcd"_s);
    window->findChild<QSlider *>(u"ghost_rise.slider"_s)->setSliderDown(true);
    auto *const presets = window->findChild<QComboBox *>(u"preset"_s);
    presets->setCurrentText(u"stock"_s);
    presets->setCurrentText(u"gba-lcd"_s);
    waitForImage(*window);
    window->session().setValue(u"ghost_rise"_s, 0.25F);
    window->session().setValue(u"ghost_rise"_s, 0.35F);
    window->session().undoGroup().undo();
    QCOMPARE(window->findChild<QDoubleSpinBox *>(u"ghost_rise.number"_s)->text(), u"0.25"_s);
}

void TestWindow::valuesAreKept()
{
    auto window = open(u"gba-lcd"_s);
    window->session().setValue(u"ghost_rise"_s, 0.25F);
    auto *const presets = window->findChild<QComboBox *>(u"preset"_s);
    presets->setCurrentText(u"rewind"_s);
    waitForImage(*window);
    QCOMPARE(window->session().overrides(), QString());
    presets->setCurrentText(u"gba-lcd"_s);
    const QImage changed = waitForImage(*window);
    const auto rise = [&window] {
        return window->findChild<QDoubleSpinBox *>(u"ghost_rise.number"_s)->text();
    };
    QCOMPARE(rise(), u"0.25"_s);
    window.reset();
    window = open(u"gba-lcd"_s);
    QCOMPARE(rise(), u"0.25"_s);
    QCOMPARE(waitForImage(*window), changed);

    window->findChild<QAction *>(u"forgetAll"_s)->trigger();
    QCOMPARE(rise(), u"0.706"_s);
    window->session().undoGroup().undo();
    QCOMPARE(rise(), u"0.25"_s);
    window->session().undoGroup().redo();
    window = open(u"gba-lcd"_s);
    QCOMPARE(rise(), u"0.706"_s);
}

void TestWindow::newTunedValueIsReported()
{
    const auto window = open(u"rewind"_s);
    const auto label = [&window] { return window->findChild<QLabel *>(u"wiggle.label"_s)->text(); };
    window->session().setValue(u"wiggle"_s, 1.0F);
    QVERIFY(!label().contains(u"tuned"_s));
    QByteArray glslp = readFile(u"shaders/rewind.glslp"_s);
    writeFile(u"shaders/rewind.glslp"_s, glslp.replace("wiggle = \"3.0\"", "wiggle = \"2.0\""));
    QTRY_VERIFY_WITH_TIMEOUT(
            label().endsWith(u"<br>This was tuned to 3.0, and is tuned to 2.0 now."_s), kPatience);
    QCOMPARE(window->findChild<QDoubleSpinBox *>(u"wiggle.number"_s)->text(), u"1.0"_s);
    window->findChild<QToolButton *>(u"wiggle.reset"_s)->click();
    QVERIFY(!label().contains(u"tuned"_s));
    QCOMPARE(window->findChild<QDoubleSpinBox *>(u"wiggle.number"_s)->text(), u"2.0"_s);
}

// A reset value follows the declared one.
void TestWindow::resetValueIsNotPinned()
{
    const auto window = open(u"rewind"_s);
    window->session().setValue(u"wiggle"_s, 1.0F);
    window->findChild<QToolButton *>(u"wiggle.reset"_s)->click();
    QByteArray glslp = readFile(u"shaders/rewind.glslp"_s);
    writeFile(u"shaders/rewind.glslp"_s, glslp.replace("wiggle = \"3.0\"", "wiggle = \"2.0\""));
    QTRY_COMPARE_WITH_TIMEOUT(window->findChild<QDoubleSpinBox *>(u"wiggle.number"_s)->text(),
                              u"2.0"_s, kPatience);
}

void TestWindow::doubleClickResetsTheValue()
{
    const auto window = open(u"gba-lcd"_s);
    window->session().setValue(u"ghost_rise"_s, 0.25F);
    QTest::mouseDClick(window->findChild<QLabel *>(u"ghost_rise.label"_s), Qt::LeftButton);
    QCOMPARE(window->findChild<QDoubleSpinBox *>(u"ghost_rise.number"_s)->text(), u"0.706"_s);
}

void TestWindow::switchIsACheckBox()
{
    const auto window = open(u"gba-lcd"_s);
    const auto has = [&window](const QString &name) {
        return window->findChild<QWidget *>(name) != nullptr;
    };
    QVERIFY(!has(u"LCD_COLOR_PROFILE.slider"_s));
    QVERIFY(!has(u"LCD_COLOR_PROFILE.number"_s));
    QVERIFY(!has(u"ghost_rise.check"_s));
    auto *const check = window->findChild<QCheckBox *>(u"LCD_COLOR_PROFILE.check"_s);
    QVERIFY(check->isChecked());
    const QImage before = waitForImage(*window);
    check->click();
    QVERIFY(waitForImage(*window) != before);
    window->session().resetAll();
    QVERIFY(check->isChecked());
}

void TestWindow::namedChoicesAreAList()
{
    const auto window = open(u"crt-arcade"_s);
    auto *const choice = window->findChild<QComboBox *>(u"mask_type.choice"_s);
    QVERIFY(choice != nullptr);
    QVERIFY(window->findChild<QWidget *>(u"mask_type.slider"_s) == nullptr);
    QVERIFY(window->findChild<QWidget *>(u"mask_duty.choice"_s) == nullptr);
    QCOMPARE(choice->currentText(), u"slots"_s);
    QTest::keyClick(choice, Qt::Key_Up);
    QCOMPARE(choice->currentText(), u"dots"_s);
    QVERIFY(window->session().overrides().contains(u"{.id = \"mask_type\", .value = 1.0F}"_s));
    window->session().resetAll();
    QCOMPARE(choice->currentText(), u"slots"_s);
}

void TestWindow::choicesAreInTheDescription_data()
{
    QTest::addColumn<QString>("description");
    QTest::addColumn<float>("min");
    QTest::addColumn<float>("step");
    QTest::addColumn<QStringList>("choices");
    QTest::newRow("numbered") << u"Mask Type (0 grille, 1 dots, 2 slots)"_s << 0.0F << 1.0F
                              << QStringList({u"grille"_s, u"dots"_s, u"slots"_s});
    QTest::newRow("from 1") << u"Mask Type (1 dots, 2 slots)"_s << 1.0F << 1.0F
                            << QStringList({u"dots"_s, u"slots"_s});
    QTest::newRow("slashes") << u"Phosphor Gamut (709/SMPTE-C/240 lines)"_s << 0.0F << 1.0F
                             << QStringList({u"709"_s, u"SMPTE-C"_s, u"240 lines"_s});
    QTest::newRow("a name is missing")
            << u"Mask Type (0 grille, 2 slots)"_s << 0.0F << 1.0F << QStringList();
    QTest::newRow("a name too many") << u"Mask Type (a/b/c/d)"_s << 0.0F << 1.0F << QStringList();
    QTest::newRow("half steps") << u"Mask Type (a/b/c)"_s << 0.0F << 0.5F << QStringList();
    QTest::newRow("not at the end") << u"Mask (a/b/c) Type"_s << 0.0F << 1.0F << QStringList();
    QTest::newRow("only one step") << u"Mask Type (dots)"_s << 2.0F << 1.0F << QStringList();
    QTest::newRow("none") << u"Mask Type"_s << 0.0F << 1.0F << QStringList();
}

void TestWindow::choicesAreInTheDescription()
{
    QFETCH(QString, description);
    QFETCH(float, min);
    QFETCH(float, step);
    QFETCH(QStringList, choices);
    QCOMPARE(choiceNames({.id = {},
                          .description = description,
                          .initialValue = 2.0F,
                          .defaultValue = 2.0F,
                          .min = min,
                          .max = 2.0F,
                          .step = step}),
             choices);
}

void TestWindow::parametersAreGrouped_data()
{
    QTest::addColumn<QString>("preset");
    QTest::addColumn<QStringList>("shown");
    // gba-subpixel has LCD_COLOR_PROFILE too.
    QTest::newRow("shared parameter")
            << u"gba-lcd"_s
            << QStringList({u"gba-color"_s, u"LCD_COLOR_PROFILE"_s, u"gba-ghost"_s, u"ghost_rise"_s,
                            u"ghost_fall"_s, u"ghost_hdr_speed"_s, u"gba-subpixel"_s,
                            u"lcd_aperture_x"_s, u"lcd_aperture_y"_s, u"lcd_diffuse"_s,
                            u"lcd_grid_contrast"_s, u"lcd_spill"_s});
    QTest::newRow("declared in another order")
            << u"crt-arcade"_s
            << QStringLiteral(
                       "crt-linearize crt_gamma_out gun_cutoff color_saturation desaturate "
                       "crt-abl abl_strength abl_current_limit "
                       "crt-drive color_temperature mono_warmth "
                       "crt-horizontal signal_bandwidth_mhz signal_active_us "
                       "crt-persistence persist_r persist_g persist_b "
                       "crt-scanline crt_white beam_min beam_max rgb_beam raster_lines "
                       "raster_offset "
                       "raster_interlace conv_rx conv_ry conv_bx conv_by barrel_distortion "
                       "overscan "
                       "mask_strength hdr_peak "
                       "crt-optics-down corner_radius "
                       "crt-halation-blur-h halation_sigma "
                       "crt-phosphor-tile mask_type mask_duty mask_edge "
                       "crt-screen phosphor_gamut halation_strength halation_wide black_floor "
                       "vignette_strength mask_pitch")
                       .split(u' ');
}

// The components are in the order of the passes, each with the parameters that it is the first to
// declare.
void TestWindow::parametersAreGrouped()
{
    QFETCH(QString, preset);
    QFETCH(QStringList, shown);
    const auto window = open(preset);
    QStringList texts;
    const QWidget *const rows =
            window->findChild<QToolButton *>(shown.first() + u".group"_s)->parentWidget();
    for (int i = 0; i < rows->layout()->count(); ++i) {
        const QWidget *const row = rows->layout()->itemAt(i)->widget();
        if (const auto *const header = qobject_cast<const QToolButton *>(row))
            texts.append(header->text());
        else if (row != nullptr)
            texts.append(row->findChild<QLabel *>()->objectName().section(u'.', 0, 0));
    }
    QCOMPARE(texts, shown);
}

void TestWindow::groupsAreFolded()
{
    const auto window = open(u"gba-lcd"_s);
    const auto isVisible = [&window](const QString &name) {
        return window->findChild<QWidget *>(name)->isVisible();
    };
    QVERIFY(isVisible(u"ghost_rise.slider"_s));
    QTest::keyClick(window->findChild<QToolButton *>(u"gba-ghost.group"_s), Qt::Key_Space);
    QVERIFY(!isVisible(u"ghost_rise.slider"_s));
    QVERIFY(isVisible(u"lcd_spill.slider"_s));
    // Also after another preset.
    auto *const presets = window->findChild<QComboBox *>(u"preset"_s);
    presets->setCurrentText(u"stock"_s);
    waitForImage(*window);
    presets->setCurrentText(u"gba-lcd"_s);
    waitForImage(*window);
    QVERIFY(!isVisible(u"ghost_rise.slider"_s));
    QVERIFY(isVisible(u"lcd_spill.slider"_s));
    // The filter opens the groups that have hits, and hides the others.
    auto *const filter = window->findChild<QLineEdit *>(u"filter"_s);
    filter->setText(u"rise"_s);
    QVERIFY(isVisible(u"ghost_rise.slider"_s));
    QVERIFY(!isVisible(u"gba-subpixel.group"_s));
    filter->clear();
    QVERIFY(!isVisible(u"ghost_rise.slider"_s));
    QVERIFY(isVisible(u"gba-subpixel.group"_s));
    window->findChild<QToolButton *>(u"gba-ghost.group"_s)->click();
    QVERIFY(isVisible(u"ghost_rise.slider"_s));
}

void TestWindow::tapeIsRewound()
{
    const auto window = open(u"rewind"_s);
    window->findChild<QComboBox *>(u"source"_s)->setCurrentText(u"card-160x144"_s);
    window->session().step();
    const QImage before = waitForImage(*window);
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    QTest::keyClick(window.get(), Qt::Key_F7);
    QVERIFY(waitForImage(*window) != before);
    QTest::keyClick(window.get(), Qt::Key_F7);
    QCOMPARE(waitForImage(*window), before);
}

// The offscreen screen has 800x800 pixels.
void TestWindow::windowFitsTheScreen()
{
    const Window window(copiedShaders(), QString(), u"stock"_s);
    QCOMPARE(window.size(), QSize(800, 800));
}

void TestWindow::settingsAreKept()
{
    QVERIFY(QImage(5, 4, QImage::Format_RGB32).save(u"source.png"_s));
    {
        Window window(copiedShaders(), QString(), u"rewind"_s);
        window.show();
        window.resize(780, 700); // inside the offscreen screen
        window.findChild<QComboBox *>(u"zoom"_s)->setCurrentText(u"3:1"_s);
        window.findChild<QComboBox *>(u"source"_s)->setCurrentText(u"card-160x144"_s);
        window.close();
    }
    const Window window(copiedShaders(), QString(), u"stock"_s);
    QCOMPARE(window.size(), QSize(780, 700));
    QCOMPARE(window.findChild<QComboBox *>(u"zoom"_s)->currentText(), u"3:1"_s);
    QCOMPARE(window.findChild<QComboBox *>(u"source"_s)->currentText(), u"card-160x144"_s);
}

void TestWindow::lastPresetIsOpened_data()
{
    QTest::addColumn<QString>("last");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("preset");
    QTest::newRow("last") << u"rewind"_s << QStringList() << u"rewind"_s;
    QTest::newRow("given") << u"rewind"_s << QStringList(u"stock"_s) << u"stock"_s;
    QTest::newRow("gone") << u"paper"_s << QStringList() << u"crt-pvm"_s;
}

void TestWindow::lastPresetIsOpened()
{
    QFETCH(QString, last);
    QFETCH(QStringList, arguments);
    QFETCH(QString, preset);
    {
        Window window(copiedShaders(), QString(), last);
        window.close();
    }
    QString opened;
    QVERIFY(runCommand(arguments,
                       [&opened](Window &window) { opened = window.session().preset(); }));
    QCOMPARE(opened, preset);
}

void TestWindow::commandOpensValues()
{
    copiedShaders();
    writeFile(u"mine.glslp"_s, "parameters = \"smear\"\nsmear = \"0.25\"\n");
    QString opened;
    QVERIFY(runCommand({u"rewind"_s, u"--values"_s, u"mine.glslp"_s}, [&opened](Window &window) {
        opened = window.findChild<QDoubleSpinBox *>(u"smear.number"_s)->text();
    }));
    QCOMPARE(opened, u"0.25"_s);
}

void TestWindow::valuesAreSavedAndOpened()
{
    const auto window = open(u"rewind"_s);
    window->session().setValue(u"smear"_s, 0.25F);
    const auto answer = [&window](Qt::Key key) {
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        QTimer::singleShot(0, window.get(), [] {
            auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            auto *const name = dialog->findChild<QLineEdit *>(u"fileNameEdit"_s);
            name->setText(QDir().absoluteFilePath(u"mine.glslp"_s));
            QTest::keyClick(name, Qt::Key_Return);
        });
        QTest::keyClick(window.get(), key, Qt::ControlModifier | Qt::ShiftModifier);
    };
    answer(Qt::Key_S);
    QCOMPARE(readFile(u"mine.glslp"_s),
             "parameters = \"wiggle;smear;noiseAmount;lineNoise;tapeSpeed\"\n"
             "wiggle = \"3.0\"\n"
             "smear = \"0.25\"\n"
             "noiseAmount = \"0.15\"\n"
             "lineNoise = \"0.3\"\n"
             "tapeSpeed = \"1.0\"\n");
    window->session().resetAll();
    answer(Qt::Key_O);
    QCOMPARE(window->findChild<QDoubleSpinBox *>(u"smear.number"_s)->text(), u"0.25"_s);
    window->session().undoGroup().undo();
    QCOMPARE(window->findChild<QDoubleSpinBox *>(u"smear.number"_s)->text(), u"0.5"_s);
}

void TestWindow::valuesAreReset()
{
    const auto window = open(u"gba-lcd"_s);
    Session &session = window->session();
    session.setValue(u"lcd_diffuse"_s, 0.1F);
    session.setValue(u"ghost_rise"_s, 0.1F);
    window->findChild<QToolButton *>(u"lcd_diffuse.reset"_s)->click();
    QVERIFY(session.overrides().startsWith(u"    {.id = \"ghost_rise\", .value = 0.1F},\n"_s));
    QCOMPARE(window->findChild<QDoubleSpinBox *>(u"lcd_diffuse.number"_s)->text(), u"0.55"_s);
    window->findChild<QAction *>(u"resetAll"_s)->trigger();
    QCOMPARE(session.overrides(), QString());
    QCOMPARE(window->findChild<QDoubleSpinBox *>(u"ghost_rise.number"_s)->text(), u"0.706"_s);
}

void TestWindow::filterHidesParameters()
{
    const auto window = open(u"gba-lcd"_s);
    window->findChild<QLineEdit *>(u"filter"_s)->setText(u"APERTURE_X"_s);
    QVERIFY(window->findChild<QSlider *>(u"lcd_aperture_x.slider"_s)->isVisible());
    QVERIFY(!window->findChild<QSlider *>(u"lcd_aperture_y.slider"_s)->isVisible());
}

void TestWindow::framesRunAndStop()
{
    const auto window = open(u"stock"_s);
    Session &session = window->session();
    QCOMPARE(session.frame()->number, 0);
    session.step();
    waitForImage(*window);
    QCOMPARE(session.frame()->number, 1);
    session.setRunning(true);
    QTRY_VERIFY_WITH_TIMEOUT(session.frame()->number >= 4, kPatience);
    session.setRunning(false);
    waitForImage(*window);
    const int stopped = session.frame()->number;
    QTest::qWait(200);
    session.resetAll();
    waitForImage(*window);
    QCOMPARE(session.frame()->number, stopped);
}

void TestWindow::passesAreShown()
{
    const auto window = open(u"dmg-lcd"_s);
    auto *const strip = window->findChild<QListWidget *>(u"strip"_s);
    QCOMPARE(strip->count(), 6);
    QCOMPARE(strip->item(1)->text().section(u'\n', 0, 1), u"1 dmg-ghost\n160x144 RGBA16F"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!strip->item(5)->icon().isNull(), kPatience);
    // The last pass is selected and fully visible. Qt may scroll one pixel too little.
    QCOMPARE(strip->currentRow(), 5);
    const QRect sight = strip->viewport()->rect().adjusted(0, 0, 1, 0);
    QVERIFY(sight.contains(strip->visualItemRect(strip->item(5))));
    strip->setCurrentRow(1);
    QCOMPARE(waitForImage(*window).size(), QSize(160, 144));
    QCOMPARE(window->session().frame()->pass, 1);
    auto *const view = window->findChild<PictureView *>();
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Right);
    waitForImage(*window);
    QVERIFY(window->findChild<QLabel *>(u"pixel"_s)->text().startsWith(u"(1, 0): "_s));
    // For another preset, the last pass is shown.
    window->findChild<QComboBox *>(u"preset"_s)->setCurrentText(u"stock"_s);
    QTRY_COMPARE_WITH_TIMEOUT(strip->count(), 2, kPatience);
    waitForImage(*window);
    QCOMPARE(window->session().frame()->pass, 1);
    QCOMPARE(window->session().frame()->components,
             (QStringList{u"stock"_s, u"hdr-color-boost"_s}));
}

void TestWindow::picturesAreCompared()
{
    const auto window = open(u"dmg-lcd"_s);
    auto *const view = window->findChild<PictureView *>();
    auto *const comparison = window->findChild<QComboBox *>(u"comparison"_s);
    QTest::keyPress(view, Qt::Key_Space);
    QTest::keyRelease(view, Qt::Key_Space);
    const QImage tuned = waitForImage(*window);
    comparison->setCurrentText(u"tuned values (declared)"_s);
    window->session().setValue(u"DMG_TINT"_s, 0.0F);
    const QImage split = waitForImage(*window);
    const QImage current = [&] {
        comparison->setCurrentText(u"nothing"_s);
        return waitForImage(*window);
    }();
    QVERIFY(current != tuned);
    QCOMPARE(split.copy(0, 0, 32, 48), tuned.copy(0, 0, 32, 48));
    QCOMPARE(split.copy(34, 0, 30, 48), current.copy(34, 0, 30, 48));
    QCOMPARE(split.pixel(32, 5), qRgb(255, 255, 255));
    QCOMPARE(split.pixel(33, 5), qRgb(255, 255, 255));
}

// A frame that is drawn again starts its histories anew.
void TestWindow::viewsDrawNoFrame()
{
    const auto window = open(u"gba-lcd"_s);
    auto *const view = window->findChild<PictureView *>();
    const QImage settled = waitForImage(*window);
    window->session().step();
    const QImage moving = waitForImage(*window);
    QVERIFY(moving != settled);
    for (const Qt::Key key : {Qt::Key_E, Qt::Key_R, Qt::Key_F}) {
        QTest::keyClick(view, key);
        waitForImage(*window);
        QVERIFY(window->session().frame()->image != moving);
    }
    QTest::keyClick(view, Qt::Key_E, Qt::ShiftModifier);
    QTest::keyClick(view, Qt::Key_R);
    QTest::keyClick(view, Qt::Key_1);
    QCOMPARE(waitForImage(*window), moving);
}

void TestWindow::chosenThumbnailKeepsItsColors()
{
    QImage red(16, 12, QImage::Format_RGB32);
    red.fill(qRgb(255, 0, 0));
    QVERIFY(red.save(u"red.png"_s));
    const auto window = openWithoutFrame(u"stock"_s);
    ViewSettings settings = window->session().view();
    settings.source = u"red.png"_s;
    window->session().setView(settings);
    auto *const strip = window->findChild<QListWidget *>(u"strip"_s);
    const auto thumbnail = [strip](QIcon::Mode mode) {
        return strip->item(0)->icon().pixmap(strip->iconSize(), mode).toImage();
    };
    const auto isDrawn = [&] {
        return strip->count() > 0 && !strip->item(0)->icon().isNull()
                && thumbnail(QIcon::Normal).pixel(9, 9) == qRgb(255, 0, 0);
    };
    QTRY_VERIFY_WITH_TIMEOUT(isDrawn(), kPatience);
    QCOMPARE(thumbnail(QIcon::Selected).pixel(9, 9), qRgb(255, 0, 0));
    // In the shape of the picture, 64x48.
    QCOMPARE(thumbnail(QIcon::Normal).size(), QSize(128, 96) * window->devicePixelRatioF());
}

void TestWindow::stateIsKept()
{
    const auto window = open(u"dmg-lcd"_s);
    auto *const view = window->findChild<PictureView *>();
    window->session().setValue(u"DMG_TINT"_s, 0.5F);
    const QImage kept = waitForImage(*window);
    window->session().keepState();
    window->session().setValue(u"DMG_TINT"_s, 0.0F);
    const QImage current = waitForImage(*window);
    QVERIFY(current != kept);
    window->findChild<QComboBox *>(u"comparison"_s)->setCurrentText(u"A (kept)"_s);
    QCOMPARE(waitForImage(*window).copy(34, 0, 30, 48), current.copy(34, 0, 30, 48));
    QCOMPARE(window->session().frame()->comparedName, u"A (kept, dmg-lcd)"_s);
    QTest::keyPress(view, Qt::Key_Space);
    QCOMPARE(waitForImage(*window), kept);
    // While it is shown, frames are drawn from it, too.
    window->session().setValue(u"DMG_TINT"_s, 1.0F);
    QCOMPARE(waitForImage(*window), kept);
    // The key is released elsewhere.
    QFocusEvent leaving(QEvent::FocusOut);
    QApplication::sendEvent(view, &leaving);
    window->findChild<QComboBox *>(u"comparison"_s)->setCurrentText(u"nothing"_s);
    QVERIFY(waitForImage(*window) != current);
    window->findChild<QComboBox *>(u"comparison"_s)->setCurrentText(u"A (kept)"_s);
    QVERIFY(waitForImage(*window) != kept);
}

void TestWindow::codeBeforeTheSaveIsCompared()
{
    const auto window = open(u"stock"_s);
    const QImage before = waitForImage(*window);
    auto *const view = window->findChild<PictureView *>();
    window->findChild<QComboBox *>(u"comparison"_s)->setCurrentText(u"before the last save"_s);
    QTest::keyPress(view, Qt::Key_Space);
    QCOMPARE(waitForImage(*window), before);
    QCOMPARE(window->session().frame()->comparedName, u"before the last save: none yet"_s);
    QTest::keyRelease(view, Qt::Key_Space);
    const QString path = u"shaders/vulkan/components/stock.frag"_s;
    QByteArray content = readFile(path);
    writeFile(path, content.replace("}", "fragColor = vec4(1.0, 0.0, 0.0, 1.0); }"));
    QTRY_COMPARE_WITH_TIMEOUT(waitForImage(*window).pixel(60, 9), qRgb(255, 0, 0), kPatience);
    QCOMPARE(window->session().frame()->comparedName, u"before the last save"_s);
    QTest::keyPress(view, Qt::Key_Space);
    QCOMPARE(waitForImage(*window), before);
}

void TestWindow::mouseZoomsAndMoves()
{
    const auto window = open(u"stock"_s);
    auto *const view = window->findChild<PictureView *>();
    auto *const zooms = window->findChild<QComboBox *>(u"zoom"_s);
    zooms->setCurrentText(u"8:1"_s);
    window->findChild<QComboBox *>(u"size"_s)->setCurrentText(u"640x480"_s);
    waitForImage(*window);
    const auto texel = [&window] { return window->session().frame()->state.texel; };
    const auto move = [&](QEvent::Type type, QPointF to, Qt::MouseButton button) {
        QMouseEvent event(type, to, view->mapToGlobal(to), button, button, Qt::NoModifier);
        QApplication::sendEvent(view, &event);
        waitForImage(*window);
    };
    const QPointF pointer = view->rect().center();
    const QPointF right = pointer + QPointF(80.0, 0.0);
    move(QEvent::MouseMove, pointer, Qt::NoButton);
    const QPoint first = texel();
    // The pixel follows the pointer.
    move(QEvent::MouseButtonPress, pointer, Qt::LeftButton);
    move(QEvent::MouseMove, right, Qt::LeftButton);
    move(QEvent::MouseMove, right, Qt::NoButton);
    QCOMPARE(texel(), first);
    // The wheel zooms out there.
    for (const int half : {0, 1}) {
        QWheelEvent wheel(right, view->mapToGlobal(right), {}, {0, -60}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(view, &wheel);
        QCOMPARE(zooms->currentText(), half == 0 ? u"8:1"_s : u"6:1"_s);
    }
    waitForImage(*window);
    const QPointF pixels = right * view->devicePixelRatioF();
    const QPoint after = window->session().frame()->state.texelAt({640, 480}, pixels);
    QVERIFY((after - first).manhattanLength() <= 1);
}

void TestWindow::costsAreShown()
{
    const auto window = open(u"stock"_s);
    const auto text = [&window] { return window->findChild<QLabel *>(u"times"_s)->text(); };
    static const QRegularExpression kStill(
            u" \\| 1:1 \\| frame 0 \\| device \\d+\\.\\d ms \\| transfer \\d+\\.\\d ms \\| "
            "interface \\d+\\.\\d ms$"_s);
    QVERIFY2(text().contains(kStill), qPrintable(text()));
    window->session().setRunning(true);
    static const QRegularExpression kRunning(u" \\| frame \\d+ \\| \\d+\\.\\d a second \\| "_s);
    QTRY_VERIFY_WITH_TIMEOUT(text().contains(kRunning), kPatience);
}

void TestWindow::hdrIsToneMappedAndLabelled()
{
    const auto window = open(u"stock"_s);
    const QImage sdr = waitForImage(*window);
    QVERIFY(!window->session().frame()->isToneMapped);
    auto *const headroom = window->findChild<QDoubleSpinBox *>(u"headroom"_s);
    headroom->setValue(4.0);
    const QImage hdr = waitForImage(*window);
    QVERIFY(window->session().frame()->isToneMapped);
    QVERIFY(hdr != sdr);
    headroom->setValue(0.0);
    waitForImage(*window);
    QVERIFY(!window->session().frame()->isToneMapped);
}

void TestWindow::unreadableSourceKeepsThePicture()
{
    const auto window = open(u"stock"_s);
    const QImage first = waitForImage(*window);
    ViewSettings view = window->session().view();
    view.source = u"none.png"_s;
    window->session().setView(view);
    QCOMPARE(waitForImage(*window), first);
    QCOMPARE(window->session().message(),
             u"cannot read source picture 'none.png': File not found; 'list' names the test "
             "pictures"_s);
}

void TestWindow::lostDeviceIsOpenedAgain()
{
    qputenv("VK_LAYER_PATH", FAILING_DEVICE_DIR);
    qputenv("VK_INSTANCE_LAYERS", "VK_LAYER_TEST_failing");
    const auto restore = qScopeGuard([] {
        for (const char *const name : {"VK_LAYER_PATH", "VK_INSTANCE_LAYERS", "FAILING_CALL"})
            qunsetenv(name);
    });
    const auto window = open(u"stock"_s);
    const QImage first = waitForImage(*window);
    const auto *const message = window->findChild<QLabel *>(u"message"_s);
    QVERIFY(!message->isVisible());

    qputenv("FAILING_CALL", "vkQueueSubmit");
    window->findChild<QComboBox *>(u"source"_s)->setCurrentText(u"card-160x144"_s);
    QTRY_COMPARE_WITH_TIMEOUT(message->text(),
                              u"the Vulkan device was lost: start again, or choose another one"_s,
                              kPatience);
    QVERIFY(message->isVisible());
    QCOMPARE(waitForImage(*window), first);

    qunsetenv("FAILING_CALL");
    window->session().step();
    QVERIFY(waitForImage(*window) != first);
    QVERIFY(!message->isVisible());
}

// The message is the commands'. A driver that is installed later is found.
void TestWindow::missingDriverIsReported()
{
    static constexpr const char *kVariables[] = {"VK_ICD_FILENAMES", "VK_DRIVER_FILES"};
    for (const char *const name : kVariables)
        qputenv(name, "/nowhere");
    const auto restore = qScopeGuard([] {
        for (const char *const name : kVariables)
            qunsetenv(name);
    });
    const auto window = openWithoutFrame(u"stock"_s);
    const auto *const message = window->findChild<QLabel *>(u"message"_s);
    QTRY_VERIFY_WITH_TIMEOUT(message->isVisible(), kPatience);
    QVERIFY2(message->text().startsWith(u"no Vulkan device to draw on (Vulkan: vk"_s),
             qPrintable(message->text()));
    QVERIFY2(message->text().endsWith(u"reateInstance: ErrorIncompatibleDriver); "
                                      "install a driver (Debian: mesa-vulkan-drivers)"_s),
             qPrintable(message->text()));
    QVERIFY(!window->session().frame());

    for (const char *const name : kVariables)
        qunsetenv(name);
    window->session().step();
    QTRY_VERIFY_WITH_TIMEOUT(window->session().frame(), kPatience);
    QVERIFY(!message->isVisible());
}

void TestWindow::droppedPictureBecomesTheSource()
{
    QImage picture(5, 4, QImage::Format_RGB32);
    picture.fill(qRgb(0, 0, 255));
    QVERIFY(picture.save(u"blue.png"_s));
    const auto window = open(u"stock"_s);
    QMimeData data;
    QDragEnterEvent text({9, 9}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    text.ignore();
    QApplication::sendEvent(window.get(), &text);
    QVERIFY(!text.isAccepted());

    data.setUrls({QUrl::fromLocalFile(QFileInfo(u"blue.png"_s).absoluteFilePath())});
    QDragEnterEvent enter({9, 9}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(window.get(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop({9, 9}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &drop);
    QCOMPARE(waitForImage(*window).pixel(9, 9), qRgb(0, 0, 255));
    auto *const sources = window->findChild<QComboBox *>(u"source"_s);
    QCOMPARE(sources->currentText(), u"blue.png"_s);
    // Dropping it again does not add a second item.
    const int choices = sources->count();
    QDropEvent again({9, 9}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &again);
    QCOMPARE(sources->count(), choices);
}

void TestWindow::pictureIsSaved()
{
    const auto window = open(u"stock"_s);
    QImage shown = waitForImage(*window);
    // The dialog is modal, so a timer answers it.
    const auto saveAs = [&window](const QString &path) {
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        QTimer::singleShot(0, window.get(), [&path] {
            auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            auto *const name = dialog->findChild<QLineEdit *>(u"fileNameEdit"_s);
            name->setText(path);
            QTest::keyClick(name, Qt::Key_Return);
        });
        QTest::keyClick(window.get(), Qt::Key_S, Qt::ControlModifier);
    };
    saveAs(QDir().absoluteFilePath(u"saved.png"_s));
    waitForImage(*window);
    QImage saved(u"saved.png"_s);
    saved.setColorSpace({}); // compare pixels only
    shown.setColorSpace({});
    QCOMPARE(saved.convertToFormat(shown.format()), shown);

    // With HDR the file has the linear light, not the tone-mapped image.
    window->findChild<QDoubleSpinBox *>(u"headroom"_s)->setValue(4.0);
    waitForImage(*window);
    saveAs(QDir().absoluteFilePath(u"hdr.png"_s));
    waitForImage(*window);
    QCOMPARE(QImage(u"hdr.png"_s).depth(), 64);
    QCOMPARE(QImage(u"hdr.png"_s).text(u"Headroom"_s), u"4"_s);
}

void TestWindow::keyboardReachesEverything()
{
    const auto window = open(u"dmg-lcd"_s);
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    Session &session = window->session();
    waitForImage(*window);
    QTest::keyClick(window.get(), Qt::Key_F6);
    waitForImage(*window);
    QCOMPARE(session.frame()->number, 1);
    QTest::keyClick(window.get(), Qt::Key_F5);
    QTRY_VERIFY_WITH_TIMEOUT(session.frame()->number >= 3, kPatience);
    QTest::keyClick(window.get(), Qt::Key_F5);
    waitForImage(*window);
    const int stopped = session.frame()->number;
    QTest::qWait(100);
    QCOMPARE(session.frame()->number, stopped);

    session.setValue(u"DMG_TINT"_s, 0.5F);
    QTest::keyClick(window.get(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(QApplication::clipboard()->text().startsWith(
            u"    {.id = \"DMG_TINT\", .value = 0.5F},\n"_s));
    QTest::keyClick(window.get(), Qt::Key_R, Qt::ControlModifier);
    QCOMPARE(session.overrides(), QString());

    const auto focused = [] {
        const QWidget *const widget = QApplication::focusWidget();
        return widget == nullptr ? QString() : widget->objectName();
    };
    QTest::keyClick(window.get(), Qt::Key_F, Qt::ControlModifier);
    QCOMPARE(focused(), u"filter"_s);
    const std::pair<Qt::Key, QString> mnemonics[] = {
            {Qt::Key_P, u"preset"_s}, {Qt::Key_S, u"source"_s},     {Qt::Key_Z, u"size"_s},
            {Qt::Key_M, u"zoom"_s},   {Qt::Key_C, u"comparison"_s}, {Qt::Key_H, u"headroom"_s},
            {Qt::Key_D, u"speed"_s}};
    for (const auto &[key, name] : mnemonics) {
        QTest::keyClick(window.get(), key, Qt::AltModifier);
        QCOMPARE(focused(), name);
    }
    // The split line.
    auto *const view = window->findChild<PictureView *>();
    const QImage before = view->grab().toImage();
    window->findChild<QComboBox *>(u"comparison"_s)->setCurrentIndex(1);
    waitForImage(*window);
    const QImage middle = view->grab().toImage();
    QVERIFY(middle != before);
    QTest::keyClick(view, Qt::Key_BracketLeft);
    waitForImage(*window);
    QVERIFY(view->grab().toImage() != middle);
    QTest::keyClick(view, Qt::Key_BracketRight);
    waitForImage(*window);
    QCOMPARE(view->grab().toImage(), middle);
}

void TestWindow::fieldsFitIntoASmallWindow()
{
    copiedShaders();
    const QString longName = QString(100, u'x') + u".png"_s;
    QVERIFY(QImage(5, 4, QImage::Format_RGB32).save(longName));
    QSettings(kSettings, kSettings).setValue("source"_L1, longName);
    const auto window = open(u"stock"_s);
    window->resize(1024, 700);
    const QStringList fields = {u"preset"_s,     u"source"_s,   u"size"_s, u"zoom"_s,
                                u"comparison"_s, u"headroom"_s, u"speed"_s};
    for (const QString &name : fields) {
        const auto *const field = window->findChild<QWidget *>(name);
        QTRY_VERIFY2(field->isVisible(), qPrintable(name));
        QVERIFY2(field->visibleRegion().boundingRect() == field->rect(), qPrintable(name));
    }
    for (const QToolButton *const button : window->findChildren<QToolButton *>())
        QVERIFY(button->objectName() != "qt_toolbar_ext_button"_L1 || !button->isVisible());
    QCOMPARE(window->width(), 1024);
}

// Also below the picture and behind the thumbnails.
void TestWindow::surroundIsDark()
{
    const auto window = open(u"stock"_s);
    const auto *const strip = window->findChild<QListWidget *>(u"strip"_s);
    const QImage shown = window->grab().toImage();
    const auto colorAt = [&](QPoint inStrip) {
        return QColor(shown.pixel(strip->mapTo(window.get(), inStrip) * shown.devicePixelRatio()));
    };
    QCOMPARE(colorAt({9, -2}), QColor(24, 24, 24));
    QCOMPARE(colorAt({strip->width() - 9, 9}), QColor(24, 24, 24));
}

void TestWindow::stretchIsShown()
{
    const auto window = open(u"stock"_s);
    const auto *const stretch = window->findChild<QLabel *>(u"stretch"_s);
    QCOMPARE(stretch->text(), u"stretched from 10:9 to 4:3"_s);
    window->findChild<QComboBox *>(u"size"_s)->setCurrentText(u"as the view"_s);
    waitForImage(*window);
    QCOMPARE(stretch->text(), QString());
    window->findChild<QComboBox *>(u"size"_s)->setCurrentText(u"64x48"_s);
    window->findChild<QComboBox *>(u"source"_s)->setCurrentText(u"scene-320x240"_s);
    waitForImage(*window);
    QCOMPARE(stretch->text(), QString());
}

// Given to the command, then kept.
void TestWindow::sequenceIsTheSource()
{
    copiedShaders();
    QImage picture(5, 4, QImage::Format_RGB32);
    for (const auto &[name, color] :
         {std::pair(u"a-1.png"_s, Qt::red), std::pair(u"a-2.png"_s, Qt::blue)}) {
        picture.fill(color);
        QVERIFY(picture.save(name));
    }
    const auto look = [](Window &window) {
        QCOMPARE(window.findChild<QComboBox *>(u"source"_s)->currentText(), u"a-%d.png"_s);
        QCOMPARE(waitForImage(window).pixelColor(9, 9), QColor(Qt::red));
        window.session().step();
        QCOMPARE(waitForImage(window).pixelColor(9, 9), QColor(Qt::blue));
    };
    QVERIFY(runCommand({u"stock"_s, u"--source"_s, u"a-%d.png"_s}, look));
    // The next program may run in another directory.
    const QString kept = QSettings(kSettings, kSettings).value("source"_L1).toString();
    QCOMPARE(kept, QDir::currentPath() + u"/a-%d.png"_s);
    QVERIFY(runCommand({u"stock"_s}, look));
    // The files are watched.
    auto window = std::make_unique<Window>(u"shaders"_s, QString(), u"stock"_s);
    QCOMPARE(waitForImage(*window).pixelColor(9, 9), QColor(Qt::red));
    QVERIFY(picture.save(u"a-1.png"_s));
    QTRY_COMPARE_WITH_TIMEOUT(waitForImage(*window).pixelColor(9, 9), QColor(Qt::blue), kPatience);
}

void TestWindow::clickOpensTheEditor_data()
{
    QTest::addColumn<QByteArray>("visual");
    QTest::addColumn<QByteArray>("editor");
    QTest::addColumn<QString>("option");
    QTest::addColumn<QByteArray>("arguments");
    QTest::addColumn<QString>("notice");
    const QByteArray file = "shaders/vulkan/components/stock.frag"_ba;
    QTest::newRow("VISUAL") << "./write -x"_ba
                            << "none"_ba << QString() << "-x\n+2\n" + file + '\n'
                            << QString();
    QTest::newRow("EDITOR") << ""_ba
                            << "./write"_ba << QString() << "+2\n" + file + '\n'
                            << QString();
    QTest::newRow("option") << "none"_ba
                            << ""_ba << u"./write \"a b\" %f:%l"_s << "a b\n" + file + ":2\n"
                            << QString();
    QTest::newRow("no editor") << ""_ba
                               << ""_ba << QString() << ""_ba
                               << u"no editor is known: set VISUAL, or start with --editor"_s;
    QTest::newRow("no such editor")
            << "./none -x"_ba
            << ""_ba << QString() << ""_ba << u"cannot start the editor './none -x'"_s;
}

void TestWindow::clickOpensTheEditor()
{
    QFETCH(QByteArray, visual);
    QFETCH(QByteArray, editor);
    QFETCH(QString, option);
    QFETCH(QByteArray, arguments);
    QFETCH(QString, notice);
    qputenv("VISUAL", visual);
    qputenv("EDITOR", editor);
    const auto restore = qScopeGuard([] {
        qunsetenv("VISUAL");
        qunsetenv("EDITOR");
    });
    writeFile(u"write"_s, "#!/bin/sh\nprintf '%s\\n' \"$@\" >partly\nmv partly written\n");
    QVERIFY(QFile::setPermissions(u"write"_s, QFile::ReadOwner | QFile::ExeOwner));
    copiedShaders();
    writeFile(u"shaders/vulkan/components/stock.frag"_s,
              "#version 450\n#error <b>\nvoid main() {}\n");
    const auto look = [&](Window &window) {
        auto *const message = window.findChild<QLabel *>(u"message"_s);
        QCOMPARE(QTextDocumentFragment::fromHtml(message->text()).toPlainText(),
                 u"shaders/vulkan/components/stock.frag:2: '#error' : < b >\n"
                 "cannot read source picture 'none.png': File not found; 'list' names the test "
                 "pictures"_s);
        QTRY_VERIFY(message->height() > 20);
        QTest::mouseClick(message, Qt::LeftButton, {}, {60, 14});
        QCOMPARE(window.statusBar()->currentMessage(), notice);
    };
    QVERIFY(runCommand({u"stock"_s, u"--source"_s, u"none.png"_s, u"--editor"_s, option}, look));
    if (arguments.isEmpty())
        return;
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(u"written"_s), kPatience);
    QCOMPARE(readFile(u"written"_s), arguments);
}

void TestWindow::keysAreListed()
{
    const auto window = open(u"stock"_s);
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    QTest::keyClick(window.get(), Qt::Key_F1);
    auto *const sheet = window->findChild<QMessageBox *>();
    QVERIFY(sheet != nullptr && sheet->isVisible());
    const QStringList cells =
            QTextDocumentFragment::fromHtml(sheet->text()).toPlainText().split(u'\n');
    const std::pair<QString, QString> rows[] = {{u"F5"_s, u"Run"_s},
                                                {u"Ctrl+Shift+S"_s, u"Save values"_s},
                                                {u"Ctrl+Z"_s, u"Undo"_s},
                                                {u"F1"_s, u"Keys"_s},
                                                {u"Alt+Z"_s, u"Size"_s},
                                                {u"Alt+H"_s, u"HDR headroom"_s},
                                                {u"[ and ]"_s, u"move the split line"_s}};
    for (const auto &[keys, what] : rows)
        QCOMPARE(cells.value(cells.indexOf(keys) + 1), what);
    QVERIFY(!cells.contains(u"Forget all presets' changes"_s)); // it has no key
    QTest::keyClick(sheet, Qt::Key_Escape);
    QVERIFY(!sheet->isVisible());
}

void TestWindow::tabMovesThroughTheParameters()
{
    const auto window = open(u"gba-lcd"_s);
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    // The reset button is enabled for a changed value.
    window->session().setValue(u"LCD_COLOR_PROFILE"_s, 0.0F);
    QTest::keyClick(window.get(), Qt::Key_F, Qt::ControlModifier);
    QStringList visited;
    for (int i = 0; i < 7; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        visited.append(QApplication::focusWidget()->objectName());
    }
    QCOMPARE(visited,
             QStringList({u"gba-color.group"_s, u"LCD_COLOR_PROFILE.check"_s,
                          u"LCD_COLOR_PROFILE.reset"_s, u"gba-ghost.group"_s,
                          u"ghost_rise.slider"_s, u"ghost_rise.number"_s, u"ghost_fall.slider"_s}));
}

// At 1:1. Another test repeats this at a device pixel ratio of 2.
void TestWindow::picturePixelsAreScreenPixels()
{
    const auto window = open(u"gba-lcd"_s);
    auto *const view = window->findChild<PictureView *>();
    window->findChild<QComboBox *>(u"zoom"_s)->setCurrentText(u"1:1"_s);
    const QImage drawn = waitForImage(*window).convertToFormat(QImage::Format_RGB32);
    window->findChild<QLineEdit *>(u"filter"_s)->setFocus(); // hides the cursor in the picture
    QImage shown = view->grab().toImage().convertToFormat(QImage::Format_RGB32);
    shown.setDevicePixelRatio(1.0);
    const QSize margin = (shown.size() - drawn.size()) / 2;
    QImage middle = shown.copy({{margin.width(), margin.height()}, drawn.size()});
    middle.setColorSpace(drawn.colorSpace());
    QCOMPARE(middle, drawn);

    // As large as the view, in screen pixels.
    window->findChild<QComboBox *>(u"size"_s)->setCurrentIndex(0);
    const auto isAsLarge = [&] {
        const QSize size = waitForImage(*window).size();
        const QSize room = (QSizeF(view->size()) * view->devicePixelRatioF()).toSize();
        return size.width() == room.width() || size.height() == room.height();
    };
    window->findChild<QComboBox *>(u"zoom"_s)->setCurrentText(u"fit"_s);
    QTRY_VERIFY_WITH_TIMEOUT(isAsLarge(), kPatience);
}

void TestWindow::closingWhileDrawing()
{
    auto window = open(u"gba-lcd"_s);
    window->findChild<QComboBox *>(u"size"_s)->setCurrentText(u"1440x1080"_s);
    window->session().setRunning(true);
    QVERIFY(window->session().isBusy());
    window->close();
    window.reset();
}

void TestWindow::closingWithAKeyDown()
{
    auto window = open(u"stock"_s);
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    auto *const view = window->findChild<PictureView *>();
    view->setFocus();
    QTest::keyPress(view, Qt::Key_Space);
    window.reset();
}

void TestWindow::framesFollowTheSpeed_data()
{
    QTest::addColumn<double>("framesPerSecond");
    QTest::addColumn<int>("number"); // after 8 frames
    QTest::newRow("display faster than the presets") << 240.0 << 2;
    QTest::newRow("display as fast") << 60.0 << 8;
    QTest::newRow("slow motion") << 30.0 << 8;
}

void TestWindow::framesFollowTheSpeed()
{
    QFETCH(double, framesPerSecond);
    QFETCH(int, number);
    const auto window = open(u"stock"_s);
    Session &session = window->session();
    QList<int> numbers;
    connect(&session, &Session::frameDrawn, window.get(),
            [&] { numbers.append(session.frame()->number); });
    session.setRunning(true);
    session.setSpeed(framesPerSecond);
    QTRY_VERIFY_WITH_TIMEOUT(numbers.size() >= 12, kPatience);
    QCOMPARE(numbers.at(11) - numbers.at(3), number);
}

// In a process of its own, which runs the command and abandons the frame.
void TestWindow::slowFrameIsAnnouncedAndAbandoned()
{
    if (!qEnvironmentVariableIsSet("IS_ABANDONED")) {
        const Run child =
                runProgram(QCoreApplication::applicationFilePath(),
                           {u"slowFrameIsAnnouncedAndAbandoned"_s}, [](QProcess &process) {
                               process.setEnvironment(QProcess::systemEnvironment()
                                                      + QStringList(u"IS_ABANDONED=1"_s));
                           });
        QCOMPARE(child.exitStatus, 0);
        QVERIFY2(child.out.contains("the window is closed"), child.out.constData());
        return;
    }
    const QString shadersDir = copiedShaders();
    const QString path = u"shaders/vulkan/components/stock.frag"_s;
    QByteArray endless = readFile(path);
    endless.replace("}",
                    "for (int i = 0; i < 2000000000; ++i) for (int j = 0; j < 2000000000; ++j)\n"
                    "    fragColor = fragColor * 1.01 + sin(fragColor + float(i ^ j)); }");
    writeFile(path, endless);
    QTimer poll;
    connect(&poll, &QTimer::timeout, &poll, [] {
        for (QWidget *const widget : QApplication::topLevelWidgets()) {
            const auto *const label = widget->findChild<QLabel *>(u"slowness"_s);
            if (label != nullptr && label->isVisible()) {
                QCOMPARE(label->text(), u"drawing…"_s);
                qInfo("the window is closed");
                widget->close();
            }
        }
    });
    poll.start(10);
    QCommandLineParser parser;
    parser.addOptions(kWindowCommand.options());
    parser.parse({u"window"_s, u"--device"_s, softwareDevice()}); // no graphics card hangs
    QString error;
    kWindowCommand.run({parser, shadersDir, QString(), {u"stock"_s}}, error);
    QFAIL("the frame was done");
}

void TestWindow::missingMemoryIsReported()
{
    if (kIsSanitized)
        QSKIP("a sanitizer takes more memory than there is");
    QVERIFY(QImage(4096, 4096, QImage::Format_RGB32).save(u"large.png"_s));
    const auto window = open(u"stock"_s);
    const QImage first = waitForImage(*window);
    const rlim_t used = rlim_t(readFile(u"/proc/self/statm"_s).split(' ').first().toLongLong())
            * rlim_t(::sysconf(_SC_PAGESIZE));
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_AS, &before), 0);
    const rlimit limit = {used + (250U << 20), before.rlim_max};
    QCOMPARE(::setrlimit(RLIMIT_AS, &limit), 0);
    ViewSettings view = window->session().view();
    view.source = u"large.png"_s;
    window->session().setView(view);
    waitForImage(*window);
    ::setrlimit(RLIMIT_AS, &before);
    QCOMPARE(window->session().message(), u"not enough memory: choose a smaller size or source"_s);
    // The same source again, with the memory that it takes.
    window->session().setView(view);
    QVERIFY(waitForImage(*window) != first);
    QCOMPARE(window->session().message(), QString());
}

void TestWindow::otherDropsAreIgnored()
{
    const auto window = open(u"stock"_s);
    const QString source = window->session().view().source;
    QMimeData data;
    data.setUrls({QUrl(u"http://example.org/x.png"_s)});
    QDragEnterEvent enter({9, 9}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(window.get(), &enter);
    QVERIFY(!enter.isAccepted());
    QDropEvent drop({9, 9}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &drop);
    QCOMPARE(window->session().view().source, source);
}

void TestWindow::brokenPresetIsNotShown()
{
    const auto window = open(u"gba-lcd"_s);
    auto *const view = window->findChild<PictureView *>();
    QFile::remove(u"shaders/vulkan/components/stock.frag"_s);
    waitForImage(*window);
    const QImage before = view->grab().toImage();
    auto *const presets = window->findChild<QComboBox *>(u"preset"_s);
    presets->setCurrentText(u"stock"_s);
    QVERIFY(window->findChild<QSlider *>(u"ghost_rise.slider"_s) == nullptr);
    waitForImage(*window);
    QVERIFY(!window->session().message().isEmpty());
    QCOMPARE(window->session().frame()->preset, u"gba-lcd"_s);
    QVERIFY(window->session().parameters().isEmpty());
    // The picture is labelled. The message takes some of its room.
    window->findChild<QLabel *>(u"message"_s)->hide();
    QTRY_COMPARE(view->grab().toImage().size(), before.size());
    QVERIFY(view->grab().toImage() != before);
    presets->setCurrentText(u"gba-lcd"_s);
    waitForImage(*window);
    QTRY_COMPARE(view->grab().toImage(), before);
    QVERIFY(window->findChild<QSlider *>(u"ghost_rise.slider"_s) != nullptr);
}

// While a frame is drawn, so that the other preset is never loaded.
void TestWindow::presetIsChosenBackAtOnce()
{
    const auto window = open(u"gba-lcd"_s);
    waitForImage(*window);
    window->session().step();
    auto *const presets = window->findChild<QComboBox *>(u"preset"_s);
    presets->setCurrentText(u"stock"_s);
    presets->setCurrentText(u"gba-lcd"_s);
    waitForImage(*window);
    QVERIFY(window->findChild<QSlider *>(u"ghost_rise.slider"_s) != nullptr);
}

void TestWindow::sourceFileIsReloaded()
{
    QImage picture(5, 4, QImage::Format_RGB32);
    picture.fill(qRgb(0, 0, 255));
    QVERIFY(picture.save(u"source.png"_s));
    const auto window = open(u"stock"_s);
    ViewSettings view = window->session().view();
    view.source = u"source.png"_s;
    window->session().setView(view);
    QCOMPARE(waitForImage(*window).pixel(9, 9), qRgb(0, 0, 255));
    picture.fill(qRgb(255, 0, 0));
    QVERIFY(picture.save(u"source.png"_s));
    QTRY_COMPARE_WITH_TIMEOUT(waitForImage(*window).pixel(9, 9), qRgb(255, 0, 0), kPatience);
}

void TestWindow::includeBelowMissingDirectoriesIsFound()
{
    const auto window = open(u"stock"_s);
    const QString path = u"shaders/vulkan/components/stock.frag"_s;
    QByteArray content = readFile(path);
    content.replace("void main", "#include \"new/deep/color.glsl\"\nvoid main");
    content.replace("}", "fragColor = kColor; }");
    writeFile(path, content);
    QTRY_VERIFY_WITH_TIMEOUT(!window->session().message().isEmpty(), kPatience);
    // One by one, so that each is noticed before there is anything in it.
    for (const QString &directory : {u"new"_s, u"new/deep"_s}) {
        QVERIFY(QDir(u"shaders/vulkan/components"_s).mkdir(directory));
        QTest::qWait(300);
    }
    writeFile(u"shaders/vulkan/components/new/deep/color.glsl"_s,
              "const vec4 kColor = vec4(1.0, 0.0, 0.0, 1.0);\n");
    QTRY_COMPARE_WITH_TIMEOUT(window->session().message(), QString(), kPatience);
    QCOMPARE(waitForImage(*window).pixel(9, 9), qRgb(255, 0, 0));
}

void TestWindow::numberOutOfRangeIsReported()
{
    const auto window = open(u"gba-lcd"_s);
    auto *const number = window->findChild<QDoubleSpinBox *>(u"lcd_spill.number"_s);
    number->selectAll();
    QTest::keyClicks(number, u"400"_s);
    QTest::keyClick(number, Qt::Key_Return);
    QCOMPARE(QToolTip::text(), u"400 is not within 0.0 to 1.0"_s);
    QCOMPARE(number->text(), u"1.0"_s);
    // The least value is no decimal fraction of two.
    auto *const rise = window->findChild<QDoubleSpinBox *>(u"ghost_rise.number"_s);
    QToolTip::hideText();
    rise->selectAll();
    QTest::keyClicks(rise, u"0.05"_s);
    QTest::keyClick(rise, Qt::Key_Return);
    QCOMPARE(rise->text(), u"0.05"_s);
    QVERIFY(QToolTip::text() != u"0.05 is not within 0.05 to 1.0"_s);
}

void TestWindow::numbersKeepTheirDigits()
{
    const auto window = open(u"gba-lcd"_s);
    auto *const number = window->findChild<QDoubleSpinBox *>(u"lcd_spill.number"_s);
    number->selectAll();
    QTest::keyClicks(number, u"0.12345678"_s);
    QTest::keyClick(number, Qt::Key_Return);
    QCOMPARE(number->text(), u"0.12345678"_s);
    const QList<PresetParamMeta> &parameters = window->session().parameters();
    const auto spill = std::ranges::find(parameters, u"lcd_spill"_s, &PresetParamMeta::id);
    QCOMPARE(window->session().value(*spill), 0.12345678F);
}

// The tuned 0.706 is between two steps of 0.01.
void TestWindow::handleIsAtItsMark()
{
    const auto window = open(u"gba-lcd"_s);
    auto *const slider = window->findChild<QSlider *>(u"ghost_rise.slider"_s);
    const double share = double(slider->value()) / slider->maximum();
    QVERIFY2(std::abs(share - (0.706 - 0.05) / (1.0 - 0.05)) < 1e-4,
             QByteArray::number(share).constData());
}

void TestWindow::wheelNeedsTheFocus_data()
{
    QTest::addColumn<QString>("preset");
    QTest::addColumn<QString>("name");
    QTest::newRow("slider") << u"gba-lcd"_s << u"ghost_rise.slider"_s;
    QTest::newRow("number") << u"gba-lcd"_s << u"ghost_rise.number"_s;
    QTest::newRow("chooser") << u"gba-lcd"_s << u"preset"_s;
    QTest::newRow("list") << u"crt-arcade"_s << u"mask_type.choice"_s;
    QTest::newRow("headroom") << u"gba-lcd"_s << u"headroom"_s;
}

void TestWindow::wheelNeedsTheFocus()
{
    QFETCH(QString, preset);
    QFETCH(QString, name);
    const auto window = open(preset);
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    auto *const widget = window->findChild<QWidget *>(name);
    QVERIFY(!widget->hasFocus());
    const auto isTakenBy = [widget] {
        const QPointF at = widget->rect().center();
        QWheelEvent event(at, widget->mapToGlobal(at), {}, {0, 120}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        event.ignore();
        QApplication::sendEvent(widget, &event);
        return event.isAccepted();
    };
    const char *const property = qobject_cast<QComboBox *>(widget) ? "currentIndex" : "value";
    const QVariant before = widget->property(property);
    isTakenBy();
    QCOMPARE(widget->property(property), before);
    QVERIFY(!widget->hasFocus());
    widget->setFocus();
    QVERIFY(isTakenBy());
    QVERIFY(widget->property(property) != before);
}

void TestWindow::missingDisplayIsReported_data()
{
    QTest::addColumn<QString>("platform");
    QTest::addColumn<QString>("display");
    QTest::newRow("no such display") << u"xcb"_s << u":7777"_s;
    QTest::newRow("no display") << u"xcb"_s << QString();
    QTest::newRow("no such platform") << u"abacus"_s << QString();
}

// In all versions of Qt, which gives the reason.
void TestWindow::missingDisplayIsReported()
{
    QFETCH(QString, platform);
    QFETCH(QString, display);
    const Run result =
            runProgram(QStringLiteral(RENDER_GRAPH_PREVIEW), {u"window"_s}, [&](QProcess &process) {
                QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
                environment.insert(u"QT_QPA_PLATFORM"_s, platform);
                environment.insert(u"DISPLAY"_s, display);
                process.setProcessEnvironment(environment);
            });
    const QByteArray start =
            "render-graph-preview: no window can be opened, 'picture' writes files: ";
    QVERIFY2(result.err.startsWith(start), result.err.constData());
    QVERIFY2(result.err.contains("platform plugin \"" + platform.toUtf8() + '"'),
             result.err.constData());
    QCOMPARE(result.err.count('\n'), 1);
    QCOMPARE(result.exitStatus, 1);
}

QTEST_MAIN(TestWindow)
#include "tst_Window.moc"
