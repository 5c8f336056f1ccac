#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

// The rows of a hand-kept table below tests/presets/tables, each by column name.
class PresetTableRow
{
public:
    PresetTableRow(const QList<QByteArray> &columns, const QList<QByteArray> &cells);

    QByteArray text(const char *column) const;
    int integer(const char *column) const;
    float real(const char *column) const;
    bool flag(const char *column) const;

private:
    QList<QByteArray> m_columns;
    QList<QByteArray> m_cells;
};

QList<PresetTableRow> presetTable(const char *name);

// All presets, in their order.
QStringList presetTableNames();
