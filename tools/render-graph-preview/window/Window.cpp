#include "Window.h"

#include "ParameterPanel.h"
#include "PictureView.h"
#include "WithoutStrayWheel.h"

#include <PictureFile.h>
#include <TestPictures.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>
#include <QScrollBar>
#include <QSettings>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kSizes[] = {{640, 480}, {960, 720}, {1440, 1080}, {1920, 1440}, {3840, 2160}};
constexpr int kNoticeMilliseconds = 10000;
constexpr double kSpeeds[] = {30.0, 10.0, 2.0};

QString timeText(const PassResult &pass)
{
    return pass.milliseconds ? u"%1 ms"_s.arg(*pass.milliseconds, 0, 'f', 2)
                             : QString(nameOf(pass.kind));
}

} // namespace

Window::Window(const QString &shadersDir, const QString &device, const QString &preset,
               QString editor)
    : m_session(shadersDir, device),
      m_parameters(new ParameterPanel(m_session)),
      m_picture(new PictureView),
      m_strip(new QListWidget),
      m_message(new QLabel),
      m_times(new QLabel),
      m_pixelValues(new QLabel),
      m_editor(std::move(editor))
{
    setAcceptDrops(true);
    m_message->setObjectName(u"message"_s);
    m_message->setTextFormat(Qt::RichText);
    m_message->setTextInteractionFlags(Qt::TextBrowserInteraction);
    connect(m_message, &QLabel::linkActivated, this, &Window::openEditor);
    m_message->setWordWrap(true);
    m_message->setMargin(6);
    m_message->setStyleSheet(u"background: #7a1f1f; color: white"_s);
    m_message->hide();
    m_strip->setObjectName(u"strip"_s);
    m_strip->setViewMode(QListView::IconMode);
    m_strip->setWrapping(false);
    m_strip->setMovement(QListView::Static);
    const QSize thumbnail = m_session.display().thumbnailSize;
    m_strip->setIconSize(thumbnail);
    m_strip->setGridSize(thumbnail + QSize(32, 4 * fontMetrics().height()));
    m_strip->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_strip->setFixedHeight(m_strip->gridSize().height() + 2 * m_strip->frameWidth()
                            + m_strip->horizontalScrollBar()->sizeHint().height());
    m_strip->setAccessibleName(u"Outputs of all passes"_s);

    auto *const central = new QWidget;
    // Dark, as the picture's surround is.
    QPalette dark(QColor(24, 24, 24), QColor(24, 24, 24));
    dark.setColor(QPalette::Base, dark.window().color());
    central->setPalette(dark);
    central->setAutoFillBackground(true);
    auto *const layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_message);
    layout->addWidget(m_picture, 1);
    layout->addWidget(m_strip);
    setCentralWidget(central);
    auto *const dock = new QDockWidget(u"Parameters"_s);
    dock->setObjectName(u"parameters"_s);
    dock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    dock->setWidget(m_parameters);
    addDockWidget(Qt::RightDockWidgetArea, dock);
    resizeDocks({dock}, {400}, Qt::Horizontal);
    // Long texts must not widen the window.
    m_times->setObjectName(u"times"_s);
    m_times->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    statusBar()->addWidget(m_times, 1);
    m_pixelValues->setObjectName(u"pixel"_s);
    statusBar()->addPermanentWidget(m_pixelValues);
    auto *const stretch = new QLabel;
    stretch->setObjectName(u"stretch"_s);
    connect(&m_session, &Session::frameDrawn, stretch,
            [this, stretch] { stretch->setText(m_session.frame()->stretch); });
    statusBar()->addPermanentWidget(stretch);
    auto *const slowness = new QLabel(u"drawing…"_s);
    slowness->setObjectName(u"slowness"_s);
    slowness->hide();
    connect(&m_session, &Session::slownessChanged, slowness, &QLabel::setVisible);
    statusBar()->addPermanentWidget(slowness);

    createToolBars();
    createActions();
    connect(m_picture, &PictureView::stateChanged, this, &Window::updateDisplay);
    connect(m_picture, &PictureView::zoomChanged, this,
            [this](int zoom) { m_zooms->setCurrentIndex(m_zooms->findData(zoom)); });
    connect(m_picture, &PictureView::resized, this,
            [this] { m_sizes->currentIndex() == 0 ? updateView() : updateDisplay(); });
    connect(m_strip, &QListWidget::currentRowChanged, this, &Window::updateDisplay);
    connect(&m_session, &Session::frameDrawn, this, &Window::showFrame);
    connect(&m_session, &Session::pictureNotSaved, this,
            [this](const QString &error) { statusBar()->showMessage(error, kNoticeMilliseconds); });
    connect(&m_session, &Session::messageChanged, this, &Window::showMessage);
    m_presets->setCurrentText(preset);
    m_session.setPreset(preset);
    setWindowTitle(u"render-graph-preview"_s);
    resize(QSize(1280, 860).boundedTo(screen()->availableSize()));
    restoreSettings();
    updateView();
}

