#include <Diagnostics.h>

#include "TestSupport.h"

#include <string>

#include <sys/socket.h>

class TestDiagnostics : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesArePrinted();
    void errorIsOneWrite();
    void errorsAreCollected();
    void theOuterCollectorTakesOverAgain();
};

void TestDiagnostics::linesArePrinted()
{
    const std::string longText(5000, 'x');
    QByteArray notes;
    const QByteArray errors = captured(stderr, [&] {
        notes = captured(stdout, [] { report(Diagnostic::Note, "%d of '%s'", 3, "50%"); });
        report(Diagnostic::Error, "no %s", longText.c_str());
        report(Diagnostic::Error, "100%%");
    });
    QCOMPARE(notes, "render-graph-compile: 3 of '50%'\n");
    QCOMPARE(errors,
             "render-graph-compile: no " + QByteArray(5000, 'x')
                     + "\nrender-graph-compile: 100%\n");
}

void TestDiagnostics::errorIsOneWrite()
{
    // Each write to such a socket is a message of its own. A full one refuses instead of waiting.
    int ends[2];
    QCOMPARE(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends), 0);
    const std::string longText(20000, 'x'); // more than a stream's buffer
    redirected(stderr, ends[0], [&longText] {
        report(Diagnostic::Error, "no '%s'", "a");
        report(Diagnostic::Error, "no %s", longText.c_str());
    });
    ::close(ends[0]);

    const auto message = [end = ends[1]] {
        QByteArray bytes(30000, '\0');
        bytes.truncate(::recv(end, bytes.data(), std::size_t(bytes.size()), 0));
        return bytes;
    };
    QCOMPARE(message(), "render-graph-compile: no 'a'\n");
    QCOMPARE(message(), "render-graph-compile: no " + QByteArray(20000, 'x') + '\n');
    QCOMPARE(message(), "");
    ::close(ends[1]);
}

void TestDiagnostics::errorsAreCollected()
{
    QStringList collected;
    QByteArray errors;
    const QByteArray notes = captured(stdout, [&] {
        errors = captured(stderr, [&collected] {
            const DiagnosticCollector collector;
            report(Diagnostic::Error, "no %s", qPrintable(QStringLiteral("größte.slang")));
            report(Diagnostic::Note, "heard by nobody");
            report(Diagnostic::Error, "two");
            collected = collector.errors();
        });
    });
    QCOMPARE(collected, QStringList({QStringLiteral("no größte.slang"), QStringLiteral("two")}));
    QCOMPARE(errors, "");
    QCOMPARE(notes, "");
}

void TestDiagnostics::theOuterCollectorTakesOverAgain()
{
    QStringList inOuter;
    const QByteArray errors = captured(stderr, [&inOuter] {
        {
            const DiagnosticCollector outer;
            {
                const DiagnosticCollector inner;
                report(Diagnostic::Error, "inner");
            }
            report(Diagnostic::Error, "outer");
            inOuter = outer.errors();
        }
        report(Diagnostic::Error, "neither");
    });
    QCOMPARE(inOuter, QStringList({QStringLiteral("outer")}));
    QCOMPARE(errors, "render-graph-compile: neither\n");
}

QTEST_APPLESS_MAIN(TestDiagnostics)
#include "tst_Diagnostics.moc"
