#include "attestation/print/PrintDialog.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize smallScreen(1366, 768);
constexpr QSize windowFrame(16, 48);

PrintQueue queueOf(const QString& name, bool isDefault = false)
{
    PrintQueue queue;
    queue.name = name;
    queue.isDefault = isDefault;
    return queue;
}

PrintQueue smallPaper()
{
    PrintQueue queue = queueOf(u"A5"_s);
    queue.media = "A5"_ba;
    queue.paper = {420, 595};
    queue.defaults = {{"ColorModel"_ba, "Gray"_ba}};
    return queue;
}

} // namespace

class tst_PrintDialog : public TestCase
{
    Q_OBJECT

private:
    const QString m_file = u"/home/Attestations/SPECIMEN Marie.pdf"_s;
    const QList<PrintQueue> m_queues{queueOf(u"Étage"_s), queueOf(u"Accueil"_s, true), smallPaper()};
    const QFont m_font = QApplication::font();

    static QString chosen(const PrintDialog& dialog) { return dialog.findChild<QComboBox*>()->currentText(); }
    static bool isShown(const PrintDialog& dialog, const QString& name)
    {
        return !dialog.findChild<QWidget*>(name)->visibleRegion().isEmpty();
    }

private Q_SLOTS:
    void cleanup() { QApplication::setFont(m_font); }

    void theLastPrinterThenTheDefaultOneThenTheFileIsChosen_data()
    {
        QTest::addColumn<QList<PrintQueue>>("queues");
        QTest::addColumn<QString>("last");
        QTest::addColumn<QString>("first");
        const QString file = u"Imprimer dans un fichier (PDF)"_s;
        QTest::newRow("last") << m_queues << u"Étage"_s << u"Étage"_s;
        QTest::newRow("gone") << m_queues << u"Grenier"_s << u"Accueil"_s;
        QTest::newRow("none yet") << m_queues << QString() << u"Accueil"_s;
        QTest::newRow("no default") << QList{queueOf(u"Étage"_s)} << QString() << u"Étage"_s;
        QTest::newRow("no printer") << QList<PrintQueue>() << u"Étage"_s << file;
    }

    void theLastPrinterThenTheDefaultOneThenTheFileIsChosen()
    {
        QFETCH(const QList<PrintQueue>, queues);
        QFETCH(const QString, last);
        const PrintDialog dialog({queues, last, m_file}, nullptr);
        QTEST(chosen(dialog), "first");
        QCOMPARE(dialog.findChild<QComboBox*>()->count(), queues.size() + 1);
    }

