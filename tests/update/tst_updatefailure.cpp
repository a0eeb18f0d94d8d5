#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "update/UpdateFailure.h"

#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_UpdateFailure : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void everyFailureHasItsOwnText()
    {
        QSet<QString> texts;
        const int count = static_cast<int>(UpdateFailure::CannotReadBack) + 1;
        for (int number = 0; number < count; ++number) {
            const QString text = textOf(static_cast<UpdateFailure>(number)).toString();
            QVERIFY2(!text.isEmpty(), qPrintable(QString::number(number)));
            texts.insert(text);
        }
        QCOMPARE(texts.size(), count);
        QCOMPARE(updateFailureTexts.size(), static_cast<std::size_t>(count));
    }

    void textsAreSentencesInFrenchTypography()
    {
        for (const UpdateFailureText& row : updateFailureTexts) {
            const QString text = row.text.toString();
            QVERIFY2(text.front().isUpper() && text.endsWith(u'.'), qPrintable(text));
            QVERIFY2(!text.contains(u'\'') && !text.contains(u" ;"_s) && !text.contains(u" :"_s), qPrintable(text));
        }
    }
};

template class RunnableTests<tst_UpdateFailure, void>;
#include "tst_updatefailure.moc"
