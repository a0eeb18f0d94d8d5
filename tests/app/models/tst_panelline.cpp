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

// An event after a result.
using Next = void (*)(PanelLine&);

const QString hint = u"Insérez une carte, puis appuyez sur Lire."_s;
const QString noReader = u"Aucun lecteur – branchez-le."_s;
const QString cardPresent = u"Carte présente – appuyez sur Lire."_s;

} // namespace

class tst_PanelLine : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void beforeAnyCardTheLineSaysWhatToDo() { QCOMPARE(PanelLine().text(), hint); }

    void theCardsLineShowsItsOriginAndTime()
    {
        PanelLine line;
        line.setCard(PanelLine::CardOrigin::Reader, today(14, 2));
        QCOMPARE(line.text(), u"Lue le 21/11/2026 à 14:02"_s);
        line.setCard(PanelLine::CardOrigin::File, today(14, 3));
        QCOMPARE(line.text(), u"Fichier ouvert le 21/11/2026 à 14:03"_s);
    }

    void aFailedReadIsShownUntilTheNextCard()
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

    void aCancelledReadIsShownAsCancelled()
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

    void thePreviousCardsDayIsShownWhenItIsNotToday()
    {
        PanelLine line;
        line.setCard(PanelLine::CardOrigin::File, today(20, 41).addDays(-1));
        line.setReadFailed(today(8, 5));
        QCOMPARE(line.text(), u"Lecture échouée à 08:05 – carte précédente, fichier ouvert le 20/11/2026 à 20:41"_s);
    }

    void aSlowConnectionIsShownInPlaceOfTheCardsLine()
    {
        PanelLine line;
        line.setConnecting(true);
        QCOMPARE(line.text(), u"Connexion au lecteur de cartes…"_s);
        line.setConnecting(false);
        QCOMPARE(line.text(), hint);
    }

    void beforeAnyCardTheLineShowsTheReadersStateAndWhatToDo_data()
    {
        QTest::addColumn<std::optional<CardReaderState>>("state");
        QTest::addColumn<QString>("text");
        const auto row = [](const char* name, std::optional<CardReaderState> state, const QString& text) {
            QTest::newRow(name) << state << text;
        };
        row("unknown", std::nullopt, hint);
        row("no service", CardReaderState::NoService,
            u"Le service des lecteurs (pcscd) ne répond pas\u00A0: faites-le démarrer."_s);
        row("no reader", CardReaderState::NoReader, noReader);
        row("other reader", CardReaderState::OtherReader,
            u"Ce lecteur ne convient pas\u00A0: branchez un «\u202FFeitian SCR301\u202F»."_s);
        row("empty", CardReaderState::Empty, hint);
        row("card", CardReaderState::Card, cardPresent);
        row("mute card", CardReaderState::MuteCard, u"Carte illisible\u00A0: retournez-la, la puce vers le lecteur."_s);
    }

    void beforeAnyCardTheLineShowsTheReadersStateAndWhatToDo()
    {
        QFETCH(const std::optional<CardReaderState>, state);
        PanelLine line;
        line.setReader({.state = state});
        QTEST(line.text(), "text");
        line.setConnecting(true);
        QCOMPARE(line.text(), u"Connexion au lecteur de cartes…"_s);
    }

    void aReaderStateThatNeedsActionFollowsTheCardsLine()
    {
        PanelLine line;
        line.setReader({.state = CardReaderState::Card, .hasCardCome = true});
        line.setCard(PanelLine::CardOrigin::Reader, today(14, 2));
        const QString read = u"Lue le 21/11/2026 à 14:02"_s;
        QCOMPARE(line.text(), read);
        line.setReader({.state = CardReaderState::Empty, .hasCardLeft = true});
        QCOMPARE(line.text(), read);
        line.setReader({.state = CardReaderState::NoReader});
        QCOMPARE(line.text(), read + u". "_s + noReader);
        line.setSaveFailure(u"Non enregistrée"_s);
        QCOMPARE(line.text(), read + u". "_s + noReader + u"\nNon enregistrée"_s);
        line.setSaveFailure(QString());
        // The present card has been read already, unless it was inserted after the read.
        line.setReader({.state = CardReaderState::Card});
        QCOMPARE(line.text(), read);
        line.setReader({.state = CardReaderState::Card, .hasCardCome = true});
        QCOMPARE(line.text(), read + u". "_s + cardPresent);
        line.setReader({.state = CardReaderState::Card});
        QCOMPARE(line.text(), read + u". "_s + cardPresent);
        line.setReadFailed(today(14, 3));
        const QString failed = u"Lecture échouée à 14:03 – carte précédente, lue à 14:02"_s;
        QCOMPARE(line.text(), failed);
        line.setReader({.state = CardReaderState::NoReader});
        QCOMPARE(line.text(), failed + u". "_s + noReader);
    }

    void failuresAndNoticesAreShownBelowTheCardsLine()
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

    void theResultOfARequestIsShownUntilTheNextCardFailureOrNotice_data()
    {
        QTest::addColumn<Next>("next");
        QTest::addColumn<QString>("told");
        QTest::newRow("card") << Next([](PanelLine& line) { line.setCard(PanelLine::CardOrigin::File, today(9, 0)); })
                              << u""_s;
        QTest::newRow("failed read") << Next([](PanelLine& line) { line.setReadFailed(today(9, 0)); }) << u""_s;
        QTest::newRow("cancelled read") << Next([](PanelLine& line) { line.setReadCancelled(today(9, 0)); }) << u""_s;
        QTest::newRow("failed save") << Next([](PanelLine& line) { line.setSaveFailure(u"Non enregistrée"_s); })
                                     << u"Non enregistrée"_s;
        QTest::newRow("forgotten card") << Next([](PanelLine& line) { line.forgetCard(); }) << u""_s;
        QTest::newRow("cleared") << Next([](PanelLine& line) { line.clearResult(); }) << u""_s;
        QTest::newRow("notice, which goes") << Next([](PanelLine& line) {
            line.setNotice(u"Une lecture est en cours."_s);
            line.setNotice(QString());
        }) << u""_s;
    }

    void theResultOfARequestIsShownUntilTheNextCardFailureOrNotice()
    {
        QFETCH(const Next, next);
        PanelLine line;
        line.setSaved(u"/attestations/SPECIMEN Hélène.pdf"_s);
        QCOMPARE(line.text(), hint + u"\nEnregistrée\u00A0: SPECIMEN Hélène.pdf"_s);
        QCOMPARE(line.savedPath(), u"/attestations/SPECIMEN Hélène.pdf"_s);
        line.setNotice(QString());
        QCOMPARE(line.told(), u"Enregistrée\u00A0: SPECIMEN Hélène.pdf"_s);
        next(line);
        QTEST(line.told(), "told");
        QCOMPARE(line.savedPath(), QString());
    }

    void aPrintIsShownWithItsPrinterAndTime()
    {
        PanelLine line;
        line.setSaveFailure(u"Non enregistrée"_s);
        line.setSent(u"Accueil"_s, today(21, 25));
        QCOMPARE(line.told(), u"Envoyée à «\u202FAccueil\u202F» à\u00A021:25"_s);
        QCOMPARE(line.savedPath(), QString());
        // The attestation is still not saved.
        line.clearResult();
        QCOMPARE(line.told(), u"Non enregistrée"_s);
    }

    void aResultReplacesANotice()
    {
        PanelLine line;
        line.setNotice(u"Un enregistrement est en cours."_s);
        line.setSaved(u"/a/B.pdf"_s);
        QCOMPARE(line.told(), u"Enregistrée\u00A0: B.pdf"_s);
        QCOMPARE(line.savedPath(), u"/a/B.pdf"_s);
    }

    void lineBreaksInAFileNameBecomeBlanks()
    {
        PanelLine line;
        line.setSaved(u"/a/B\nC\u0085D.pdf"_s);
        QCOMPARE(line.told(), u"Enregistrée\u00A0: B C D.pdf"_s);
    }

    void forgettingTheCardRemovesTextsThatMayNameThePatient()
    {
        PanelLine line;
        line.setCard(PanelLine::CardOrigin::Reader, today(14, 2));
        line.setReadFailed(today(14, 3));
        line.setSaveFailure(u"Non enregistrée"_s);
        line.setSaved(u"/attestations/SPECIMEN Hélène.pdf"_s);
        line.setNotice(u"Une lecture est en cours."_s);
        line.setReader({.state = CardReaderState::NoReader});
        line.forgetCard();
        QCOMPARE(line.text(), noReader);
        QCOMPARE(line.savedPath(), QString());
        QVERIFY(!line.isCardEarlier());
    }
};

template class RunnableTests<tst_PanelLine, void>;
#include "tst_panelline.moc"
