#include "PresetTables.h"

#include "TestSupport.h"

#include <cstdlib>

PresetTableRow::PresetTableRow(const QList<QByteArray> &columns, const QList<QByteArray> &cells)
    : m_columns(columns),
      m_cells(cells)
{
}

QByteArray PresetTableRow::text(const char *column) const
{
    return m_cells.at(m_columns.indexOf(column));
}

int PresetTableRow::integer(const char *column) const
{
    return text(column).toInt();
}

float PresetTableRow::real(const char *column) const
{
    return std::strtof(text(column).constData(), nullptr);
}

bool PresetTableRow::flag(const char *column) const
{
    return text(column) == "yes" || text(column) == "true";
}

QList<PresetTableRow> presetTable(const char *name)
{
    const QString path =
            QStringLiteral(SOURCE_DIR "/tests/presets/tables/%1.csv").arg(QLatin1StringView(name));
    QList<QByteArray> lines = readFile(path).split('\n');
    const QList<QByteArray> columns = lines.takeFirst().split(';');
    QList<PresetTableRow> rows;
    for (const QByteArray &line : std::as_const(lines)) {
        if (line.isEmpty())
            continue;
        const QList<QByteArray> cells = line.split(';');
        if (cells.size() != columns.size())
            qFatal("%s: not %d cells: %s", qPrintable(path), int(columns.size()), line.constData());
        rows.append(PresetTableRow(columns, cells));
    }
    return rows;
}

QStringList presetTableNames()
{
    QStringList names;
    for (const PresetTableRow &preset : presetTable("presets"))
        names.append(QString::fromLatin1(preset.text("name")));
    return names;
}
