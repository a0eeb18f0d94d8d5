#include "platform/NativePath.h"
#include "tests/app/windows/Dragging.h"
#include "tests/app/windows/MainWindowTest.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QRubberBand>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QUrl>

#include <cstdio>

using namespace Qt::StringLiterals;

class tst_MainWindowEvents final : public MainWindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void arrowKeysFollowTheTiles()
    {
        QVERIFY(QTest::qWaitForWindowActive(&shown()));
        m_window->readButton()->setFocus();
        for (const auto& [key, tile] : {std::pair{Qt::Key_Down, m_window->viewButton()},
                                        {Qt::Key_Right, m_window->printButton()},
                                        {Qt::Key_Down, m_window->settingsButton()},
                                        {Qt::Key_Left, m_window->mailButton()},
                                        {Qt::Key_Up, m_window->viewButton()},
                                        {Qt::Key_Up, m_window->readButton()}}) {
            QTest::keyClick(QApplication::focusWidget(), key);
            QCOMPARE(QApplication::focusWidget(), tile);
        }
    }

    void oneLocalXmlFileMayBeDropped()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"SPECIMEN é.XML"_s);
        QVERIFY(writeFile(path, {}));
        const DraggedFile data(path);
        const QSignalSpy dropped(m_window.get(), &MainWindow::cardFileDropped);
        QVERIFY(acceptsDrag(*m_window, data));
        drop(*m_window, data);
        QCOMPARE(dropped.count(), 1);
        QCOMPARE(dropped.first().first().toString(), path);
    }

    void theWindowIsOutlinedWhileACardFileIsDraggedOverIt()
    {
        const QTemporaryDir folder;
        const DraggedFile data(folder.filePath(u"card.xml"_s));
        QVERIFY(writeFile(folder.filePath(u"card.xml"_s), {}));
        const auto* outline = m_window->findChild<QRubberBand*>();
        QVERIFY(outline->isHidden());
        QVERIFY(acceptsDrag(*m_window, data));
        QVERIFY(outline->isVisible());
        QCOMPARE(outline->geometry(), m_window->rect());
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(m_window.get(), &leave);
        QVERIFY(outline->isHidden());
        QVERIFY(acceptsDrag(*m_window, data));
        drop(*m_window, data);
        QVERIFY(outline->isHidden());
        QMimeData text;
        text.setText(u"card"_s);
        QVERIFY(!acceptsDrag(*m_window, text));
        QVERIFY(outline->isHidden());
    }

    void aFileWhoseNameIsNotUtf8CanBeDropped_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("address");
        QTest::newRow("by its ending") << QByteArray("/Zo\xE9.xml") << QByteArray("/Zo%E9.xml");
        QTest::newRow("by its content") << QByteArray("/Zo\xE9") << QByteArray("/Zo%E9");
    }

    void aFileWhoseNameIsNotUtf8CanBeDropped()
    {
        QFETCH(const QByteArray, name);
        QFETCH(const QByteArray, address);
        const QTemporaryDir folder;
        const QByteArray path = QFile::encodeName(folder.path()) + name;
        const QString file = folder.filePath(u"card.xml"_s);
        QVERIFY(writeFile(file, "<?xml version='1.0'?><a/>"));
        QCOMPARE(std::rename(QFile::encodeName(file).constData(), path.constData()), 0);
        QMimeData data;
        data.setUrls({QUrl::fromEncoded("file://" + QFile::encodeName(folder.path()) + address)});
        const QSignalSpy dropped(m_window.get(), &MainWindow::cardFileDropped);
        QVERIFY(acceptsDrag(*m_window, data));
        drop(*m_window, data);
        QCOMPARE(std::remove(path.constData()), 0);
        QCOMPARE(dropped.count(), 1);
        QCOMPARE(bytesOfPath(dropped.first().first().toString()), path);
    }

    void otherDraggedItemsAreRefused()
    {
        const QTemporaryDir folder;
        const auto written = [&folder](const QString& name, const QByteArray& content) {
            const QString path = folder.filePath(name);
            return writeFile(path, content) ? QUrl::fromLocalFile(path) : QUrl();
        };
        const QUrl card = written(u"card.xml"_s, "<?xml version='1.0'?><a/>");
        const QList<QList<QUrl>> refused{
            {},
            {card, card},
            {written(u"text.txt"_s, "text")},
            {written(u"picture.png"_s, "\x89PNG\r\n\x1a\n")},
            {QUrl::fromLocalFile(folder.path())},
            {QUrl::fromLocalFile(folder.filePath(u"none.xml"_s))},
            {QUrl(u"https://specimen.example/card.xml"_s)},
        };
        for (const QList<QUrl>& urls : refused) {
            QMimeData data;
            data.setUrls(urls);
            QVERIFY(!acceptsDrag(*m_window, data));
        }
        QMimeData text;
        text.setText(u"<xml/>"_s);
        QVERIFY(!acceptsDrag(*m_window, text));

        QMimeData nameless;
        nameless.setUrls({written(u"card"_s, "<?xml version='1.0'?><a/>")});
        QVERIFY(acceptsDrag(*m_window, nameless));
    }

    void aDropIsRefusedWhileTheSheetIsOpen()
    {
        const QTemporaryDir folder;
        const DraggedFile data(folder.filePath(u"card.xml"_s));
        QVERIFY(writeFile(folder.filePath(u"card.xml"_s), {}));
        m_window->beginSheet(u"Lecture de la carte Vitale..."_s);
        QVERIFY(!acceptsDrag(*m_window, data));
        m_window->endSheed();
        QVERIFY(acceptsDrag(*m_window, data));
    }

    void aDropIsIgnoredWhenASheetOpenedDuringTheDrag()
    {
        const QTemporaryDir folder;
        const DraggedFile data(folder.filePath(u"card.xml"_s));
        QVERIFY(writeFile(folder.filePath(u"card.xml"_s), {}));
        const QSignalSpy dropped(m_window.get(), &MainWindow::cardFileDropped);
        const QSignalSpy inVain(m_window.get(), &MainWindow::cardFileDroppedInVain);
        QVERIFY(acceptsDrag(*m_window, data));
        m_window->beginSheet(u"Lecture de la carte Vitale..."_s);
        drop(*m_window, data);
        QCOMPARE(dropped.count(), 0);
        QCOMPARE(inVain.count(), 1);
    }

    void theSheetShowsTheMessageUntilItEnds()
    {
        m_window->endSheed();
        QVERIFY(!m_window->sheet());
        m_window->beginSheet(u"Lecture de la carte Vitale..."_s);
        QVERIFY(m_window->sheet()->isVisible());
        QCOMPARE(m_window->sheet()->windowModality(), Qt::WindowModal);
        QCOMPARE(m_window->sheet()->parentWidget(), m_window.get());
        QCOMPARE(m_window->sheet()->informationsTextField()->text(), u"Lecture de la carte Vitale..."_s);
        m_window->endSheed();
        QVERIFY(!m_window->sheet()->isVisible());
        m_window->beginSheet(u"Lecture de la carte vitale en cours…"_s);
        QCOMPARE(m_window->sheet()->informationsTextField()->text(), u"Lecture de la carte vitale en cours…"_s);
        QVERIFY(m_window->sheet()->isVisible());
    }

    void cancellingInTheSheetEmitsTheWindowsSignal()
    {
        m_window->beginSheet(u"Lecture de la carte Vitale..."_s);
        const QSignalSpy cancelled(m_window.get(), &MainWindow::readCancelRequested);
        m_window->sheet()->cancelButton()->click();
        QCOMPARE(cancelled.count(), 1);
        QVERIFY(m_window->sheet()->isVisible());
    }

    void theApplicationCanBeQuitWhileTheSheetIsOpen()
    {
        m_window->beginSheet(u"Lecture de la carte Vitale..."_s);
        m_window->sheet()->activateWindow();
        QTRY_COMPARE(QApplication::activeWindow(), m_window->sheet());
        const QSignalSpy quit(m_window.get(), &MainWindow::quitRequested);
        QTest::keyClick(m_window->sheet(), Qt::Key_Q, Qt::ControlModifier);
        QCOMPARE(quit.count(), 1);
    }

    void closingHidesTheWindowWithThePolicyHide()
    {
        const QSignalSpy last(qApp, &QGuiApplication::lastWindowClosed);
        m_window->setClosePolicy([] { return MainWindow::ClosePolicy::Hide; });
        QTest::keyClick(m_window.get(), Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!m_window->isVisible());
        QCoreApplication::processEvents();
        QCOMPARE(last.count(), 0);
    }

    void closingIconifiesTheWindowWithThePolicyIconify()
    {
        QVERIFY(!m_window->close());
        QVERIFY(m_window->isVisible());
        QVERIFY(m_window->isMinimized());
        m_window->showNormal();
        m_window->setClosePolicy([] { return MainWindow::ClosePolicy::Iconify; });
        QVERIFY(!m_window->close());
        QVERIFY(m_window->isMinimized());
    }

    void theAboutBoxShowsNameVersionAndPurpose()
    {
        QCoreApplication::setApplicationVersion(u"9.8.7"_s);
        action("aboutAction")->trigger();
        auto* box = m_window->findChild<QMessageBox*>();
        QVERIFY(box);
        QVERIFY(box->isVisible());
        QCOMPARE(box->windowModality(), Qt::WindowModal);
        QVERIFY(box->text().contains(u"Pelmora 9.8.7"_s));
        QVERIFY(box->informativeText().contains(u"attestation"_s));
        QVERIFY(!box->iconPixmap().isNull());
        // Alerts have the same button.
        const QAbstractButton* ok = box->defaultButton();
        QVERIFY(ok);
        QCOMPARE(ok->text(), u"OK"_s);
        QVERIFY(ok->icon().isNull());
        QTest::keyClick(box, Qt::Key_Escape);
        QTRY_VERIFY(!m_window->findChild<QMessageBox*>());
    }
};

template class RunnableTests<tst_MainWindowEvents, QApplication>;
#include "tst_mainwindowevents.moc"
