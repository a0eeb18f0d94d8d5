#include "service/ServiceCommandLine.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

namespace {

/// The action, or the card, or the complaint, as one text to compare.
QByteArray outcome(const QList<QByteArray>& arguments)
{
    const std::expected<ServiceCommandLine, std::string> line = parseCommandLine(arguments);
    if (!line)
        return "error: " + QByteArray::fromStdString(line.error());
    switch (line->action) {
    case ServiceCommandLine::Action::ShowHelp:
        return "help";
    case ServiceCommandLine::Action::ShowVersion:
        return "version";
    case ServiceCommandLine::Action::Diagnose:
        return "diagnose";
    case ServiceCommandLine::Action::Serve:
        return line->simulatedCard ? "serve " + *line->simulatedCard : QByteArray("serve");
    }
    return {};
}

} // namespace

class tst_ServiceCommandLine : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void eachFormIsUnderstood_data()
    {
        QTest::addColumn<QList<QByteArray>>("arguments");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const QList<QByteArray>& arguments, const char* expected) {
            QTest::newRow(("[" + arguments.join(' ') + "]").constData()) << arguments << QByteArray(expected);
        };
        row({}, "serve");
        row({"--simulate", "carte.xml"}, "serve carte.xml");
        row({"--simulate=carte.xml"}, "serve carte.xml");
        row({"--simulate", "--help"}, "serve --help");
        row({"--help"}, "help");
        row({"--diagnose"}, "diagnose");
        row({"--diagnose", "--simulate=carte.xml"}, "error: --diagnose s’emploie seul");
        row({"--simulate=carte.xml", "--diagnose"}, "error: --diagnose s’emploie seul");
        row({"--version"}, "version");
        row({"--simulate"}, "error: --simulate demande le fichier XML d’une carte");
        row({"--simulate", ""}, "error: --simulate demande le fichier XML d’une carte");
        row({"--simulate="}, "error: --simulate demande le fichier XML d’une carte");
        row({"--simulate", "a", "--simulate", "b"}, "error: trop d’arguments");
        row({"carte.xml"}, "error: argument inconnu : carte.xml");
        row({"--simuler"}, "error: argument inconnu : --simuler");
    }

    void eachFormIsUnderstood()
    {
        QFETCH(QList<QByteArray>, arguments);
        QFETCH(QByteArray, expected);
        QCOMPARE(outcome(arguments), expected);
    }
};

template class RunnableTests<tst_ServiceCommandLine, QCoreApplication>;
#include "tst_servicecommandline.moc"
