#include <Diagnostics.h>

#include "TestSupport.h"

#include <string>

class TestDiagnostics : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesArePrinted();
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
