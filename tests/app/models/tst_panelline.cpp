#include "app/models/PanelLine.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QDateTime today(int hour, int minute)
{
    return {QDate(2026, 11, 21), QTime(hour, minute)};
}

const QString hint = u"Insérez une carte, puis appuyez sur Lire."_s;

} // namespace

class tst_PanelLine : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void beforeAnyCardItSaysWhatToDo() { QCOMPARE(PanelLine().text(), hint); }

    void aCardsLineTellsWhereItCameFromAndWhen()
    {
        PanelLine line;
        line.setCard(PanelLine::CardOrigin::Reader, today(14, 2));
        QCOMPARE(line.text(), u"Lue le 21/11/2026 à 14:02"_s);
        line.setCard(PanelLine::CardOrigin::File, today(14, 3));
        QCOMPARE(line.text(), u"Fichier ouvert le 21/11/2026 à 14:03"_s);
    }

    void aFailedReadIsToldUntilTheNextCard()
    {
        PanelLine line;
        line.setReadFailed(today(20, 41));
        QCOMPARE(line.text(), u"Lecture échouée à 20:41"_s);
        line.setCard(PanelLine::CardOrigin::Reader, today(20, 41));
        QVERIFY(!line.isReadFailed());
        line.setReadFailed(today(20, 57));
        QVERIFY(line.isReadFailed());
        QCOMPARE(line.text(), u"Lecture échouée à 20:57 – carte précédente, lue à 20:41"_s);
        line.setCard(PanelLine::CardOrigin::Reader, today(21, 0));
        QCOMPARE(line.text(), u"Lue le 21/11/2026 à 21:00"_s);
    }

    void aCancelledReadIsToldAsSuch()
    {
        PanelLine line;
        line.setReadCancelled(today(20, 41));
        QVERIFY(line.isReadFailed());
        QCOMPARE(line.text(), u"Lecture annulée à 20:41"_s);
        line.setCard(PanelLine::CardOrigin::Reader, today(20, 45));
        QVERIFY(!line.isReadFailed());
        line.setReadCancelled(today(20, 57));
        QCOMPARE(line.text(), u"Lecture annulée à 20:57 – carte précédente, lue à 20:45"_s);
        line.setReadFailed(today(20, 58));
        QCOMPARE(line.text(), u"Lecture échouée à 20:58 – carte précédente, lue à 20:45"_s);
    }

    void thePreviousCardsDayIsToldWhenItWasAnother()
    {
        PanelLine line;
        line.setCard(PanelLine::CardOrigin::File, today(20, 41).addDays(-1));
        line.setReadFailed(today(8, 5));
        QCOMPARE(line.text(), u"Lecture échouée à 08:05 – carte précédente, fichier ouvert le 20/11/2026 à 20:41"_s);
    }

    void aConnectionThatTakesLongStandsInTheCardsPlace()
    {
        PanelLine line;
        line.setConnecting(true);
        QCOMPARE(line.text(), u"Connexion au lecteur de cartes…"_s);
        line.setConnecting(false);
        QCOMPARE(line.text(), hint);
    }

    void whatTheUserIsToldNeverHidesTheCardsLine()
    {
        PanelLine line;
        line.setCard(PanelLine::CardOrigin::Reader, today(14, 2));
        line.setSaveFailure(u"Non enregistrée"_s);
        QCOMPARE(line.text(), u"Lue le 21/11/2026 à 14:02\nNon enregistrée"_s);
        line.setNotice(u"Une lecture est en cours."_s);
        QCOMPARE(line.text(), u"Lue le 21/11/2026 à 14:02\nUne lecture est en cours."_s);
        line.setNotice(QString());
        QCOMPARE(line.text(), u"Lue le 21/11/2026 à 14:02\nNon enregistrée"_s);
        line.setSaveFailure(QString());
        QCOMPARE(line.text(), u"Lue le 21/11/2026 à 14:02"_s);
    }
};

template class RunnableTests<tst_PanelLine, void>;
#include "tst_panelline.moc"
