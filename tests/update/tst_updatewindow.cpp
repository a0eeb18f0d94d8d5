#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/common/TextSize.h"
#include "tests/update/ButtonIn.h"
#include "tests/update/UpdateFixture.h"
#include "update/UpdateSession.h"
#include "update/UpdateWindow.h"

#include <QApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using State = UpdateSession::State;
using Then = UpdateServer::Then;

namespace {

// The visible content: the two texts, the widgets below them, and the buttons from left to right.
QStringList seenIn(const UpdateWindow& window)
{
    QStringList seen{window.findChild<QLabel*>(u"headlineLabel"_s)->text(),
                     window.findChild<QLabel*>(u"detailLabel"_s)->text()};
    if (window.findChild<QPlainTextEdit*>()->isVisible())
        seen.append(u"[notes]"_s);
    if (window.findChild<QProgressBar*>()->isVisible())
        seen.append(u"[progress]"_s);
    for (const QPushButton* button : window.findChildren<QPushButton*>()) {
        if (button->isVisible())
            seen.append(button->text());
    }
    return seen;
}

bool reaches(const UpdateSession& session, State state)
{
    return QTest::qWaitFor([&] { return session.state() == state; }, 20'000);
}

} // namespace

class tst_UpdateWindow : public TestCase
{
    Q_OBJECT

private:
    std::unique_ptr<UpdateFixture> m_fixture;
    std::unique_ptr<UpdateSession> m_session;
    std::unique_ptr<UpdateWindow> m_window;

    void show(const UpdateConfiguration& configuration)
    {
        m_window.reset();
        m_session = std::make_unique<UpdateSession>(configuration);
        m_window = std::make_unique<UpdateWindow>(*m_session);
        m_session->start();
        m_window->show();
    }

private Q_SLOTS:
    void init() { m_fixture = std::make_unique<UpdateFixture>(); }
    void cleanup()
    {
        m_window.reset();
        m_session.reset();
        m_fixture.reset();
    }

    void aSearchShowsAProgressBarAndCanBeCancelled()
    {
        m_fixture->server().setAnswer(u"/feed"_s, {{}, {}, Then::Stall, false});
        show(m_fixture->configuration());
        const QStringList expected{u"Recherche d’une mise à jour…"_s, u"Vous utilisez la version 1.0."_s,
                                   u"[progress]"_s, u"Annuler"_s};
        QCOMPARE(seenIn(*m_window), expected);
        QSignalSpy finished(m_window.get(), &QDialog::finished);
        buttonIn(*m_window, u"Annuler"_s)->click();
        QCOMPARE(finished.size(), 1);
    }

    void anUpToDateProgramIsReportedAsSuch()
    {
        m_fixture->publish("1.0");
        show(m_fixture->configuration());
        QVERIFY(reaches(*m_session, State::UpToDate));
        const QStringList expected{u"Pelmora est à jour."_s,
                                   u"Vous utilisez la version 1.0, il n’y en a pas de plus récente."_s, u"OK"_s};
        QCOMPARE(seenIn(*m_window), expected);
    }

    void aNewerVersionIsShownWithItsNotes()
    {
        m_fixture->publish("2.0", "<description><![CDATA[<p>Plus rapide</p><img src=\"http://x.example/\">]]>"
                                  "</description>");
        show(m_fixture->configuration());
        QVERIFY(reaches(*m_session, State::Available));
        const QStringList expected{u"La version 2.0 de Pelmora est disponible."_s,
                                   u"Vous utilisez la version 1.0."_s,
                                   u"[notes]"_s,
                                   u"Ignorer cette version"_s,
                                   u"Plus tard"_s,
                                   u"Télécharger"_s};
        QCOMPARE(seenIn(*m_window), expected);
        QCOMPARE(m_window->findChild<QPlainTextEdit*>()->toPlainText(), u"Plus rapide"_s);
        QVERIFY(buttonIn(*m_window, u"Télécharger"_s)->isDefault());
    }

    void textsOfAFeedAreShownAsPlainTextAndLoadNothing()
    {
        const QByteArray image = m_fixture->server().address(u"/spy.png"_s).toEncoded();
        m_fixture->publish("2.0",
                           "<sparkle:shortVersionString>&lt;img src='" + image +
                               "'&gt;</sparkle:shortVersionString><description>&lt;p&gt;Mieux&lt;/p&gt;&lt;img src='" +
                               image + "'&gt;</description>");
        show(m_fixture->configuration());
        QVERIFY(reaches(*m_session, State::Available));
        const auto* headline = m_window->findChild<QLabel*>(u"headlineLabel"_s);
        QVERIFY2(headline->text().contains("<img src="_L1), qPrintable(headline->text()));
        QCOMPARE(headline->textFormat(), Qt::PlainText);
        QCOMPARE(m_window->findChild<QLabel*>(u"detailLabel"_s)->textFormat(), Qt::PlainText);
        QCOMPARE(m_window->findChild<QPlainTextEdit*>()->toPlainText(), u"Mieux"_s);
        m_window->grab();
        QCoreApplication::processEvents();
        QCOMPARE(m_fixture->server().requests().size(), 1);
    }

    void aVersionWithoutNotesShowsNoEmptyBox()
    {
        show(m_fixture->configuration());
        QVERIFY(reaches(*m_session, State::Available));
        QVERIFY(!seenIn(*m_window).contains(u"[notes]"_s));
    }

    void aVersionOfTheSameNameIsShownWithItsNumber()
    {
        UpdateConfiguration configuration = m_fixture->configuration();
        configuration.shortVersion = u"2.0"_s;
        show(configuration);
        QVERIFY(reaches(*m_session, State::Available));
        QCOMPARE(seenIn(*m_window).at(0), u"La version 2.0 (2.0) de Pelmora est disponible."_s);
    }