// Losing the focus at the end changes what the picture shows.
Window::~Window()
{
    m_picture->disconnect(this);
}

// In two rows, which fit into a window of 1024 pixels.
void Window::createToolBars()
{
    QToolBar *bar = nullptr;
    const auto addBar = [this, &bar](const QString &title) {
        addToolBarBreak();
        bar = addToolBar(title);
        bar->setObjectName(title);
        bar->setMovable(false);
    };
    const auto add = [&bar](const QString &title, QWidget *widget, const char *name) {
        widget->setObjectName(QLatin1StringView(name));
        auto *const label = new QLabel(title);
        label->setBuddy(widget);
        label->setMargin(4);
        bar->addWidget(label);
        bar->addWidget(widget);
    };
    const auto addChoice = [&add](const QString &title, const char *name) {
        auto *const box = new WithoutStrayWheel<QComboBox>;
        add(title, box, name);
        return box;
    };

    addBar(u"View"_s);
    m_presets = addChoice(u"&Preset"_s, "preset");
    m_presets->addItems(presetNames());
    connect(m_presets, &QComboBox::currentTextChanged, &m_session, &Session::setPreset);
    m_sources = addChoice(u"&Source"_s, "source");
    for (const QString &name : testPictureNames())
        m_sources->addItem(name, name);
    m_sources->setMinimumContentsLength(14); // longer names only where there is room
    m_sizes = addChoice(u"Si&ze"_s, "size");
    m_sizes->addItem(u"as the view"_s);
    for (const QSize &size : kSizes)
        m_sizes->addItem(u"%1x%2"_s.arg(size.width()).arg(size.height()), size);
    m_zooms = addChoice(u"Zoo&m"_s, "zoom");
    for (const int zoom : ViewState::kZooms)
        m_zooms->addItem(zoom == ViewState::kFit ? u"fit"_s : u"%1:1"_s.arg(zoom), zoom);
    connect(m_zooms, &QComboBox::currentIndexChanged, m_picture,
            [this] { m_picture->setZoom(m_zooms->currentData().toInt()); });
    addBar(u"Drawing"_s);
    m_comparisons = addChoice(u"&Compare with"_s, "comparison");
    m_comparisons->addItems({u"nothing"_s, u"source"_s, u"tuned values (declared)"_s, u"A (kept)"_s,
                             u"before the last save"_s}); // as in DisplaySettings::Against
    m_headroom = new WithoutStrayWheel<QDoubleSpinBox>;
    m_headroom->setRange(0.0, 16.0);
    m_headroom->setSingleStep(0.5);
    m_headroom->setDecimals(1);
    m_headroom->setSpecialValueText(u"off"_s);
    m_headroom->setToolTip(u"The display's peak over its reference white"_s);
    add(u"&HDR headroom"_s, m_headroom, "headroom");
    m_speeds = addChoice(u"Spee&d"_s, "speed");
    m_speeds->addItem(u"display"_s, 0.0);
    for (const double speed : kSpeeds)
        m_speeds->addItem(u"%1 fps"_s.arg(speed), speed);
    connect(m_speeds, &QComboBox::currentIndexChanged, this, &Window::updateSpeed);
    for (QComboBox *const box : {m_sources, m_sizes})
        connect(box, &QComboBox::currentIndexChanged, this, &Window::updateView);
    connect(m_comparisons, &QComboBox::currentIndexChanged, this, &Window::updateDisplay);
    connect(m_headroom, &QDoubleSpinBox::valueChanged, this, &Window::updateView);
}

