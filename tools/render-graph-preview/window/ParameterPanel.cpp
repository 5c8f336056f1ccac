#include "ParameterPanel.h"

#include "WithoutStrayWheel.h"

#include <Tuning.h>

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
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

// Calls a function when it is clicked twice.
class NameLabel : public QLabel
{
public:
    std::function<void()> onDoubleClick;

protected:
    void mouseDoubleClickEvent(QMouseEvent * /*event*/) override
    {
        onDoubleClick();
    }
};

} // namespace

class ParameterPanel::Row : public QWidget
{
public:
    Row(PresetParamMeta shown, Session &session)
        : parameter(std::move(shown)),
          m_label(new NameLabel),
          m_slider(new ParameterSlider(parameter)),
          m_number(new NumberField(parameter)),
          m_check(new QCheckBox),
          m_reset(new QToolButton)
    {
        m_label->setObjectName(parameter.id + ".label"_L1);
        m_label->setWordWrap(true);
        setToolTip(u"%1 to %2 by %3, default %4, tuned %5"_s.arg(
                numberText(parameter.min), numberText(parameter.max), numberText(parameter.step),
                numberText(parameter.defaultValue), numberText(parameter.initialValue)));
        m_slider->setObjectName(parameter.id + ".slider"_L1);
        m_slider->setAccessibleName(parameter.description);
        m_number->setObjectName(parameter.id + ".number"_L1);
        m_number->setAccessibleName(parameter.description);
        m_check->setObjectName(parameter.id + ".check"_L1);
        m_check->setAccessibleName(parameter.description);
        m_reset->setObjectName(parameter.id + ".reset"_L1);
        m_reset->setAccessibleName(u"Reset %1"_s.arg(parameter.description));
        m_reset->setText(u"\u21ba"_s);
        m_reset->setFocusPolicy(Qt::StrongFocus);

        auto *const layout = new QGridLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(m_label, 0, 0, 1, 3);
        layout->addWidget(m_slider, 1, 0);
        layout->addWidget(m_number, 1, 1);
        layout->addWidget(m_check, 1, 0, 1, 2);
        const bool isSwitch =
                parameter.min == 0.0F && parameter.max == 1.0F && parameter.step == 1.0F;
        m_slider->setHidden(isSwitch);
        m_number->setHidden(isSwitch);
        m_check->setHidden(!isSwitch);
        layout->addWidget(m_reset, 1, 2);

        connect(m_slider, &QSlider::valueChanged, this, [this, &session](int position) {
            session.setValue(parameter.id, m_slider->valueAt(position));
        });
        connect(m_number, &QDoubleSpinBox::valueChanged, this,
                [this, &session](double value) { session.setValue(parameter.id, float(value)); });
        connect(m_check, &QCheckBox::clicked, this, [this, &session](bool isChecked) {
            session.setValue(parameter.id, isChecked ? 1.0F : 0.0F);
        });
        connect(m_slider, &QSlider::sliderPressed, this, [&session] { session.setDragging(true); });
        connect(m_slider, &QSlider::sliderReleased, this,
                [&session] { session.setDragging(false); });
        m_label->onDoubleClick = [this, &session] { session.resetValue(parameter.id); };
        connect(m_reset, &QToolButton::clicked, this, m_label->onDoubleClick);
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
        const QSignalBlocker sliderBlocker(m_slider);
        const QSignalBlocker numberBlocker(m_number);
        m_slider->setValue(m_slider->positionOf(value));
        m_number->setValue(asDeclared(value));
        m_check->setChecked(value != 0.0F);
        m_reset->setEnabled(value != parameter.initialValue || replaced != value);
    }

    // Puts the row after a widget in the tab order, and returns the row's last widget.
    QWidget *insertAfter(QWidget *widget)
    {
        setTabOrder(widget, m_slider);
        setTabOrder(m_slider, m_number);
        setTabOrder(m_number, m_check);
        setTabOrder(m_check, m_reset);
        return m_reset;
    }

    const PresetParamMeta parameter;

private:
    NameLabel *m_label;
    ParameterSlider *m_slider;
    NumberField *m_number;
    QCheckBox *m_check;
    QToolButton *m_reset;
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
    // Keeps the rows if the parameters are the same, so that saving a component does not move the
    // focus.
    const auto isSame = [](const Row *row, const PresetParamMeta &parameter) {
        return row->parameter == parameter;
    };
    if (!std::ranges::equal(m_rows, m_session.parameters(), isSame)) {
        qDeleteAll(std::exchange(m_rows, {}));
        m_session.setDragging(false); // by a slider that is gone
        QWidget *last = m_filter;
        for (const PresetParamMeta &parameter : m_session.parameters()) {
            m_rows.append(new Row(parameter, m_session));
            m_layout->insertWidget(m_layout->count() - 1, m_rows.last());
            last = m_rows.last()->insertAfter(last);
        }
        applyFilter();
    }
    showValues();
}

void ParameterPanel::showValues()
{
    for (Row *const row : std::as_const(m_rows))
        row->showValue(m_session.value(row->parameter), m_session.replacedValue(row->parameter));
}

void ParameterPanel::applyFilter()
{
    for (Row *const row : std::as_const(m_rows))
        row->setVisible((row->parameter.id + u' ' + row->parameter.description)
                                .contains(m_filter->text(), Qt::CaseInsensitive));
}
