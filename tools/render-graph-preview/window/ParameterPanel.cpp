#include "ParameterPanel.h"

#include "WithoutStrayWheel.h"

#include <Tuning.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QRegularExpression>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSlider>
#include <QStyleOptionSlider>
#include <QToolButton>
#include <QToolTip>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int kDecimals = 15; // a float's shortest text has no more in a range that people use
constexpr int kPositionsPerStep = 100; // so that a value between two steps has its place

// The decimal number as it is declared: 0.3, not the float's 0.300000012.
double asDeclared(float value)
{
    return numberText(value).toDouble();
}

class ParameterSlider : public WithoutStrayWheel<QSlider>
{
public:
    explicit ParameterSlider(const PresetParamMeta &parameter) : m_parameter(parameter)
    {
        setOrientation(Qt::Horizontal);
        const int steps = int(std::lround((parameter.max - parameter.min) / parameter.step));
        setRange(0, steps * kPositionsPerStep);
        setSingleStep(kPositionsPerStep);
        setPageStep(std::max(1, steps / 10) * kPositionsPerStep);
        setMinimumWidth(120);
    }

    // The value of the step that is nearest to a position.
    float valueAt(int position) const
    {
        const double steps = std::round(double(position) / kPositionsPerStep);
        const double value = asDeclared(m_parameter.min) + steps * asDeclared(m_parameter.step);
        return std::min(float(value), m_parameter.max);
    }

    int positionOf(float value) const
    {
        const float steps = (value - m_parameter.min) / m_parameter.step;
        return int(std::lround(steps * float(kPositionsPerStep)));
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QSlider::paintEvent(event);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(palette().color(QPalette::WindowText));
        drawMark(painter, m_parameter.defaultValue);
        painter.setBrush(palette().color(QPalette::WindowText));
        drawMark(painter, m_parameter.initialValue);
    }

private:
    void drawMark(QPainter &painter, float value) const
    {
        QStyleOptionSlider option;
        initStyleOption(&option);
        const int handle = style()->pixelMetric(QStyle::PM_SliderLength, &option, this);
        const double share = (value - m_parameter.min) / (m_parameter.max - m_parameter.min);
        const QPointF tip(0.5 * handle + share * (width() - handle), height() - 6.0);
        painter.drawConvexPolygon(
                QPolygonF({tip, tip + QPointF(-3.0, 5.0), tip + QPointF(3.0, 5.0)}));
    }

    PresetParamMeta m_parameter;
};

class NumberField : public WithoutStrayWheel<QDoubleSpinBox>
{
public:
    explicit NumberField(const PresetParamMeta &parameter)
    {
        setLocale(QLocale::c());
        setDecimals(kDecimals);
        setRange(asDeclared(parameter.min), asDeclared(parameter.max));
        setSingleStep(asDeclared(parameter.step));
        setKeyboardTracking(false);
        setMinimumWidth(fontMetrics().horizontalAdvance(u"00.000000"_s) + 36);
    }

    QString textFromValue(double value) const override
    {
        return numberText(float(value));
    }

    // Takes numbers out of range while they are typed; afterwards it says what the range is.
    QValidator::State validate(QString &text, int &position) const override
    {
        const QValidator::State state = QDoubleSpinBox::validate(text, position);
        bool isNumber = false;
        text.toDouble(&isNumber);
        return state == QValidator::Invalid && isNumber ? QValidator::Intermediate : state;
    }

    void fixup(QString &text) const override
    {
        bool isNumber = false;
        const double number = text.toDouble(&isNumber);
        if (isNumber && (number < minimum() || number > maximum())) {
            QToolTip::showText(mapToGlobal(rect().bottomLeft()),
                               u"%1 is not within %2 to %3"_s.arg(text, textFromValue(minimum()),
                                                                  textFromValue(maximum())));
            text = textFromValue(number < minimum() ? minimum() : maximum());
        }
    }
};

} // namespace

QStringList choiceNames(const PresetParamMeta &parameter)
{
    static const QRegularExpression kList(u"\\(([^()]+)\\)$"_s);
    static const QRegularExpression kSeparator(u" *[,/] *"_s);
    QStringList names = kList.match(parameter.description).captured(1).split(kSeparator);
    if (names.size() < 2 || parameter.step != 1.0F
        || float(names.size() - 1) != parameter.max - parameter.min)
        return {};
    for (int i = 0; i < names.size(); ++i) {
        const QString number = QString::number(int(parameter.min) + i) + u' ';
        if (names.at(i).startsWith(number))
            names[i].remove(0, number.size());
    }
    return names;
}

