#include "tests/app/windows/MainWindowTest.h"
#include "tests/common/RunnableTests.h"

#include <QAccessible>
#include <QApplication>
#include <QDateTime>
#include <QHelpEvent>
#include <QTemporaryDir>
#include <QToolTip>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize smallScreen(1366, 768);
constexpr QSize windowFrame(16, 48);
const QDateTime afternoon(QDate(2026, 11, 21), QTime(14, 2));

// The web's accessibility guidelines, worked out here by themselves.
double luminance(QRgb colour)
{
    const auto linear = [](int channel) {
        const double part = channel / 255.0;
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

double contrast(QRgb one, QRgb other)
{
    const double first = luminance(one);
    const double second = luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

// How well what is drawn stands out from the colour in the picture's corner.
double drawnContrast(const QImage& picture)
{
    double best = 1;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            best = std::max(best, contrast(picture.pixel(0, 0), picture.pixel(x, y)));
    }
    return best;
}

// The labels, tiles and menu titles that have less room than they need.
QStringList cutTexts(const QWidget& window)
{
    QStringList cut;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        const bool shows = qobject_cast<const QLabel*>(widget) || qobject_cast<const QPushButton*>(widget);
        const QSize needed = widget->sizeHint();
        if (shows && widget->isVisible() && (widget->width() < needed.width() || widget->height() < needed.height()))
            cut.append(widget->objectName());
    }
    return cut;
}

} // namespace

class tst_MainWindowLooks final : public MainWindowTest
{
    Q_OBJECT

private:
    QLabel* lineField() const { return m_window->findChild<QLabel*>(u"panelLineField"_s); }

private Q_SLOTS:
    void everyTextStandsOut_data()
    {
        QTest::addColumn<QPalette>("desktop");
        QTest::newRow("light") << QPalette(QColor(239, 239, 239));
        QTest::newRow("dark") << QPalette(QColor(45, 45, 48));
        QTest::newRow("black") << QPalette(QColor(0, 0, 0));
    }

    void everyTextStandsOut()
    {
        QFETCH(const QPalette, desktop);
        QApplication::setPalette(desktop);
        QVERIFY(QTest::qWaitForWindowExposed(&shown()));
        for (const ExpectedTile& expected : expectedTiles)
            QVERIFY2(drawnContrast(shot(*m_window, (*m_window.*expected.outlet)())) >= 4.5, expected.name);
        for (const QLabel* label : m_window->vitaleInfoView()->findChildren<QLabel*>())
            QVERIFY2(drawnContrast(shot(*m_window, label)) >= 4.5, qPrintable(label->objectName()));
    }

    void thePanelIsGreenAndSaysThatThereIsNoCard()
    {
        QCOMPARE(m_window->vitaleInfoTextField()->text(), u"Aucune"_s);
        QCOMPARE(m_window->vitaleInfoTextField()->objectName(), u"vitaleInfoTextField"_s);
        QCOMPARE(m_window->vitaleInfoView()->backgroundColor(), QColor(0, 162, 1));
        const QImage panel = shot(*m_window, m_window->vitaleInfoView());
        QCOMPARE(panel.pixelColor(0, 0), QColor(0, 162, 1));
        QCOMPARE(panel.pixelColor(panel.width() - 1, panel.height() - 1), QColor(0, 162, 1));
    }

    void theTimeOfReadingIsBesideTheSummary()
    {
        const auto* label = m_window->findChild<QLabel*>(u"panelLineField"_s);
        const QDateTime time(QDate(2026, 11, 21), QTime(14, 2));
        m_window->panel().setCardTime(PanelLine::CardOrigin::Reader, time);
        QCOMPARE(label->text(), u"Lue le 21/11/2026 à 14:02"_s);
        m_window->panel().setCardTime(PanelLine::CardOrigin::File, time);
        QCOMPARE(label->text(), u"Fichier ouvert le 21/11/2026 à 14:02"_s);
        QCOMPARE(m_window->vitaleInfoTextField()->text(), u"Aucune"_s);
    }

