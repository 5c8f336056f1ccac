#pragma once

#include "Session.h"

#include <QWidget>

class QLineEdit;
class QVBoxLayout;

// A row per parameter: slider, number field and reset. The sliders mark the default (hollow) and
// the tuned value (filled).
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
