#include "app/windows/FileLink.h"
#include "tests/app/windows/Contrast.h"
#include "tests/app/windows/MainWindowTest.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TextSize.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDateTime>
#include <QHelpEvent>
#include <QMenu>
#include <QPointer>
#include <QSignalSpy>
#include <QToolTip>

using namespace Qt::StringLiterals;

namespace {

const QDateTime afternoon(QDate(2026, 11, 21), QTime(14, 2));
const QString path = u"/home/<i>/SPECIMEN <b>&Zoé.pdf"_s;
const QString emptyLine = u"Insérez une carte, puis appuyez sur Lire."_s;

} // namespace

/// The main window's panel.
class tst_CardPanel final : public MainWindowTest
{
    Q_OBJECT

private:
    QLabel* lineField() const { return m_window->findChild<QLabel*>(u"panelLineField"_s); }
    FileLink* link() const { return m_window->findChild<FileLink*>(); }

    static QString toolTipOf(QLabel* label)
    {
        QHelpEvent help(QEvent::ToolTip, QPoint(5, 5), label->mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(label, &help);
        return QToolTip::text();
    }

private Q_SLOTS:
    void theTimeOfReadingOrOpeningIsShown()
    {
        m_window->panel().setCardTime(PanelLine::CardOrigin::Reader, afternoon);
        QCOMPARE(lineField()->text(), u"Lue le 21/11/2026 à 14:02"_s);
        m_window->panel().setCardTime(PanelLine::CardOrigin::File, afternoon);
        QCOMPARE(lineField()->text(), u"Fichier ouvert le 21/11/2026 à 14:02"_s);
        QCOMPARE(m_window->vitaleInfoTextField()->text(), u"Aucune"_s);
    }

    void aSlowConnectionIsShownInPlaceOfTheTime()
    {
        const QString connecting = u"Connexion au lecteur de cartes…"_s;
        QCOMPARE(lineField()->text(), emptyLine);
        const QSize smallest = m_window->minimumSizeHint();
        m_window->panel().setConnecting(true);
        QCOMPARE(lineField()->text(), emptyLine);
        QTRY_COMPARE(lineField()->text(), connecting);
        QCOMPARE(m_window->minimumSizeHint().expandedTo(smallest), smallest);

        m_window->panel().setCardTime(PanelLine::CardOrigin::File, afternoon);
        QCOMPARE(lineField()->text(), connecting);
        m_window->panel().setConnecting(false);
        QCOMPARE(lineField()->text(), u"Fichier ouvert le 21/11/2026 à 14:02"_s);
        m_window->panel().setConnecting(true);
        QCOMPARE(lineField()->text(), u"Fichier ouvert le 21/11/2026 à 14:02"_s);
    }

    void aDisabledTileSaysWhy()
    {
        const QString usual = m_window->viewButton()->toolTip();
        QVERIFY(!usual.isEmpty());
        m_window->disableCardTiles();
        QCOMPARE(m_window->viewButton()->toolTip(), u"Le lecteur de cartes n’est pas prêt. Appuyez sur Lire."_s);
        QCOMPARE(m_window->saveButton()->toolTip(), m_window->viewButton()->toolTip());
        const QString read = m_window->readButton()->toolTip();
        m_window->setReader({.state = CardReaderState::NoReader});
        QCOMPARE(m_window->viewButton()->toolTip(), u"Aucun lecteur – branchez-le."_s);
        QCOMPARE(m_window->readButton()->toolTip(), read);
        m_window->enableTiles();
        QCOMPARE(m_window->viewButton()->toolTip(), usual);
    }

    void thePreviousCardIsMarkedAfterAFailedRead_data() { addDesktops(); }

    void thePreviousCardIsMarkedAfterAFailedRead()
    {
        QFETCH(const QPalette, desktop);
        QApplication::setPalette(desktop);
        QVERIFY(QTest::qWaitForWindowExposed(&shown()));
        QLabel* summary = m_window->vitaleInfoTextField();
        summary->setText(u"SPECIMEN Hélène\n285057511612381\n3 bénéficiaires"_s);
        m_window->panel().setCardTime(PanelLine::CardOrigin::Reader, afternoon);
        const QImage fresh = shot(*m_window, summary);
        QCOMPARE(fresh.pixelColor(0, 0), QColor(0, 162, 1));

        m_window->panel().setReadFailed(afternoon.addSecs(60));
        const QImage earlier = shot(*m_window, summary);
        QVERIFY(earlier.pixelColor(0, 0) != QColor(0, 162, 1));
        QVERIFY(drawnContrast(earlier) >= 4.5);
        QVERIFY(drawnContrast(shot(*m_window, lineField())) >= 4.5);
        QCOMPARE(summary->accessibleDescription(), u"Carte précédente\u00A0: la dernière lecture n’a pas abouti."_s);

        for (const auto origin : {PanelLine::CardOrigin::Reader, PanelLine::CardOrigin::File}) {
            m_window->panel().setReadFailed(afternoon.addSecs(60));
            m_window->panel().setCardTime(origin, afternoon.addSecs(120));
            QCOMPARE(shot(*m_window, summary), fresh);
            QVERIFY(summary->accessibleDescription().isEmpty());
        }
    }

    void aFailedReadBeforeAnyCardDoesNotChangeTheSummary()
    {
        QLabel* summary = m_window->vitaleInfoTextField();
        const QImage before = shot(*m_window, summary);
        m_window->panel().setReadFailed(afternoon);
        QCOMPARE(summary->text(), u"Aucune"_s);
        QCOMPARE(shot(*m_window, summary), before);
        QVERIFY(summary->accessibleDescription().isEmpty());
        QCOMPARE(lineField()->text(), u"Lecture échouée à 14:02"_s);
    }

    void noTextOfThePanelMakesTheWindowGrow_data()
    {
        QTest::addColumn<double>("textSize");
        QTest::addColumn<QString>("notice");
        const QString usual = u"Non enregistrée : il n’y a plus de place sur le disque (« SPECIMEN Hélène.pdf »)."_s;
        QTest::newRow("usual") << 1.0 << usual;
        QTest::newRow("usual, 200 %") << 2.0 << usual;
        QTest::newRow("endless") << 1.0 << QString(2'000'000, u'W');
        QTest::newRow("many lines") << 1.0 << QString(5000, u'\n');
    }

    void noTextOfThePanelMakesTheWindowGrow()
    {
        QFETCH(const double, textSize);
        QFETCH(const QString, notice);
        const ScaledText text(textSize);
        QVERIFY(QTest::qWaitForWindowExposed(&shown()));
        m_window->resize(m_window->minimumSizeHint());
        const QSize size = m_window->size();
        const QRect summary = m_window->vitaleInfoTextField()->geometry();
        m_window->panel().setCardTime(PanelLine::CardOrigin::File, afternoon.addDays(-1));
        m_window->panel().setReadFailed(afternoon);
        m_window->panel().setNotice(notice);
        QVERIFY(!m_window->grab().isNull());
        QCOMPARE(m_window->size(), size);
        QCOMPARE(m_window->minimumSizeHint(), size);
        QCOMPARE(m_window->vitaleInfoTextField()->geometry(), summary);
        QVERIFY(lineField()->height() >= 2 * lineField()->fontMetrics().lineSpacing());
    }

    void theCardsLineAndTheNoticeAreBothShownWhereThereIsLittleRoom()
    {
        m_window->resize(m_window->minimumSizeHint());
        m_window->panel().setReadFailed(afternoon);
        const QImage one = shot(*m_window, lineField());
        const int half = one.height() / 2;
        QVERIFY(hasInk(one, QRect(0, 0, one.width(), half)));
        QVERIFY(!hasInk(one, QRect(0, half, one.width(), one.height() - half)));
        m_window->panel().setNotice(u"Une lecture est déjà en cours."_s);
        const QImage both = shot(*m_window, lineField());
        QVERIFY(hasInk(both, QRect(0, 0, both.width(), half)));
        QVERIFY(hasInk(both, QRect(0, half, both.width(), both.height() - half)));
        QCOMPARE(lineField()->text(), u"Lecture échouée à 14:02\nUne lecture est déjà en cours."_s);
    }

    void aLineThatDoesNotFitIsShownCompletelyInItsToolTip()
    {
        const auto toolTip = [this](const QString& notice) {
            m_window->panel().setNotice(notice);
            return toolTipOf(lineField());
        };
        QCOMPARE(toolTip(u"Une lecture est déjà en cours."_s), QString());
        // A wrapped text is shown completely.
        QCOMPARE(toolTip(u"Non enregistrée : il n’y a plus de place sur le disque (« A B.pdf »)."_s), QString());
        const QString name = QString(300, u'W');
        QVERIFY(toolTip(name + u" <b>x</b>"_s).contains(name + u" &lt;b&gt;x&lt;/b&gt;"_s));
    }

    void aSavedFileIsALinkAtTheEndOfItsLine_data() { addDesktops(); }

    void aSavedFileIsALinkAtTheEndOfItsLine()
    {
        QFETCH(const QPalette, desktop);
        QApplication::setPalette(desktop);
        QVERIFY(QTest::qWaitForWindowExposed(&shown()));
        QVERIFY(link()->isHidden());
        const QSize size = m_window->size();
        m_window->panel().setSaved(path);
        QVERIFY(link()->isVisible());
        QCOMPARE(lineField()->text(), emptyLine + u"\nEnregistrée\u00A0: SPECIMEN <b>&Zoé.pdf"_s);
        QCOMPARE(link()->accessibleName(), u"Ouvrir SPECIMEN <b>&Zoé.pdf"_s);
        QVERIFY(drawnContrast(shot(*m_window, link())) >= 4.5);
        QVERIFY(link()->geometry().top() >= lineField()->fontMetrics().lineSpacing());
        QVERIFY(lineField()->rect().contains(link()->geometry()));
        // The text before the link is painted on the same line.
        const QImage line = shot(*m_window, lineField());
        QVERIFY(hasInk(line, QRect(0, link()->y(), link()->x(), link()->height())));
        QCOMPARE(m_window->size(), size);

        m_window->panel().beginRequest();
        QVERIFY(link()->isHidden());
        QCOMPARE(lineField()->text(), emptyLine);
    }

    void aLongFileNameIsElidedInItsLink()
    {
        m_window->resize(m_window->minimumSizeHint());
        const QSize size = m_window->size();
        m_window->panel().setSaved(u"/"_s + QString(300, u'W') + u".pdf"_s);
        QVERIFY(lineField()->rect().contains(link()->geometry()));
        QCOMPARE(m_window->minimumSizeHint(), size);
        m_window->resize(size + QSize(200, 0));
        QTRY_COMPARE(link()->geometry().right(), lineField()->rect().right());
        QVERIFY(link()->toolTip().contains(QString(300, u'W')));
    }

    void theLinkOpensTheFileByMouseAndKeysAndItsMenuTheFolder()
    {
        QSignalSpy file(&m_window->panel(), &CardPanel::fileRequested);
        QSignalSpy folder(&m_window->panel(), &CardPanel::folderRequested);
        m_window->panel().setSaved(path);
        QTest::mouseClick(link(), Qt::LeftButton);
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter})
            QTest::keyClick(link(), key);
        QCOMPARE(file.size(), 4);
        QCOMPARE(file.last().constFirst().toString(), path);