class ParameterPanel::Row : public QWidget
{
public:
    // `header` is that of the row's group.
    Row(PresetParamMeta shown, Session &session, QToolButton *header)
        : parameter(std::move(shown)),
          group(header),
          m_session(session),
          m_layout(new QGridLayout(this)),
          m_label(new QLabel)
    {
        m_label->setObjectName(parameter.id + ".label"_L1);
        m_label->setWordWrap(true);
        setToolTip(u"%1 to %2 by %3, default %4, tuned %5"_s.arg(
                numberText(parameter.min), numberText(parameter.max), numberText(parameter.step),
                numberText(parameter.defaultValue), numberText(parameter.initialValue)));
        m_layout->setContentsMargins(0, 0, 0, 0);
        m_layout->addWidget(m_label, 0, 0, 1, 3);
        const auto set = [this](float value) { m_session.setValue(parameter.id, value); };
        if (const QStringList choices = choiceNames(parameter); !choices.isEmpty()) {
            auto *const choice = add<WithoutStrayWheel<QComboBox>>(u".choice"_s, 0, 2);
            choice->addItems(choices);
            connect(choice, &QComboBox::activated, this,
                    [this, set](int index) { set(parameter.min + float(index)); });
            m_show = [this, choice](float value) {
                choice->setCurrentIndex(int(std::lround(value - parameter.min)));
            };
        } else if (parameter.min == 0.0F && parameter.max == 1.0F && parameter.step == 1.0F) {
            auto *const check = add<QCheckBox>(u".check"_s, 0, 2);
            connect(check, &QCheckBox::clicked, this,
                    [set](bool isChecked) { set(isChecked ? 1.0F : 0.0F); });
            m_show = [check](float value) { check->setChecked(value != 0.0F); };
        } else {
            auto *const slider = add<ParameterSlider>(u".slider"_s, 0, 1, parameter);
            auto *const number = add<NumberField>(u".number"_s, 1, 1, parameter);
            connect(slider, &QSlider::valueChanged, this,
                    [slider, set](int position) { set(slider->valueAt(position)); });
            connect(number, &QDoubleSpinBox::valueChanged, this,
                    [set](double value) { set(float(value)); });
            connect(slider, &QSlider::sliderPressed, this, [this] { m_session.setDragging(true); });
            connect(slider, &QSlider::sliderReleased, this,
                    [this] { m_session.setDragging(false); });
            m_show = [slider, number](float value) {
                const QSignalBlocker sliderBlocker(slider);
                const QSignalBlocker numberBlocker(number);
                slider->setValue(slider->positionOf(value));
                number->setValue(asDeclared(value));
            };
        }
        m_reset = add<QToolButton>(u".reset"_s, 2, 1);
        m_reset->setAccessibleName(u"Reset %1"_s.arg(parameter.description));
        m_reset->setText(u"\u21ba"_s);
        m_reset->setFocusPolicy(Qt::StrongFocus);
        connect(m_reset, &QToolButton::clicked, this,
                [this] { m_session.resetValue(parameter.id); });
    }

    // `replaced` is the tuned value at the time when the value was set.
    void showValue(float value, float replaced)
    {
        QString name = u"%1 <small>(%2)</small>"_s.arg(parameter.description.toHtmlEscaped(),
                                                       parameter.id);
        if (replaced != parameter.initialValue)
            name += u"<br>This was tuned to %1, and is tuned to %2 now."_s.arg(
                    numberText(replaced), numberText(parameter.initialValue));
        m_label->setText(name);
        m_show(value);
        m_reset->setEnabled(value != parameter.initialValue || replaced != value);
    }

    const PresetParamMeta parameter;
    QToolButton *const group;

protected:
    void mouseDoubleClickEvent(QMouseEvent * /*event*/) override
    {
        m_session.resetValue(parameter.id);
    }

private:
    template<typename Widget, typename... Arguments>
    Widget *add(const QString &name, int column, int columns, const Arguments &...arguments)
    {
        auto *const widget = new Widget(arguments...);
        widget->setObjectName(parameter.id + name);
        widget->setAccessibleName(parameter.description);
        m_layout->addWidget(widget, 1, column, 1, columns);
        return widget;
    }

    Session &m_session;
    QGridLayout *m_layout;
    QLabel *m_label;
    QToolButton *m_reset;
    std::function<void(float)> m_show;
};