void Window::createActions()
{
    QMenu *const file = menuBar()->addMenu(u"&File"_s);
    file->addAction(u"&Open source picture..."_s, QKeySequence::Open, this, [this] {
        const QString path = QFileDialog::getOpenFileName(this, u"Source picture"_s);
        if (!path.isEmpty())
            openSource(path);
    });
    file->addAction(u"&Save picture..."_s, QKeySequence::Save, this, &Window::savePicture);
    file->addAction(u"&Quit"_s, QKeySequence::Quit, this, &Window::close);

    QMenu *const frames = menuBar()->addMenu(u"F&rames"_s);
    QAction *const run = frames->addAction(u"&Run"_s, Qt::Key_F5);
    run->setCheckable(true);
    connect(run, &QAction::toggled, this, &Window::updateSpeed);
    connect(run, &QAction::toggled, &m_session, &Session::setRunning);
    connect(&m_session, &Session::runningChanged, run, &QAction::setChecked);
    QAction *const step = frames->addAction(u"S&tep"_s, Qt::Key_F6, &m_session, &Session::step);
    m_backwards = frames->addAction(u"&Backwards"_s, Qt::Key_F7);
    m_backwards->setCheckable(true);
    connect(m_backwards, &QAction::toggled, this, &Window::updateView);

    QAction *const keep =
            frames->addAction(u"&Keep as A"_s, Qt::Key_F8, &m_session, &Session::keepState);

    QMenu *const parameters = menuBar()->addMenu(u"P&arameters"_s);
    QAction *const copy = parameters->addAction(
            u"&Copy as overrides"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_C, this,
            [this] { QApplication::clipboard()->setText(m_session.overrides()); });
    copy->setObjectName(u"copyOverrides"_s);
    QUndoGroup &undoGroup = m_session.undoGroup();
    QAction *const undo = undoGroup.createUndoAction(this, u"&Undo"_s);
    undo->setShortcuts(QKeySequence::Undo);
    QAction *const redo = undoGroup.createRedoAction(this, u"R&edo"_s);
    redo->setShortcuts(QKeySequence::Redo);
    parameters->addActions({undo, redo});
    parameters->addAction(u"Save &values..."_s, Qt::CTRL | Qt::SHIFT | Qt::Key_S, this,
                          &Window::saveValues);
    parameters->addAction(u"O&pen values..."_s, Qt::CTRL | Qt::SHIFT | Qt::Key_O, this, [this] {
        const QString path =
                QFileDialog::getOpenFileName(this, u"Open values"_s, {}, u"Values (*.glslp)"_s);
        if (!path.isEmpty())
            openValues(path);
    });
    QAction *const reset = parameters->addAction(u"&Reset all"_s, Qt::CTRL | Qt::Key_R, &m_session,
                                                 &Session::resetAll);
    reset->setObjectName(u"resetAll"_s);
    QAction *const forget = parameters->addAction(u"For&get all presets' changes"_s, &m_session,
                                                  &Session::forgetAll);
    forget->setObjectName(u"forgetAll"_s);
    forget->setIconText(u"Forget all"_s);
    parameters->addAction(u"&Filter"_s, QKeySequence::Find, this,
                          [this] { m_parameters->filter()->setFocus(); });
    menuBar()->addMenu(u"He&lp"_s)->addAction(u"&Keys"_s, Qt::Key_F1, this, &Window::showKeys);

    auto *const values = new QToolBar;
    values->addActions({undo, redo, copy, reset, forget});
    m_parameters->layout()->addWidget(values);
    auto *const drawing = findChild<QToolBar *>(u"Drawing"_s);
    drawing->addActions({run, step, m_backwards, keep});
    for (QToolBar *const buttons : {drawing, values}) {
        for (QAction *const action : buttons->actions())
            buttons->widgetForAction(action)->setFocusPolicy(Qt::StrongFocus);
    }
}

