#pragma once

#include <QStringList>

enum class Diagnostic { Error, Note };

// The one way out for what the tool has to say: one line with its name in front, errors on stderr
// and notes on stdout. The format is printf's, and has neither the name nor the line end.
[[gnu::format(printf, 2, 3)]] void report(Diagnostic kind, const char *format, ...);

// While it lives, what its thread reports is not printed: errors are collected, notes dropped.
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

    DiagnosticCollector *m_outer; // takes over again
    QStringList m_errors;
};