    void aConnectionThatTakesLongIsToldInTheTimesPlace()
    {
        const auto* label = m_window->findChild<QLabel*>(u"panelLineField"_s);
        const QString hint = u"Insérez une carte, puis appuyez sur Lire."_s;
        const QString connecting = u"Connexion au lecteur de cartes…"_s;
        QCOMPARE(label->text(), hint);
        const QSize smallest = m_window->minimumSizeHint();
        m_window->panel().setConnecting(true);
        QCOMPARE(label->text(), hint);
        QTRY_COMPARE(label->text(), connecting);
        // The window does not grow for it.
        QCOMPARE(m_window->minimumSizeHint().expandedTo(smallest), smallest);

        m_window->panel().setCardTime(PanelLine::CardOrigin::File, QDateTime(QDate(2026, 11, 21), QTime(14, 2)));
        QCOMPARE(label->text(), connecting);
        m_window->panel().setConnecting(false);
        QCOMPARE(label->text(), u"Fichier ouvert le 21/11/2026 à 14:02"_s);
        m_window->panel().setConnecting(true);
        QCOMPARE(label->text(), u"Fichier ouvert le 21/11/2026 à 14:02"_s);
    }

    void aCardThatIsNotFromTheLastReadIsSeenAndToldAsSuch_data() { everyTextStandsOut_data(); }

    void aCardThatIsNotFromTheLastReadIsSeenAndToldAsSuch()
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

    void aFailedReadBeforeAnyCardLeavesTheSummaryAsItWas()
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
        QFont font = m_font;
        font.setPointSizeF(font.pointSizeF() * textSize);
        QApplication::setFont(font);
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

    void aLineThatDoesNotFitIsWholeInItsToolTip()
    {
        const auto toolTip = [this](const QString& notice) {
            m_window->panel().setNotice(notice);
            QHelpEvent help(QEvent::ToolTip, QPoint(5, 5), lineField()->mapToGlobal(QPoint(5, 5)));
            QCoreApplication::sendEvent(lineField(), &help);
            return QToolTip::text();
        };
        QCOMPARE(toolTip(u"Une lecture est déjà en cours."_s), QString());
        // Wrapped, but whole.
        QCOMPARE(toolTip(u"Non enregistrée : il n’y a plus de place sur le disque (« A B.pdf »)."_s), QString());
        const QString name = QString(300, u'W');
        QVERIFY(toolTip(name + u" <b>x</b>"_s).contains(name + u" &lt;b&gt;x&lt;/b&gt;"_s));
    }