void Window::showKeys()
{
    QString rows;
    const auto add = [&rows](const QString &keys, QString what) {
        what.remove(u'&').remove(u"..."_s);
        rows += u"<tr><td><b>%1</b></td><td>%2</td></tr>"_s.arg(keys, what);
    };
    for (const QAction *const action : findChildren<QAction *>()) {
        if (!action->shortcut().isEmpty())
            add(action->shortcut().toString(QKeySequence::NativeText), action->text());
    }
    for (const QLabel *const label : findChildren<QLabel *>()) {
        if (label->buddy() != nullptr)
            add(QKeySequence::mnemonic(label->text()).toString(QKeySequence::NativeText),
                label->text());
    }
    for (const QString &line : m_picture->accessibleDescription().split(u'\n'))
        add(line.section(u": "_s, 0, 0), line.section(u": "_s, 1));
    auto *const sheet = new QMessageBox(QMessageBox::NoIcon, u"Keys"_s,
                                        u"<table cellspacing=4>%1</table>"_s.arg(rows),
                                        QMessageBox::Close, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
}

void Window::showMessage(const QString &message)
{
    static const QRegularExpression kPlace(u"^(.+?:\\d+):"_s, QRegularExpression::MultilineOption);
    QString text = message.toHtmlEscaped();
    text.replace(kPlace, uR"(<a style="color: white" href="\1">\1</a>:)"_s);
    m_message->setText(text.replace(u'\n', u"<br>"_s));
    m_message->setVisible(!message.isEmpty());
}

void Window::openEditor(const QString &place)
{
    QString editor = m_editor;
    for (const char *const name : {"VISUAL", "EDITOR"}) {
        if (editor.isEmpty())
            editor = qEnvironmentVariable(name);
    }
    QStringList command =
            QProcess::splitCommand(editor.contains(u"%f"_s) ? editor : editor + u" +%l %f"_s);
    const QString line = place.section(u':', -1);
    command.replaceInStrings(u"%l"_s, line);
    command.replaceInStrings(u"%f"_s, place.chopped(line.size() + 1));
    if (editor.isEmpty())
        statusBar()->showMessage(u"no editor is known: set VISUAL, or start with --editor"_s,
                                 kNoticeMilliseconds);
    else if (!QProcess::startDetached(command.takeFirst(), command))
        statusBar()->showMessage(u"cannot start the editor '%1'"_s.arg(editor),
                                 kNoticeMilliseconds);
}

void Window::openSource(const QString &nameOrPath)
{
    int index = m_sources->findData(nameOrPath);
    if (index < 0) {
        index = m_sources->count();
        m_sources->addItem(QFileInfo(nameOrPath).fileName(), nameOrPath);
    }
    m_sources->setCurrentIndex(index);
}

void Window::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->urls().value(0).isLocalFile())
        event->acceptProposedAction();
}

void Window::dropEvent(QDropEvent *event)
{
    const QUrl url = event->mimeData()->urls().value(0);
    if (url.isLocalFile())
        openSource(url.toLocalFile());
}

void Window::savePicture()
{
    const std::shared_ptr<const FrameResult> frame = m_session.frame();
    if (!frame)
        return;
    const QString path = QFileDialog::getSaveFileName(this, u"Save picture"_s,
                                                      frame->preset + ".png"_L1, u"PNG (*.png)"_s);
    if (!path.isEmpty())
        m_session.savePicture(path);
}

void Window::saveValues()
{
    const QString path = QFileDialog::getSaveFileName(
            this, u"Save values"_s, m_session.preset() + ".glslp"_L1, u"Values (*.glslp)"_s);
    QString error;
    if (!path.isEmpty() && !saveFile(m_session.savedValues().toUtf8(), path, error))
        statusBar()->showMessage(error, kNoticeMilliseconds);
}

void Window::openValues(const QString &path)
{
    QString error;
    if (!m_session.openValues(path, error))
        statusBar()->showMessage(error, kNoticeMilliseconds);
}

// The values are kept by the session.
void Window::closeEvent(QCloseEvent *event)
{
    QSettings settings(kSettings, kSettings);
    settings.setValue("geometry"_L1, saveGeometry());
    settings.setValue("preset"_L1, m_session.preset());
    const QString source = m_session.view().source;
    const bool isFile = !testPictureNames().contains(source);
    settings.setValue("source"_L1, isFile ? QFileInfo(source).absoluteFilePath() : source);
    settings.setValue("zoom"_L1, m_zooms->currentText());
    QMainWindow::closeEvent(event);
}

void Window::restoreSettings()
{
    const QSettings settings(kSettings, kSettings);
    restoreGeometry(settings.value("geometry"_L1).toByteArray());
    m_zooms->setCurrentText(settings.value("zoom"_L1).toString());
    const QString source = settings.value("source"_L1).toString();
    if (testPictureNames().contains(source) || QFileInfo::exists(sourceFiles(source).constFirst()))
        openSource(source);
}

