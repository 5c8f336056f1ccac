#pragma once

#include "Session.h"

#include <QWidget>

class QLineEdit;
class QVBoxLayout;

// A row per parameter: a slider, a number field and a reset button. Sliders mark the default value
// (hollow) and the tuned value (filled).
class ParameterPanel : public QWidget
{
    Q_OBJECT

public:
    explicit ParameterPanel(Session &session, QWidget *parent = nullptr);

    QLineEdit *filter() const
    {
        return m_filter;
    }

private:
    class Row;

    void showParameters();
    void showValues();
    void applyFilter();

    Session &m_session;
    QLineEdit *m_filter;
    QVBoxLayout *m_layout;
    QList<Row *> m_rows;
};
