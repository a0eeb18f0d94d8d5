#include "platform/gui/QuestionAlert.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

const QuestionAlert question{u"Faire ?"_s, u"C’est <b>fait</b>."_s, u"Oui"_s, u"Non"_s, u"Plus jamais"_s};

QMessageBox* shownBox()
{
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

QPushButton* buttonOf(const QMessageBox& box, const QString& text)
{
    const QList<QAbstractButton*> buttons = box.buttons();
    const auto found =
        std::ranges::find_if(buttons, [&text](const QAbstractButton* button) { return button->text() == text; });
    return found == buttons.end() ? nullptr : qobject_cast<QPushButton*>(*found);
}

// Asks the question, and calls a function with the box when it is shown.
QuestionAnswer answerBy(const std::function<void(QMessageBox&)>& act)
{
    QTimer::singleShot(0, qApp, [&act] { act(*shownBox()); });
    return askQuestion(question, true);
}

void closeBox(QMessageBox& box)
{
    box.close();
}

void pressEscape(QMessageBox& box)
{
    QTest::keyClick(&box, Qt::Key_Escape);
}

} // namespace

class tst_QuestionAlert : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void withoutAWindowTheApplicationIsNotActive() { QVERIFY(!isApplicationActive()); }

    void theBoxShowsTheGivenTexts()
    {
        QStringList texts;
        bool isDefault = false;
        bool isSmall = false;
        Qt::TextFormat format = Qt::AutoText;
        static_cast<void>(answerBy([&](QMessageBox& box) {
            texts = {box.text(), box.informativeText(), box.checkBox()->text()};
            isDefault = buttonOf(box, u"Oui"_s)->isDefault() && !buttonOf(box, u"Non"_s)->isDefault();
            isSmall = box.checkBox()->font().pointSizeF() < box.font().pointSizeF();
            format = box.textFormat();
            box.close();
        }));
        QCOMPARE(texts, (QStringList{u"Faire ?"_s, u"C’est <b>fait</b>."_s, u"Plus jamais"_s}));
        QVERIFY(isDefault);
        QVERIFY(isSmall);
        QCOMPARE(format, Qt::PlainText);
    }

    void eachWayToCloseTheBoxGivesItsAnswer_data()
    {
        using Act = std::function<void(QMessageBox&)>;
        QTest::addColumn<Act>("act");
        QTest::addColumn<bool>("isAccepted");
        QTest::newRow("the first button") << Act([](QMessageBox& box) { buttonOf(box, u"Oui"_s)->click(); }) << true;
        QTest::newRow("Return") << Act([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); }) << true;
        QTest::newRow("the second button") << Act([](QMessageBox& box) { buttonOf(box, u"Non"_s)->click(); }) << false;
        QTest::newRow("Escape") << Act(pressEscape) << false;
        QTest::newRow("closing") << Act(closeBox) << false;
    }

    void eachWayToCloseTheBoxGivesItsAnswer()
    {
        QFETCH(const std::function<void(QMessageBox&)>, act);
        QFETCH(const bool, isAccepted);
        const QuestionAnswer answer = answerBy(act);
        QCOMPARE(answer.isAccepted, isAccepted);
        QVERIFY(!answer.isSuppressionOn);
    }

    void theStateOfTheCheckBoxIsReturned()
    {
        const QuestionAnswer answer = answerBy([](QMessageBox& box) {
            box.checkBox()->click();
            pressEscape(box);
        });
        QVERIFY(!answer.isAccepted);
        QVERIFY(answer.isSuppressionOn);
    }

    void anAlertWaitsForItsButton()
    {
        QString text;
        QTimer::singleShot(0, qApp, [&text] {
            text = shownBox()->text();
            shownBox()->buttons().constFirst()->click();
        });
        showAlert(u"Raté"_s);
        QCOMPARE(text, u"Raté"_s);
    }
};

template class RunnableTests<tst_QuestionAlert, QApplication>;
#include "tst_questionalert.moc"