        m_window->readButton()->setFocus();
        QTest::keyClick(m_window.get(), Qt::Key_Tab);
        QVERIFY(link()->hasFocus());
        QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(1, 1), link()->mapToGlobal(QPoint(1, 1)));
        QCoreApplication::sendEvent(link(), &event);
        auto* menu = link()->findChild<QMenu*>();
        QVERIFY(menu && menu->isVisible());
        QTest::keyClick(menu, Qt::Key_D);
        QCOMPARE(folder.size(), 1);
        QCOMPARE(folder.last().constFirst().toString(), u"/home/<i>"_s);
        QTRY_VERIFY(!link()->findChild<QMenu*>());
    }

    void theNumberInGroupsIsInTheSummarysToolTip()
    {
        QLabel* summary = m_window->vitaleInfoTextField();
        m_window->panel().setNumber(u"2 85 05 75 116 123 81"_s);
        QCOMPARE(toolTipOf(summary), u"<p style='white-space:pre'>2 85 05 75 116 123 81"_s);
        const QString name(300, u'W');
        summary->setText(name);
        QCOMPARE(toolTipOf(summary), u"<p style='white-space:pre'>"_s + name + u"\n2 85 05 75 116 123 81"_s);
        m_window->panel().clear();
        QTRY_COMPARE(toolTipOf(summary), QString());
    }

    void aClickOnThePanelShowsTheAttestationIfViewingIsEnabled()
    {
        const QSignalSpy requests(m_window.get(), &MainWindow::viewRequested);
        QTest::mouseClick(m_window->vitaleInfoTextField(), Qt::LeftButton);
        QCOMPARE(requests.size(), 1);
        QTest::mouseClick(m_window->vitaleInfoView(), Qt::RightButton);
        action("viewAction")->setEnabled(false);
        QTest::mouseClick(m_window->vitaleInfoView(), Qt::LeftButton);
        QCOMPARE(requests.size(), 1);
    }

    void thePanelsMenuCopiesTheNumberOrTheName()
    {
        const QSignalSpy number(m_window.get(), &MainWindow::copyNumberRequested);
        const QSignalSpy name(m_window.get(), &MainWindow::copyNameRequested);
        for (const Qt::Key key : {Qt::Key_N, Qt::Key_O}) {
            QLabel* summary = m_window->vitaleInfoTextField();
            QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), summary->mapToGlobal(QPoint(5, 5)));
            QApplication::sendEvent(summary, &event);
            const QPointer<QMenu> menu = m_window->vitaleInfoView()->findChild<QMenu*>();
            QVERIFY(menu && menu->isVisible());
            QTest::keyClick(menu, key);
            QTRY_VERIFY(!menu);
        }
        QCOMPARE(number.size(), 1);
        QCOMPARE(name.size(), 1);
    }

    void noNameMakesTheWindowGrow_data()
    {
        QTest::addColumn<QString>("summary");
        QTest::newRow("long") << QString(300, u'W') + u" CAMILLE\n1 85 05 78 006 084 36\n2 bénéficiaires"_s;
        QTest::newRow("endless") << QString(2'000'000, u'W') + u"\n\n"_s;
        QTest::newRow("many lines") << QString(5000, u'\n');
        QTest::newRow("none") << QString();
    }

    void noNameMakesTheWindowGrow()
    {
        QFETCH(const QString, summary);
        const QSize size = m_window->size();
        const QSize smallest = m_window->minimumSizeHint();
        m_window->vitaleInfoTextField()->setText(summary);
        QVERIFY(!m_window->grab().isNull());
        QCOMPARE(m_window->size(), size);
        QCOMPARE(m_window->minimumSizeHint(), smallest);
        QCOMPARE(m_window->vitaleInfoTextField()->text(), summary);
    }

    void markupInTextsIsShownAsPlainText()
    {
        m_window->beginSheet(u"<b>Lecture</b>"_s);
        for (const QLabel* label : m_window->findChildren<QLabel*>())
            QVERIFY2(label->textFormat() == Qt::PlainText, qPrintable(label->objectName()));
        m_window->vitaleInfoTextField()->setText(u"<h1>SPECIMEN</h1>"_s);
        const QImage marked = shot(*m_window, m_window->vitaleInfoTextField());
        m_window->vitaleInfoTextField()->setText(u"SPECIMEN"_s);
        QVERIFY(shot(*m_window, m_window->vitaleInfoTextField()) != marked);
    }

    void aLongNameIsShownCompletelyInItsToolTip()
    {
        QLabel* field = m_window->vitaleInfoTextField();
        field->setText(u"SPECIMEN CAMILLE\n1 85 05 78 006 084 36\n2 bénéficiaires"_s);
        QCOMPARE(toolTipOf(field), QString());
        const QString name = QString(100, u'W');
        field->setText(name + u" <b>CAMILLE</b>\n\n"_s);
        // Qt shows a tool tip as rich text when it looks like rich text.
        QVERIFY(toolTipOf(field).contains(name + u" &lt;b&gt;CAMILLE&lt;/b&gt;"_s));
    }
};

template class RunnableTests<tst_CardPanel, QApplication>;
#include "tst_cardpanel.moc"
