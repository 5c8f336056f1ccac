#pragma once

#include <QStringList>

enum class Diagnostic { Error, Note };

// Prints one line that begins with the tool's name, an error on stderr or a note on stdout. All of
// the tool's messages are printed here. The format is printf's, without the name and the line end.
[[gnu::format(printf, 2, 3)]] void report(Diagnostic kind, const char *format, ...);

// Collects the errors that its thread reports while it exists, and drops the notes. Neither is
// printed.
class DiagnosticCollector
{
public:
    DiagnosticCollector();
    ~DiagnosticCollector();
    Q_DISABLE_COPY_MOVE(DiagnosticCollector)

    const QStringList &errors() const
    {
        return m_errors;
    } // without the tool's name

private:
    friend void report(Diagnostic kind, const char *format, ...);

    DiagnosticCollector *m_outer; // collects again after this one
    QStringList m_errors;
};
