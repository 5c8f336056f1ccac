#pragma once

#include "Session.h"

#include <QWidget>

class QLineEdit;
class QToolButton;
class QVBoxLayout;

// The names of a parameter's steps, from the least one on, if its description ends with a list of
// them all: "Mask Type (0 grille, 1 dots, 2 slots)" or "Gamut (709/EBU)". Else empty.
QStringList choiceNames(const PresetParamMeta &parameter);

// A row per parameter: a slider and a number field, a check box for 0 and 1, or a list if the
// description names the values; and a reset button. Sliders mark the default value (hollow) and the
// tuned value (filled). The rows are in foldable groups by the component that declares them first.
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
    void addGroup(const QString &component);
    void showValues();
    void applyFilter();
    void showRows();

    Session &m_session;
    QLineEdit *m_filter;
    QVBoxLayout *m_layout;
    QList<Row *> m_rows;
    QList<QToolButton *> m_groups; // the headers
    QHash<QString, bool> m_folded; // by component, of any preset
};