    void aNumberAndEnterPrintThatManyCopies()
    {
        PrintDialog dialog({m_queues, u"A5"_s, m_file}, nullptr);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QVERIFY(isShown(dialog, u"copies"_s));
        QVERIFY(!isShown(dialog, u"filename"_s));
        const QSignalSpy wanted(&dialog, &PrintDialog::acceptanceWanted);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_3);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(wanted.size(), 1);
        QVERIFY(dialog.isVisible());
        QCOMPARE(dialog.copies(), 3);
        QCOMPARE(dialog.file(), std::nullopt);
        const PrintInfo info = dialog.info();
        QCOMPARE(info.queue, u"A5"_s);
        QCOMPARE(info.media, "A5"_ba);
        QCOMPARE(info.sheet.size(), QSizeF(420, 595));
        QCOMPARE(info.settings, (QList<PrintOption>{{"ColorModel"_ba, "Gray"_ba}, {"copies"_ba, "3"_ba}}));
    }

    void theTabKeyReachesEachControlInReadingOrder()
    {
        PrintDialog dialog({m_queues, u"A5"_s, m_file}, nullptr);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QStringList reached;
        for (int count = 0; count < 5; ++count) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            const QWidget* widget = QApplication::focusWidget();
            const auto* button = qobject_cast<const QPushButton*>(widget);
            reached.append(button ? button->text() : QString::fromLatin1(widget->metaObject()->className()));
        }
        QCOMPARE(reached, (QStringList{u"&Options…"_s, u"Imprimer"_s, u"Annuler"_s, u"QComboBox"_s, u"QSpinBox"_s}));
    }

    void screenReadersGetTheChosenPrinterAndTheNameOfTheFileField()
    {
        const PrintDialog dialog({m_queues, u"A5"_s, m_file}, nullptr);
        QCOMPARE(dialog.findChild<QComboBox*>()->accessibleDescription(), u"A5"_s);
        QCOMPARE(dialog.findChild<QLineEdit*>(u"filename"_s)->accessibleName(), u"Fichier"_s);
    }

    void withAFileChosenItsNameIsShownInPlaceOfCopies()
    {
        PrintDialog dialog({m_queues, {}, m_file}, nullptr);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        dialog.findChild<QComboBox*>()->setCurrentIndex(static_cast<int>(m_queues.size()));
        QTRY_VERIFY(isShown(dialog, u"filename"_s));
        QVERIFY(!isShown(dialog, u"copies"_s));
        QCOMPARE(dialog.file(), std::optional(m_file));
        QCOMPARE(dialog.info().sheet.size(), QSizeF(595, 842));

        auto* choose = dialog.findChild<QWidget*>(u"filename"_s)->parentWidget()->findChild<QPushButton*>();
        choose->click();
        auto* panel = dialog.findChild<QFileDialog*>();
        QVERIFY(panel != nullptr && panel->isVisible());
        QCOMPARE(panel->acceptMode(), QFileDialog::AcceptSave);
        Q_EMIT panel->fileSelected(u"/home/Autre.pdf"_s);
        QCOMPARE(dialog.file(), std::optional(u"/home/Autre.pdf"_s));
        panel->reject();
    }

    void theOptionsButtonRequestsTheOptions()
    {
        PrintDialog dialog({m_queues, {}, m_file}, nullptr);
        dialog.show();
        const QSignalSpy wanted(&dialog, &PrintDialog::optionsWanted);
        for (QPushButton* button : dialog.findChildren<QPushButton*>()) {
            if (button->text() == u"&Options…")
                button->click();
        }
        QCOMPARE(wanted.size(), 1);
        QVERIFY(dialog.isVisible());
    }

    void theDialogFitsASmallScreen_data()
    {
        QTest::addColumn<double>("textSize");
        QTest::addColumn<QSize>("screen");
        QTest::newRow("200 % text") << 2.0 << smallScreen;
        QTest::newRow("scale 2") << 1.0 << smallScreen / 2;
    }

    void theDialogFitsASmallScreen()
    {
        QFETCH(const double, textSize);
        QFETCH(const QSize, screen);
        QFont font = m_font;
        font.setPointSizeF(font.pointSizeF() * textSize);
        QApplication::setFont(font);
        PrintDialog dialog({QList{queueOf(QString(300, u'W'))}, {}, QString(300, u'W')}, nullptr);
        for (const int choice : {0, 1}) {
            dialog.findChild<QComboBox*>()->setCurrentIndex(choice);
            dialog.show();
            QVERIFY(QTest::qWaitForWindowExposed(&dialog));
            const QSize room = screen - windowFrame;
            QCOMPARE(dialog.sizeHint().boundedTo(room), dialog.sizeHint());
            for (const QWidget* widget : dialog.findChildren<QPushButton*>())
                QVERIFY(!widget->isVisible() || widget->width() >= widget->minimumSizeHint().width());
        }
    }

    void everyMnemonicIsUsedOnce()
    {
        PrintDialog dialog({m_queues, {}, m_file}, nullptr);
        QStringList letters;
        for (const QLabel* label : dialog.findChildren<QLabel*>())
            letters.append(QKeySequence::mnemonic(label->text()).toString());
        for (const QPushButton* button : dialog.findChildren<QPushButton*>())
            letters.append(QKeySequence::mnemonic(button->text()).toString());
        letters.removeAll(QString());
        QVERIFY(letters.size() >= 4);
        QCOMPARE(QSet<QString>(letters.cbegin(), letters.cend()).size(), letters.size());
    }
};

template class RunnableTests<tst_PrintDialog, QApplication>;
#include "tst_printdialog.moc"