ParameterPanel::ParameterPanel(Session &session, QWidget *parent)
    : QWidget(parent),
      m_session(session),
      m_filter(new QLineEdit)
{
    m_filter->setPlaceholderText(u"Filter parameters (Ctrl+F)"_s);
    m_filter->setClearButtonEnabled(true);
    m_filter->setObjectName(u"filter"_s);
    auto *const rows = new QWidget;
    m_layout = new QVBoxLayout(rows);
    m_layout->addStretch();
    auto *const scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(rows);

    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(m_filter);
    layout->addWidget(scroll);
    connect(m_filter, &QLineEdit::textChanged, this, &ParameterPanel::applyFilter);
    connect(&m_session, &Session::parametersChanged, this, &ParameterPanel::showParameters);
    connect(&m_session, &Session::valuesChanged, this, &ParameterPanel::showValues);
}

void ParameterPanel::showParameters()
{
    QHash<QString, qsizetype> firstPasses; // that declare a parameter, by id
    const QList<VulkanRenderGraph::Pass> &passes = m_session.graph().passes;
    for (qsizetype i = passes.size() - 1; i >= 0; --i) {
        for (const auto &param : passes.at(i).params)
            firstPasses.insert(param.id, i);
    }
    const auto passOf = [&](const PresetParamMeta &parameter) {
        return firstPasses.value(parameter.id);
    };
    const auto component = [&](const PresetParamMeta &parameter) {
        return passes.at(passOf(parameter)).debugName;
    };
    QList<PresetParamMeta> parameters = m_session.parameters();
    std::ranges::stable_sort(parameters, {}, passOf);
    // Keeps the rows if the parameters are the same, so that saving a component does not move the
    // focus.
    const auto isSame = [&](const Row *row, const PresetParamMeta &parameter) {
        return row->parameter == parameter && row->group->text() == component(parameter);
    };
    if (!std::ranges::equal(m_rows, parameters, isSame)) {
        qDeleteAll(std::exchange(m_rows, {}));
        qDeleteAll(std::exchange(m_groups, {}));
        m_session.setDragging(false); // by a slider that is gone
        QWidget *last = m_filter;
        for (const PresetParamMeta &parameter : std::as_const(parameters)) {
            if (m_groups.isEmpty() || m_groups.last()->text() != component(parameter)) {
                addGroup(component(parameter));
                setTabOrder(last, m_groups.last());
                last = m_groups.last();
            }
            m_rows.append(new Row(parameter, m_session, m_groups.last()));
            m_layout->insertWidget(m_layout->count() - 1, m_rows.last());
            for (auto *const next :
                 m_rows.last()->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
                if (next->focusPolicy() != Qt::NoFocus)
                    setTabOrder(std::exchange(last, next), next);
            }
        }
        applyFilter();
    }
    showValues();
}

void ParameterPanel::addGroup(const QString &component)
{
    auto *const header = new QToolButton;
    header->setObjectName(component + ".group"_L1);
    header->setText(component);
    header->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    header->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    header->setFocusPolicy(Qt::StrongFocus);
    header->setCheckable(true);
    connect(header, &QToolButton::clicked, this, [this, component](bool isOpen) {
        m_folded.insert(component, !isOpen);
        showRows();
    });
    m_layout->insertWidget(m_layout->count() - 1, header);
    m_groups.append(header);
}

void ParameterPanel::showValues()
{
    for (Row *const row : std::as_const(m_rows))
        row->showValue(m_session.value(row->parameter), m_session.replacedValue(row->parameter));
}

// Opens the groups that have hits.
void ParameterPanel::applyFilter()
{
    for (QToolButton *const group : std::as_const(m_groups))
        group->setChecked(!m_filter->text().isEmpty() || !m_folded.value(group->text()));
    showRows();
}

void ParameterPanel::showRows()
{
    QSet<QToolButton *> shown;
    for (Row *const row : std::as_const(m_rows)) {
        const bool isHit = (row->parameter.id + u' ' + row->parameter.description)
                                   .contains(m_filter->text(), Qt::CaseInsensitive);
        row->setVisible(isHit && row->group->isChecked());
        if (isHit)
            shown.insert(row->group);
    }
    for (QToolButton *const group : std::as_const(m_groups)) {
        group->setVisible(shown.contains(group));
        group->setArrowType(group->isChecked() ? Qt::DownArrow : Qt::RightArrow);
    }
}
