#include "platform/gui/FrenchTexts.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QLocale>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_FrenchTexts : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        installFrenchTexts();
    }

    void numbersAndDatesAreFrench() { QCOMPARE(QLocale().language(), QLocale::French); }

    void theButtonsOfDialogsAreFrench()
    {
        const QDialogButtonBox box(QDialogButtonBox::Cancel);
        QCOMPARE(box.button(QDialogButtonBox::Cancel)->text().remove(u'&'), u"Annuler"_s);
    }

    void textsMissingInQtsTranslationAreTranslated()
    {
        QCOMPARE(QCoreApplication::translate("QPrintSettingsOutput", "Long side binding"),
                 u"Reliure sur le grand côté"_s);
    }

    void aTextWithoutTranslationIsNotChanged()
    {
        QCOMPARE(QCoreApplication::translate("QPrintSettingsOutput", "Frobnicate"), u"Frobnicate"_s);
    }
};

template class RunnableTests<tst_FrenchTexts, QApplication>;
#include "tst_frenchtexts.moc"
