#include "platform/Error.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_Error : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aDescriptionIsShownUnchanged()
    {
        const Error error(u"Pelmora"_s, -30, u"Texte\nsur deux lignes."_s);
        QCOMPARE(error.localizedDescription(), u"Texte\nsur deux lignes."_s);
    }

    void withoutADescriptionTheDomainAndTheCodeAreShown()
    {
        const Error error(u"Pelmora"_s, -10);
        QVERIFY(!error.description());
        QCOMPARE(error.localizedDescription(), u"L’opération n’a pas pu s’achever. (erreur Pelmora -10.)"_s);
    }

    void aPercentSignInTheDomainIsShown()
    {
        QCOMPARE(Error(u"%2"_s, 7).localizedDescription(), u"L’opération n’a pas pu s’achever. (erreur %2 7.)"_s);
    }

    void theDetailIsSeparateFromTheText()
    {
        const Error plain(u"Pelmora"_s, -22, u"Erreur lecteur."_s);
        QCOMPARE(plain.detail(), QString());
        QCOMPARE(plain.localizedDescriptionWithDetail(), u"Erreur lecteur."_s);
        const Error error = plain.withDetail(u"Fermez l’autre programme."_s);
        QCOMPARE(error.detail(), u"Fermez l’autre programme."_s);
        QCOMPARE(error.localizedDescription(), u"Erreur lecteur."_s);
        QCOMPARE(error.localizedDescriptionWithDetail(), u"Erreur lecteur.\nFermez l’autre programme."_s);
        QVERIFY(error == plain);
    }

    void errorsAreEqualWhenDomainAndCodeAre()
    {
        QVERIFY(Error(u"A"_s, 1, u"x"_s) == Error(u"A"_s, 1));
        QVERIFY(!(Error(u"A"_s, 1) == Error(u"A"_s, 2)));
        QVERIFY(!(Error(u"A"_s, 1) == Error(u"B"_s, 1)));
    }
};

template class RunnableTests<tst_Error, void>;
#include "tst_error.moc"
