#include "card/PelmoraError.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

/// The text in UTF-8; null when the error has none.
QByteArray descriptionOf(const Error& error)
{
    return error.description() ? error.description()->toUtf8() : QByteArray();
}

using Factory = Error (*)();

} // namespace

class tst_PelmoraError : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void eachErrorHasItsCodeAndItsText_data()
    {
        QTest::addColumn<Factory>("make");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("text");
        const auto row = [](const char* name, Factory make, int code, const QByteArray& text) {
            QTest::newRow(name) << make << code << text;
        };
        row("generalError", &PelmoraError::generalError, -10, {});
        row("internalError", &PelmoraError::internalError, -11, {});
        row("writeError", &PelmoraError::writeError, -12,
            "Une erreur est survenue pendant l'enregistrement de l'attestation. R\xC3\xA9"
            "essayez l'op\xC3\xA9ration.");
        row("noReader", &PelmoraError::noReader, -20,
            "Aucun lecteur de carte n'a \xC3\xA9t\xC3\xA9 trouv\xC3\xA9. V\xC3\xA9rifiez les branchements.");
        row("badReader", &PelmoraError::badReader, -21,
            "Le lecteur fournit pas MORVEL n'a pas \xC3\xA9t\xC3\xA9 trouv\xC3\xA9. V\xC3\xA9rifiez les branchements.");
        row("readerError", &PelmoraError::readerError, -22,
            "Erreur lecteur. V\xC3\xA9rifiez les branchements du lecteur.");
        row("vitaleNotPresent", &PelmoraError::vitaleNotPresent, -30, "La carte vitale n'est pas dans le lecteur.");
        row("vitaleReadError", &PelmoraError::vitaleReadError, -31,
            "Erreur de lecture de la carte Vitale.\nV\xC3\xA9rifiez le branchement du lecteur ou la pr\xC3\xA9sence de "
            "la "
            "carte Vitale dans le lecteur ou le sens d'insertion de la carte Vitale.");
        row("vitaleNoBen", &PelmoraError::vitaleNoBen, -40,
            "La carte Vitale ne comporte aucun b\xC3\xA9n\xC3\xA9"
            "ficiaire.");
    }

    void eachErrorHasItsCodeAndItsText()
    {
        QFETCH(Factory, make);
        QFETCH(int, code);
        QFETCH(QByteArray, text);
        const Error error = make();
        QCOMPARE(error.domain(), u"Pelmora"_s);
        QCOMPARE(error.code(), code);
        QCOMPARE(descriptionOf(error), text);
        QCOMPARE(error.description().has_value(), !text.isNull());
    }

    void aResultCodeGivesItsErrorOrTheGeneralOne_data()
    {
        QTest::addColumn<qint64>("result");
        QTest::addColumn<int>("code");
        const QHash<qint64, int> known{{11, -30}, {13, -22}, {15, -31}, {17, -31}, {25, -31}};
        const auto row = [&known](qint64 result) {
            QTest::newRow(QByteArray::number(result).constData()) << result << known.value(result, -10);
        };
        for (qint64 result = -5; result <= 40; ++result)
            row(result);
        // A value is not a known code when only its low 32 bits equal that code.
        constexpr qint64 beyond = qint64(1) << 32;
        for (const qint64 result :
             {beyond + 11, -beyond + 13, std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max()})
            row(result);
    }

    void aResultCodeGivesItsErrorOrTheGeneralOne()
    {
        QFETCH(qint64, result);
        QFETCH(int, code);
        const Error error = PelmoraError::errorForCode(result);
        QCOMPARE(error.domain(), u"Pelmora"_s);
        QCOMPARE(error.code(), code);
        QCOMPARE(error.description().has_value(), code != -10);
    }

    void theErrorsOfResultCodesHaveTheTextsOfTheCatalogue()
    {
        QCOMPARE(PelmoraError::errorForCode(11).description(), PelmoraError::vitaleNotPresent().description());
        QCOMPARE(PelmoraError::errorForCode(13).description(), PelmoraError::readerError().description());
        QCOMPARE(PelmoraError::errorForCode(25).description(), PelmoraError::vitaleReadError().description());
        QCOMPARE(PelmoraError::errorForCode(25).description().value_or(QString()).count(u'\n'), 1);
    }
};

template class RunnableTests<tst_PelmoraError, QCoreApplication>;
#include "tst_pelmoraerror.moc"
