#include "Diagnostics.h"

#include <QByteArray>

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace {

constexpr auto kPrefix = "render-graph-compile: ";

thread_local DiagnosticCollector *collector = nullptr;

} // namespace

void report(Diagnostic kind, const char *format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list sameArguments;
    va_copy(sameArguments, arguments);
    const int size = std::vsnprintf(nullptr, 0, format, sameArguments);
    va_end(sameArguments);
    QByteArray text(size + 1, '\0');
    std::vsnprintf(text.data(), std::size_t(text.size()), format, arguments);
    va_end(arguments);
    text.chop(1);

    if (collector != nullptr) {
        if (kind == Diagnostic::Error)
            collector->m_errors.append(QString::fromLocal8Bit(text));
        return;
    }
    // One write, so that lines of tools that run at the same time do not mix.
    const QByteArray line = kPrefix + text + '\n';
    std::fwrite(line.constData(), 1, std::size_t(line.size()),
                kind == Diagnostic::Error ? stderr : stdout);
}

DiagnosticCollector::DiagnosticCollector() : m_outer(std::exchange(collector, this)) { }

DiagnosticCollector::~DiagnosticCollector()
{
    collector = m_outer;
}