    void whatTheUserIsToldIsANotificationForScreenReaders()
    {
        const auto notification = [this]() -> QAccessibleInterface* {
            QAccessibleInterface* panel = QAccessible::queryAccessibleInterface(m_window->vitaleInfoView());
            for (int index = 0; index < panel->childCount(); ++index) {
                QAccessibleInterface* child = panel->child(index);
                if (child->role() == QAccessible::Notification && !child->state().invisible)
                    return child;
            }
            return nullptr;
        };
        QVERIFY(!notification());
        m_window->panel().setNotice(u"Une lecture est déjà en cours."_s);
        QVERIFY(notification());
        QCOMPARE(notification()->text(QAccessible::Name), u"Une lecture est déjà en cours."_s);
        m_window->panel().setNotice(QString());
        QVERIFY(!notification());
        m_window->panel().setSaveFailure(u"Non enregistrée"_s);
        QVERIFY(notification());
        QCOMPARE(notification()->text(QAccessible::Name), u"Non enregistrée"_s);
        // It stays as long as the panel tells it.
        m_window->panel().setNotice(QString());
        QVERIFY(notification());
        QCOMPARE(notification()->text(QAccessible::Name), u"Non enregistrée"_s);
        m_window->panel().setNotice(u"Une lecture est déjà en cours."_s);
        QCOMPARE(notification()->text(QAccessible::Name), u"Une lecture est déjà en cours."_s);
        m_window->panel().setNotice(QString());
        m_window->panel().setSaveFailure(QString());
        QVERIFY(!notification());
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

    void noTextIsTakenForRichText()
    {
        m_window->beginSheet(u"<b>Lecture</b>"_s);
        for (const QLabel* label : m_window->findChildren<QLabel*>())
            QVERIFY2(label->textFormat() == Qt::PlainText, qPrintable(label->objectName()));
        m_window->vitaleInfoTextField()->setText(u"<h1>SPECIMEN</h1>"_s);
        const QImage marked = shot(*m_window, m_window->vitaleInfoTextField());
        m_window->vitaleInfoTextField()->setText(u"SPECIMEN"_s);
        QVERIFY(shot(*m_window, m_window->vitaleInfoTextField()) != marked);
    }

    void aLongNameIsWholeInItsToolTip()
    {
        const auto toolTip = [this](const QString& summary) {
            QLabel* field = m_window->vitaleInfoTextField();
            field->setText(summary);
            QHelpEvent help(QEvent::ToolTip, QPoint(5, 5), field->mapToGlobal(QPoint(5, 5)));
            QCoreApplication::sendEvent(field, &help);
            return QToolTip::text();
        };
        const QString name = QString(100, u'W');
        QCOMPARE(toolTip(u"SPECIMEN CAMILLE\n1 85 05 78 006 084 36\n2 bénéficiaires"_s), QString());
        // Tool tips guess whether they hold rich text.
        const QString tip = toolTip(name + u" <b>CAMILLE</b>\n\n"_s);
        QVERIFY(tip.contains(name + u" &lt;b&gt;CAMILLE&lt;/b&gt;"_s));
    }

    void nothingIsCut_data()
    {
        QTest::addColumn<double>("textSize");
        QTest::newRow("plain") << 1.0;
        QTest::newRow("200 %") << 2.0;
    }

    void nothingIsCut()
    {
        QFETCH(const double, textSize);
        QFont font = m_font;
        font.setPointSizeF(font.pointSizeF() * textSize);
        QApplication::setFont(font);
        QVERIFY(QTest::qWaitForWindowExposed(&shown()));
        m_window->resize(m_window->minimumSizeHint());
        QCOMPARE(cutTexts(*m_window).join(u' '), QString());
        const QSize room = smallScreen - windowFrame;
        QVERIFY(m_window->minimumSizeHint().boundedTo(room) == m_window->minimumSizeHint());
    }

    void theWindowFitsASmallScreenAtTwiceTheScale()
    {
        const QSize room = smallScreen / 2 - windowFrame / 2;
        QCOMPARE(m_window->minimumSizeHint().boundedTo(room), m_window->minimumSizeHint());
    }

    void theWindowStartsWithinItsScreen()
    {
        QVERIFY(m_window->width() <= m_window->screen()->availableSize().width());
        QVERIFY(m_window->height() <= m_window->screen()->availableSize().height());
    }

    void columnsAreAsWideAsEachOther()
    {
        QVERIFY(std::abs(m_window->viewButton()->width() - m_window->printButton()->width()) <= 1);
        QVERIFY(std::abs(m_window->saveButton()->width() - m_window->printButton()->width()) <= 1);
    }

    void withoutItsIconsTheWindowStillWorks()
    {
        const QTemporaryDir empty;
        MainWindow window{Bundle(empty.path())};
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(hasInk(shot(window, window.readButton()), window.readButton()->rect()));
    }

    void theWindowHasItsIcon() { QTRY_VERIFY(!m_window->windowIcon().isNull()); }
};

template class RunnableTests<tst_MainWindowLooks, QApplication>;
#include "tst_mainwindowlooks.moc"