    void aVersionForANewerSystemIsExplained()
    {
        m_fixture->publish("2.0", "<sparkle:minimumSystemVersion>9.9</sparkle:minimumSystemVersion>");
        show(m_fixture->configuration());
        QVERIFY(reaches(*m_session, State::NeedsNewerSystem));
        const QStringList expected{
            u"La version 2.0 de Pelmora ne convient pas à ce système."_s,
            u"Elle demande un système plus récent que celui de cet ordinateur. Vous pouvez continuer à "
            u"utiliser la version 1.0."_s,
            u"OK"_s};
        QCOMPARE(seenIn(*m_window), expected);
    }

    void aFailureIsShownWithItsText()
    {
        UpdateConfiguration configuration = m_fixture->configuration();
        configuration.feed.reset();
        show(configuration);
        const QStringList withoutFeed{u"Aucune mise à jour n’a pu être obtenue."_s,
                                      textOf(UpdateFailure::NoFeed).toString(), u"OK"_s};
        QCOMPARE(seenIn(*m_window), withoutFeed);

        m_fixture->setFeed("Bonjour");
        show(m_fixture->configuration());
        QVERIFY(reaches(*m_session, State::Failed));
        const QStringList withBadFeed{u"Aucune mise à jour n’a pu être obtenue."_s,
                                      textOf(UpdateFailure::NotAFeed).toString(), u"OK"_s};
        QCOMPARE(seenIn(*m_window), withBadFeed);
    }

    void aPackageManagersProgramRefersToIt()
    {
        UpdateConfiguration configuration = m_fixture->configuration();
        configuration.isPackaged = true;
        show(configuration);
        const QStringList expected{u"Pelmora se met à jour avec votre système."_s,
                                   textOf(UpdateFailure::Packaged).toString(), u"OK"_s};
        QCOMPARE(seenIn(*m_window), expected);
    }

    void aDownloadShowsItsProgress()
    {
        const QByteArray package = UpdateFixture::package();
        m_fixture->server().setAnswer(u"/pelmora.deb"_s, {"HTTP/1.1 200 OK\r\nContent-Length: 3000000\r\n",
                                                          package.first(1'500'000), Then::Stall});
        show(m_fixture->configuration());
        QVERIFY(reaches(*m_session, State::Available));
        buttonIn(*m_window, u"Télécharger"_s)->click();
        const auto* bar = m_window->findChild<QProgressBar*>();
        QTRY_COMPARE(bar->value() * 2, bar->maximum());
        const QStringList expected{u"Téléchargement de la version 2.0…"_s, u"1,5\u00A0Mo sur 3,0\u00A0Mo"_s,
                                   u"[progress]"_s, u"Annuler"_s};
        QCOMPARE(seenIn(*m_window), expected);

        buttonIn(*m_window, u"Annuler"_s)->click();
        QCOMPARE(m_session->state(), State::Available);
        QVERIFY(m_window->isVisible());
    }

    void aPackageThatIsReadyIsExplained()
    {
        show(m_fixture->configuration());
        QVERIFY(reaches(*m_session, State::Available));
        buttonIn(*m_window, u"Télécharger"_s)->click();
        QVERIFY(reaches(*m_session, State::Ready));
        const QStringList expected{
            u"La version 2.0 est prête à être installée."_s,
            u"Le paquet est signé par l’éditeur de Pelmora. Il vient d’être ouvert avec le programme "
            u"d’installation de votre bureau\u202F: suivez ses indications."_s,
            u"OK"_s};
        QCOMPARE(seenIn(*m_window), expected);

        m_window->setTakenByDesktop(false);
        QCOMPARE(seenIn(*m_window).at(1),
                 u"Le paquet est signé par l’éditeur de Pelmora, mais votre bureau n’a pas de programme pour l’ouvrir. "
                 u"Il se trouve ici\u202F: "_s +
                     m_session->packagePath());
    }

    void laterClosesTheWindowAndIgnoringEmitsItsSignal()
    {
        show(m_fixture->configuration());
        QVERIFY(reaches(*m_session, State::Available));
        QSignalSpy finished(m_window.get(), &QDialog::finished);
        QSignalSpy skipped(m_window.get(), &UpdateWindow::skipRequested);
        buttonIn(*m_window, u"Plus tard"_s)->click();
        QCOMPARE(finished.size(), 1);
        QCOMPARE(skipped.size(), 0);
        m_window->show();
        buttonIn(*m_window, u"Ignorer cette version"_s)->click();
        QCOMPARE(finished.size(), 2);
        QCOMPARE(skipped.size(), 1);
    }

    void escapeClosesAndReturnDownloads()
    {
        show(m_fixture->configuration());
        QVERIFY(reaches(*m_session, State::Available));
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QTest::keyClick(m_window.get(), Qt::Key_Escape);
        QVERIFY(!m_window->isVisible());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QTest::keyClick(m_window.get(), Qt::Key_Return);
        QVERIFY(reaches(*m_session, State::Ready));
    }

    void noTextIsCutAtAnyTextSize_data()
    {
        QTest::addColumn<double>("scale");
        for (const int percent : {75, 100, 150, 200})
            QTest::addRow("%d %%", percent) << percent / 100.0;
    }
    void noTextIsCutAtAnyTextSize()
    {
        QFETCH(const double, scale);
        const ScaledText text(scale);
        show(m_fixture->configuration());
        QVERIFY(reaches(*m_session, State::Available));
        QCOMPARE(cutTexts(*m_window), QStringList());
    }
};

template class RunnableTests<tst_UpdateWindow, QApplication>;
#include "tst_updatewindow.moc"
