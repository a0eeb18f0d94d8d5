#include "app/windows/DiagnosisWindow.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

class tst_DiagnosisWindow : public TestCase
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QWidget> m_window;

    // The window, with a shell command as its program.
    QPointer<DiagnosisWindow> shownFor(const QString& script)
    {
        DiagnosisWindow::showOver(*m_window, {u"/bin/sh"_s, u"-c"_s, script}, {u"PATH=/usr/bin:/bin"_s});
        return m_window->findChild<DiagnosisWindow*>();
    }
    static QString textOf(const DiagnosisWindow& window) { return window.findChild<QPlainTextEdit*>()->toPlainText(); }
    static QString stateOf(const DiagnosisWindow& window) { return window.findChild<QLabel*>()->text(); }
    static QPushButton* button(const DiagnosisWindow& window, const QString& text)
    {
        for (auto* found : window.findChildren<QPushButton*>()) {
            if (found->text().remove(u'&') == text)
                return found;
        }
        return nullptr;
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_window = std::make_unique<QWidget>();
    }
    void cleanup() { m_window.reset(); }

    void theProgramsOutputIsShownAndCopied()
    {
        const auto window = shownFor(u"echo 'Lecteur : aucun'; echo été"_s);
        QCOMPARE(stateOf(*window), u"Le diagnostic est en cours…"_s);
        QVERIFY(!button(*window, u"Copier"_s)->isEnabled());
        QTRY_COMPARE(textOf(*window), u"Lecteur : aucun\nété"_s);
        button(*window, u"Copier"_s)->click();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"Lecteur : aucun\nété"_s);
    }

    void theProgramGetsOnlyTheGivenEnvironment()
    {
        const auto window = shownFor(u"env | grep -v '^_=\\|^PWD=\\|^SHLVL='"_s);
        QTRY_COMPARE(textOf(*window), u"PATH=/usr/bin:/bin"_s);
    }

    void theDiagnosisIsSavedInTheChosenFile()
    {
        const auto window = shownFor(u"echo Lecteur"_s);
        QTRY_VERIFY(button(*window, u"Enregistrer…"_s)->isEnabled());
        button(*window, u"Enregistrer…"_s)->click();
        auto* panel = window->findChild<QFileDialog*>();
        QVERIFY(panel);
        const QString path = m_folder->filePath(u"diagnostic.txt"_s);
        panel->findChild<QLineEdit*>()->setText(path);
        static_cast<QDialog*>(panel)->accept();
        QTRY_COMPARE(stateOf(*window), u"Diagnostic enregistré."_s);
        QCOMPARE(contentOf(path), "Lecteur\n"_ba);
    }

    void aFileThatCannotBeWrittenIsReported()
    {
        const auto window = shownFor(u"echo Lecteur"_s);
        QTRY_VERIFY(button(*window, u"Enregistrer…"_s)->isEnabled());
        button(*window, u"Enregistrer…"_s)->click();
        auto* panel = window->findChild<QFileDialog*>();
        QVERIFY(panel);
        Q_EMIT panel->fileSelected(m_folder->filePath(u"absent/diagnostic.txt"_s));
        QVERIFY(stateOf(*window).startsWith(u"Le diagnostic n’a pas pu être enregistré\u00A0: "));
    }

    void aProgramThatFailsIsReported_data()
    {
        QTest::addColumn<QStringList>("command");
        QTest::newRow("missing") << QStringList{m_folder->filePath(u"missing"_s)};
        QTest::newRow("exit status") << QStringList{u"/bin/false"_s};
        QTest::newRow("signal") << QStringList{u"/bin/sh"_s, u"-c"_s, u"kill -9 $$"_s};
    }
    void aProgramThatFailsIsReported()
    {
        QFETCH(const QStringList, command);
        DiagnosisWindow::showOver(*m_window, command, {});
        const auto* window = m_window->findChild<DiagnosisWindow*>();
        QTRY_COMPARE(stateOf(*window),
                     u"Le diagnostic n’a pas pu être fait\u00A0: le service de lecture ne démarre pas."_s);
        QVERIFY(!button(*window, u"Enregistrer…"_s)->isEnabled());
    }

    void theProgramEndsWithItsWindow()
    {
        const QString note = m_folder->filePath(u"process"_s);
        const auto window = shownFor(u"echo $$ > '%1'; exec sleep 1000"_s.arg(note));
        QTRY_VERIFY(contentOf(note).endsWith('\n'));
        const pid_t process = contentOf(note).trimmed().toInt();
        QCOMPARE(::kill(process, 0), 0);
        button(*window, u"Fermer"_s)->click();
        QTRY_VERIFY(!window);
        QCOMPARE(::kill(process, 0), -1);
    }

    void onlyOneWindowIsOpenAtATime()
    {
        const auto window = shownFor(u"echo Lecteur"_s);
        shownFor(u"echo Autre"_s);
        QCOMPARE(m_window->findChildren<DiagnosisWindow*>().size(), 1);
        QTRY_COMPARE(textOf(*window), u"Lecteur"_s);
    }
};

template class RunnableTests<tst_DiagnosisWindow, QApplication>;
#include "tst_diagnosiswindow.moc"
