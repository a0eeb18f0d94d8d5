#include "service/check/CheckReport.h"
#include "service/check/TrialNotes.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QString textOfFaults(const QList<CheckFault>& faults)
{
    return checkText({.subject = u"une chose"_s, .facts = {}, .remarks = {}, .faults = faults});
}

TrialNote sentAndReceived(const TrialNote& note)
{
    return decodeTrialNote(encodeTrialNote(note).chopped(1));
}

} // namespace

class tst_CheckReport : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void allIsToldInColumns()
    {
        const CheckReport report{.subject = u"une chose"_s,
                                 .facts = {{u"Fichier"_s, u"/a.so"_s}, {u"Table des cartes"_s, u"7"_s}},
                                 .remarks = {u"à savoir"_s},
                                 .faults = {{u"ici"_s, u"cela"_s}, {{}, u"tout"_s}}};
        const QString expected = u"Pelmora %1, service de lecture : contrôle d’une chose\n"
                                 "\n"
                                 "  Fichier             /a.so\n"
                                 "  Table des cartes    7\n"
                                 "\n"
                                 "Remarques\n"
                                 "  à savoir\n"
                                 "\n"
                                 "Défauts\n"
                                 "  ici : cela\n"
                                 "  tout\n"
                                 "\n"
                                 "Conclusion : 2 défauts.\n"_s.arg(QLatin1StringView(PELMORA_VERSION));
        QCOMPARE(checkText(report), expected);
        QVERIFY(!report.isSound());
    }

    void theConclusionCountsTheFaults()
    {
        QVERIFY(textOfFaults({}).endsWith(u"\n\nConclusion : aucun défaut.\n"_s));
        QVERIFY(textOfFaults({{{}, u"x"_s}}).endsWith(u"\n\nConclusion : un défaut.\n"_s));
    }

    void aNoteIsOneLineWhateverItSays()
    {
        const TrialNote note =
            sentAndReceived({.kind = TrialNote::Kind::Fault, .place = u"appel\t1\n"_s, .text = u"é\tà\nl’envers"_s});
        QVERIFY(note.kind == TrialNote::Kind::Fault);
        QCOMPARE(note.place, u"appel 1 "_s);
        QCOMPARE(note.text, u"é à l’envers"_s);
    }

    void aLineThatIsNoNoteIsNoFault()
    {
        QVERIFY(decodeTrialNote("").kind == TrialNote::Kind::Return);
        QCOMPARE(decodeTrialNote("c").place, QString());
        QCOMPARE(decodeTrialNote("cappel").place, u"appel"_s);
    }
};

template class RunnableTests<tst_CheckReport, void>;
#include "tst_checkreport.moc"
