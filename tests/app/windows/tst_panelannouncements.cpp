#include "tests/app/windows/MainWindowTest.h"
#include "tests/common/RunnableTests.h"

#include <QAccessible>
#include <QApplication>
#include <QDateTime>
#include <QLabel>

using namespace Qt::StringLiterals;

namespace {

const QDateTime readTime(QDate(2026, 11, 21), QTime(14, 2));

} // namespace

/// The notifications that screen readers get from the main window's panel.
class tst_PanelAnnouncements final : public MainWindowTest
{
    Q_OBJECT

private:
    QLabel* lineField() const { return m_window->findChild<QLabel*>(u"panelLineField"_s); }

    /// The text of the notification that screen readers get from the panel, or "(none)".
    QString notification() const
    {
        QAccessibleInterface* panel = QAccessible::queryAccessibleInterface(m_window->vitaleInfoView());
        for (int index = 0; index < panel->childCount(); ++index) {
            QAccessibleInterface* child = panel->child(index);
            if (child->role() == QAccessible::Notification && !child->state().invisible)
                return child->text(QAccessible::Name);
        }
        return u"(none)"_s;
    }

    void showCard() const
    {
        m_window->vitaleInfoTextField()->setText(u"SPECIMEN Hélène\n285057511612381\n3 bénéficiaires"_s);
        m_window->panel().setCardTime(PanelLine::CardOrigin::Reader, readTime);
        m_window->panel().announceCard();
    }

private Q_SLOTS:
    void theReadersStateIsShownAndAnnounced()
    {
        m_window->setReader({.state = CardReaderState::Empty});
        QCOMPARE(lineField()->text(), u"Insérez une carte, puis appuyez sur Lire."_s);
        QCOMPARE(notification(), u"(none)"_s);
        m_window->setReader({.state = CardReaderState::NoReader});
        const QString noReader = u"Aucun lecteur – branchez-le."_s;
        QCOMPARE(lineField()->text(), noReader);
        QCOMPARE(notification(), noReader);
        m_window->panel().setCardTime(PanelLine::CardOrigin::Reader, readTime);
        m_window->setReader({.state = CardReaderState::Card});
        QCOMPARE(lineField()->text(), u"Lue le 21/11/2026 à 14:02"_s);
        QCOMPARE(notification(), u"(none)"_s);
        m_window->panel().setNotice(u"Une lecture est en cours."_s);
        m_window->setReader({.state = CardReaderState::Empty});
        QCOMPARE(notification(), u"Une lecture est en cours."_s);
    }

    void noticesAndFailuresAreNotificationsForScreenReaders()
    {
        const QString notice = u"Une lecture est déjà en cours."_s;
        const QString failure = u"Non enregistrée"_s;
        QCOMPARE(notification(), u"(none)"_s);
        m_window->panel().setNotice(notice);
        QCOMPARE(notification(), notice);
        m_window->panel().setNotice(QString());
        QCOMPARE(notification(), u"(none)"_s);
        m_window->panel().setSaveFailure(failure);
        QCOMPARE(notification(), failure);
        m_window->panel().setNotice(QString());
        QCOMPARE(notification(), failure);
        m_window->panel().setNotice(notice);
        QCOMPARE(notification(), notice);
        m_window->panel().setNotice(QString());
        m_window->panel().setSaveFailure(QString());
        QCOMPARE(notification(), u"(none)"_s);
    }

    void theResultOfARequestIsANotificationForScreenReaders()
    {
        m_window->panel().setSent(u"Accueil"_s, readTime);
        QCOMPARE(notification(), u"Envoyée à «\u202FAccueil\u202F» à\u00A014:02"_s);
        m_window->panel().setNotice(QString());
        QCOMPARE(notification(), u"Envoyée à «\u202FAccueil\u202F» à\u00A014:02"_s);
        m_window->panel().clearResult();
        QCOMPARE(notification(), u"(none)"_s);
    }

    void theReadersStateStaysAnnouncedWhenTheCardServiceIsBound()
    {
        m_window->setReader({.state = CardReaderState::Card});
        m_window->panel().setNotice(QString());
        QCOMPARE(notification(), u"Carte présente – appuyez sur Lire."_s);
    }

    void aReadCardIsAnnouncedWithoutItsNumberAndStaysDuringTheNextRequest()
    {
        m_window->panel().setNotice(u"Une lecture est déjà en cours."_s);
        showCard();
        const QString card = u"SPECIMEN Hélène, 3 bénéficiaires"_s;
        QCOMPARE(notification(), card);
        m_window->panel().beginRequest();
        QCOMPARE(notification(), card);
        m_window->panel().setDone(u"Nom copié pour une minute."_s);
        QCOMPARE(notification(), u"Nom copié pour une minute."_s);
    }

    void aTextThatIsReplacedAtOnceCanStillBeFetched()
    {
        showCard();
        QAccessibleInterface* first = nullptr;
        QAccessibleInterface* panel = QAccessible::queryAccessibleInterface(m_window->vitaleInfoView());
        for (int index = 0; index < panel->childCount(); ++index) {
            if (panel->child(index)->text(QAccessible::Name).startsWith(u"SPECIMEN Hélène, "))
                first = panel->child(index);
        }
        QVERIFY(first);
        m_window->panel().setDone(u"Nom copié pour une minute."_s);
        QCOMPARE(first->text(QAccessible::Name), u"SPECIMEN Hélène, 3 bénéficiaires"_s);
        m_window->panel().forgetCard();
        QVERIFY(!first->text(QAccessible::Name).contains(u"SPECIMEN"));
    }

    void aCardThatIsNoLongerTheLastOneIsNotAnnouncedAnyMore()
    {
        showCard();
        m_window->panel().setReadFailed(readTime);
        QCOMPARE(notification(), u"(none)"_s);
        showCard();
        m_window->panel().setReadCancelled(readTime);
        QCOMPARE(notification(), u"(none)"_s);
    }

    void aForgottenCardIsReplacedByWhatTheReaderAsksFor()
    {
        m_window->setReader({.state = CardReaderState::Card});
        showCard();
        m_window->setReader({.state = CardReaderState::Empty});
        m_window->panel().forgetCard();
        QCOMPARE(notification(), u"Insérez une carte, puis appuyez sur Lire."_s);
    }

    void aSlowConnectionAndItsEndAreAnnounced()
    {
        m_window->panel().setConnecting(true);
        QCOMPARE(notification(), u"(none)"_s);
        QTRY_COMPARE(notification(), u"Connexion au lecteur de cartes…"_s);
        m_window->setReader({.state = CardReaderState::Card});
        QCOMPARE(notification(), u"Connexion au lecteur de cartes…"_s);
        m_window->panel().setConnecting(false);
        QCOMPARE(notification(), u"Carte présente – appuyez sur Lire."_s);
    }
};

template class RunnableTests<tst_PanelAnnouncements, QApplication>;
#include "tst_panelannouncements.moc"
