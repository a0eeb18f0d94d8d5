#include "platform/gui/AlertQueue.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace {

const Error noReader(u"Pelmora"_s, -20, u"Aucun lecteur <b>n'a été</b> trouvé & voilà."_s);
const Error noText(u"Pelmora"_s, -10);

} // namespace

class tst_AlertQueue : public TestCase
{
    Q_OBJECT

private:
    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<AlertQueue> m_alerts;

    QList<QMessageBox*> boxes() const
    {
        QList<QMessageBox*> visible;
        for (QMessageBox* box : m_window->findChildren<QMessageBox*>()) {
            if (box->isVisible())
                visible.append(box);
        }
        return visible;
    }
    // The texts of all shown alerts.
    QStringList shown() const
    {
        QStringList texts;
        for (const QMessageBox* box : boxes())
            texts.append(box->text());
        return texts;
    }
    void pressOk() const
    {
        for (QMessageBox* box : boxes())
            QTest::mouseClick(box->buttons().constFirst(), Qt::LeftButton);
    }

private Q_SLOTS:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        m_alerts = std::make_unique<AlertQueue>(m_window.get());
    }

    void cleanup()
    {
        m_alerts.reset();
        m_window.reset();
    }

    void anErrorIsShownOverItsWindowAsPlainText()
    {
        m_alerts->presentError(noReader);
        QCOMPARE(boxes().size(), 1);
        const QMessageBox* box = boxes().constFirst();
        QCOMPARE(box->text(), noReader.localizedDescription());
        QCOMPARE(box->textFormat(), Qt::PlainText);
        QCOMPARE(box->windowTitle(), u"Pelmora"_s);
        QCOMPARE(box->icon(), QMessageBox::Warning);
        QCOMPARE(box->windowModality(), Qt::WindowModal);
        QCOMPARE(box->parentWidget(), m_window.get());
        QCOMPARE(box->buttons().size(), 1);
        QCOMPARE(box->buttons().constFirst()->text(), u"OK"_s);
    }

    void anErrorsDetailIsShownBelowItsTextUnchanged()
    {
        m_alerts->presentError(noReader.withDetail(u"Le service <i>ne répond pas</i>."_s));
        const QMessageBox* box = boxes().constFirst();
        QCOMPARE(box->text(), noReader.localizedDescription());
        QCOMPARE(box->informativeText(), u"Le service <i>ne répond pas</i>."_s);
        const auto* label = box->findChild<QLabel*>(u"qt_msgbox_informativelabel"_s);
        QVERIFY(label);
        QCOMPARE(label->textFormat(), Qt::PlainText);
        // Another detail is another alert.
        m_alerts->presentError(noReader);
        m_alerts->presentError(noReader);
        pressOk();
        QTRY_COMPARE(boxes().size(), 1);
        QCOMPARE(boxes().constFirst()->informativeText(), QString());
        pressOk();
        QTRY_COMPARE(boxes().size(), 0);
    }

    void anErrorWithATopicOffersHelpAndStaysOpen()
    {
        m_alerts->presentError(noReader, u"erreur-20"_s);
        m_alerts->presentError(noText);
        const QSignalSpy asked(m_alerts.get(), &AlertQueue::helpRequested);
        QCOMPARE(boxes().size(), 1);
        const QMessageBox* box = boxes().constFirst();
        QCOMPARE(box->buttons().size(), 2);
        for (QAbstractButton* button : box->buttons()) {
            if (box->buttonRole(button) == QMessageBox::HelpRole)
                button->click();
        }
        QCOMPARE(asked.count(), 1);
        QCOMPARE(asked.first().first().toString(), u"erreur-20"_s);
        QVERIFY(box->isVisible());
        box->defaultButton()->click();
        QTRY_COMPARE(shown(), QStringList{noText.localizedDescription()});
        QCOMPARE(boxes().constFirst()->buttons().size(), 1);
    }

    void aMessageHasItsOwnTitle()
    {
        m_alerts->presentMessage(u"Titre"_s, u"Texte."_s);
        QCOMPARE(shown(), QStringList{u"Texte."_s});
        QCOMPARE(boxes().constFirst()->windowTitle(), u"Titre"_s);
        QCOMPARE(boxes().constFirst()->icon(), QMessageBox::Information);
    }

    void alertsFollowOneAnother()
    {
        m_alerts->presentError(noReader);
        m_alerts->presentError(noText);
        m_alerts->presentMessage(u"Titre"_s, u"Texte."_s);
        QCOMPARE(shown(), QStringList{noReader.localizedDescription()});
        pressOk();
        QCOMPARE(shown(), QStringList{noText.localizedDescription()});
        pressOk();
        QCOMPARE(shown(), QStringList{u"Texte."_s});
        pressOk();
        QVERIFY(shown().isEmpty());
    }

    void anAlertThatIsShownOrQueuedIsNotRepeated()
    {
        for (int count = 0; count < 5; ++count) {
            m_alerts->presentError(noReader);
            m_alerts->presentMessage(u"Titre"_s, u"Texte."_s);
        }
        pressOk();
        QCOMPARE(shown(), QStringList{u"Texte."_s});
        pressOk();
        QVERIFY(shown().isEmpty());
    }

    void aWarningFollowsTheMessageThatItCorrects()
    {
        const AlertText message{u"Titre"_s, u"Fait."_s};
        const AlertText warning{u"Non"_s, u"Rien n’est fait."_s};
        for (int count = 0; count < 3; ++count)
            m_alerts->presentMessageThenWarning(message, warning);
        QCOMPARE(shown(), QStringList{u"Fait."_s});
        pressOk();
        QCOMPARE(shown(), QStringList{u"Rien n’est fait."_s});
        QCOMPARE(boxes().constFirst()->icon(), QMessageBox::Warning);
        QCOMPARE(boxes().constFirst()->windowTitle(), u"Non"_s);

        // Repeated while the warning is shown: the message is shown again, and the warning after it.
        m_alerts->presentMessageThenWarning(message, warning);
        pressOk();
        QCOMPARE(shown(), QStringList{u"Fait."_s});
        pressOk();
        QCOMPARE(shown(), QStringList{u"Rien n’est fait."_s});
        // A message without a correction removes the queued warning.
        m_alerts->presentMessage(message.title, message.text);
        pressOk();
        QCOMPARE(shown(), QStringList{u"Fait."_s});
        pressOk();
        QVERIFY(shown().isEmpty());
    }

    void anAlertThatWasReadIsShownAgain()
    {
        m_alerts->presentError(noReader);
        pressOk();
        QVERIFY(shown().isEmpty());
        m_alerts->presentError(noReader);
        QCOMPARE(shown(), QStringList{noReader.localizedDescription()});
    }

    void escapeAndReturnCloseAnAlert_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Escape") << int{Qt::Key_Escape};
        QTest::newRow("Return") << int{Qt::Key_Return};
    }

    void escapeAndReturnCloseAnAlert()
    {
        QFETCH(const int, key);
        m_alerts->presentError(noReader);
        m_alerts->presentError(noText);
        QTest::keyClick(boxes().constFirst(), static_cast<Qt::Key>(key));
        QCOMPARE(shown(), QStringList{noText.localizedDescription()});
    }

    void anAlertWaitsUntilItsNewWindowIsPlaced()
    {
        m_alerts.reset();
        m_window = std::make_unique<QWidget>();
        m_window->setGeometry(200, 300, 500, 200);
        m_alerts = std::make_unique<AlertQueue>(m_window.get());
        m_window->show();
        m_alerts->presentError(noReader);
        m_alerts->presentError(noText);
        QVERIFY(shown().isEmpty());
        QTRY_COMPARE(shown(), QStringList{noReader.localizedDescription()});
        QVERIFY(m_window->frameGeometry().contains(boxes().constFirst()->geometry().center()));
        pressOk();
        QCOMPARE(shown(), QStringList{noText.localizedDescription()});
    }

    void anAlertForAWindowHiddenAgainIsShownWithTheNextAlert()
    {
        m_window->hide();
        m_window->show();
        m_alerts->presentError(noReader);
        m_window->hide();
        m_alerts->presentError(noText);
        QCOMPARE(shown(), QStringList{noReader.localizedDescription()});
        pressOk();
        QCOMPARE(shown(), QStringList{noText.localizedDescription()});
        pressOk();
        QCoreApplication::processEvents();
        QVERIFY(shown().isEmpty());
    }

    void anAlertOfAHiddenWindowIsShownAtOnce()
    {
        m_window->hide();
        m_alerts->presentError(noReader);
        QCOMPARE(shown(), QStringList{noReader.localizedDescription()});
    }

    void closedAlertsAreDeleted()
    {
        for (int count = 0; count < 20; ++count) {
            m_alerts->presentError(noReader);
            pressOk();
        }
        QTRY_VERIFY(m_window->findChildren<QMessageBox*>().isEmpty());
    }

    void deletingTheQueueClosesItsAlert()
    {
        m_alerts->presentError(noReader);
        m_alerts->presentError(noText);
        m_alerts.reset();
        QVERIFY(m_window->findChildren<QMessageBox*>().isEmpty());
    }
};

template class RunnableTests<tst_AlertQueue, QApplication>;
#include "tst_alertqueue.moc"