void Window::updateView()
{
    ViewSettings view = m_session.view();
    view.source = m_sources->currentData().toString();
    const QSize size = m_sizes->currentData().toSize();
    view.keepsAspectRatio = size.isEmpty();
    view.viewport = size.isEmpty() ? m_picture->sizeInPixels() : size;
    // A display's peak is at least its reference white.
    view.headroom.reset();
    if (m_headroom->value() > 0.0)
        view.headroom = std::max(1.0F, float(m_headroom->value()));
    view.isBackwards = m_backwards->isChecked();
    updateDisplay();
    m_session.setView(view);
}

void Window::updateDisplay()
{
    DisplaySettings display = m_session.display();
    display.state = m_picture->state();
    display.against = DisplaySettings::Against(m_comparisons->currentIndex());
    const int row = m_strip->currentRow();
    display.pass = row == m_strip->count() - 1 ? -1 : row;
    display.thumbnailSize = (QSizeF(m_strip->iconSize()) * devicePixelRatioF()).toSize();
    m_session.setDisplay(display);
}

void Window::updateSpeed()
{
    const double speed = m_speeds->currentData().toDouble();
    m_session.setSpeed(speed > 0.0 ? speed : screen()->refreshRate());
}

void Window::showFrame()
{
    const FrameResult &frame = *m_session.frame();
    m_picture->setFrame(m_session.frame(), m_session.preset());
    showPixel(frame);

    // Texts take long to draw, and cannot be read at the display's rate.
    ++m_frames;
    if (m_session.isRunning() && frame.thumbnails.isEmpty())
        return;
    showStrip(frame);
    const double perSecond = m_framesTimer.isValid()
            ? 1000.0 * std::exchange(m_frames, 0) / double(m_framesTimer.elapsed())
            : 0.0;
    m_framesTimer.start();
    QStringList texts = {frame.device, frame.state.zoomText(frame.size),
                         u"frame %1"_s.arg(frame.number)};
    if (m_session.isRunning())
        texts.append(u"%1 a second"_s.arg(perSecond, 0, 'f', 1));
    const auto time = [&texts](const QString &name, std::optional<double> milliseconds) {
        if (milliseconds)
            texts.append(u"%1 %2 ms"_s.arg(name).arg(*milliseconds, 0, 'f', 1));
    };
    time(u"device"_s, frame.drawMilliseconds);
    time(u"transfer"_s, frame.transferMilliseconds);
    time(u"interface"_s, m_picture->paintMilliseconds());
    m_times->setText(texts.join(u" | "_s));
    m_times->setToolTip(m_times->text());
}

void Window::showStrip(const FrameResult &frame)
{
    const bool isOtherPreset = frame.components != m_components;
    if (isOtherPreset) {
        m_components = frame.components;
        const QSignalBlocker blocker(m_strip);
        m_strip->clear();
        for (const QString &component : std::as_const(m_components)) {
            // The size it will have with its picture, so that the last item stays in view.
            auto *const item = new QListWidgetItem(component, m_strip);
            item->setSizeHint(m_strip->gridSize());
        }
        m_strip->setCurrentRow(m_strip->count() - 1);
    }
    for (int i = 0; i < m_strip->count(); ++i) {
        const PassResult &pass = frame.passes.at(i);
        QListWidgetItem *const item = m_strip->item(i);
        item->setText(u"%1 %2\n%3x%4 %5\n%6"_s.arg(
                QString::number(i), m_components.at(i), QString::number(pass.size.width()),
                QString::number(pass.size.height()),
                QString(VulkanRenderGraph::formatName(pass.format)), timeText(pass)));
        if (frame.thumbnails.isEmpty())
            continue;
        QPixmap thumbnail = QPixmap::fromImage(frame.thumbnails.at(i));
        thumbnail.setDevicePixelRatio(devicePixelRatioF());
        QIcon icon(thumbnail);
        icon.addPixmap(thumbnail, QIcon::Selected); // else it is tinted
        item->setIcon(icon);
    }
    if (!isOtherPreset)
        return;
    m_strip->scrollToItem(m_strip->currentItem());
    if (m_session.display().pass >= 0)
        updateDisplay();
}

void Window::showPixel(const FrameResult &frame)
{
    if (!frame.texel)
        return m_pixelValues->clear();
    const auto &[red, green, blue, alpha] = *frame.texel;
    QStringList channels;
    for (const float channel : {red, green, blue, alpha})
        channels.append(QString::number(double(channel), 'f', 4));
    m_pixelValues->setText(u"(%1, %2): %3"_s.arg(frame.state.texel.x())
                                   .arg(frame.state.texel.y())
                                   .arg(channels.join(u"  "_s)));
}
