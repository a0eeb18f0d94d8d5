#include "service/ServiceCommandLine.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

namespace {

/// The action, the card or the error as one text.
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
    case ServiceCommandLine::Action::CheckLibrary:
        return "check library " + line->checkedFile;
    case ServiceCommandLine::Action::CheckMap:
        return "check map " + line->checkedFile + (line->recordedCard ? " with " + *line->recordedCard : QByteArray());
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
    void eachCommandLineGivesItsAction_data()
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
        row({"--check-library", "a.so"}, "check library a.so");
        row({"--check-map", "a.json"}, "check map a.json");
        row({"--check-map", "a.json", "--card", "carte"}, "check map a.json with carte");
        const char* const oneFile = "error: --check-library demande un fichier, et rien d’autre";
        row({"--check-library"}, oneFile);
        row({"--check-library", ""}, oneFile);
        row({"--check-library", "a.so", "b.so"}, oneFile);
        row({"--check-library", "a.so", "--card", "carte"}, oneFile);
        row({"--simulate=carte.xml", "--check-library", "a.so"}, oneFile);
        const char* const aMap = "error: --check-map demande un fichier, puis --card DOSSIER ou rien";
        row({"--check-map"}, aMap);
        row({"--check-map", "a.json", "--card"}, aMap);
        row({"--check-map", "a.json", "--card", ""}, aMap);
        row({"--check-map", "a.json", "carte", "--card"}, aMap);
        row({"--card", "carte"}, "error: argument inconnu : --card");
        row({"--simulate"}, "error: --simulate demande le fichier XML d’une carte");
        row({"--simulate", ""}, "error: --simulate demande le fichier XML d’une carte");
        row({"--simulate="}, "error: --simulate demande le fichier XML d’une carte");
        row({"--simulate", "a", "--simulate", "b"}, "error: trop d’arguments");
        row({"carte.xml"}, "error: argument inconnu : carte.xml");
        row({"--simuler"}, "error: argument inconnu : --simuler");
    }

    void eachCommandLineGivesItsAction()
    {
        QFETCH(QList<QByteArray>, arguments);
        QFETCH(QByteArray, expected);
        QCOMPARE(outcome(arguments), expected);
    }
};

template class RunnableTests<tst_ServiceCommandLine, QCoreApplication>;
#include "tst_servicecommandline.moc"
