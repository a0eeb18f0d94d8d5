#include "card/PelmoraError.h"
#include "tests/app/Office.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/platform/gui/Desktop.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QTest>

struct hb_face_t;
struct hb_subset_input_t;
struct hb_subset_plan_t;

using namespace Qt::StringLiterals;

namespace {

// The state of the two functions below. The linker calls them in place of the program's: see CMakeLists.txt.
int beeps = 0;
bool fontsCanBeCut = true;

} // namespace

extern "C" {
hb_subset_plan_t* __real_hb_subset_plan_create_or_fail(hb_face_t* face, const hb_subset_input_t* input);
hb_subset_plan_t* __wrap_hb_subset_plan_create_or_fail(hb_face_t* face, const hb_subset_input_t* input)
{
    return fontsCanBeCut ? __real_hb_subset_plan_create_or_fail(face, input) : nullptr;
}
void __wrap__ZN12QApplication4beepEv()
{
    ++beeps;
}
}

class tst_AppDelegateFaults : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        beeps = 0;
        fontsCanBeCut = true;
    }
    void aMailGoesToTheMakersAddress()
    {
        const QTemporaryDir resources;
        QVERIFY(Office::writeInformation(resources, "<key>MVContactMail</key><string>avis@example.org</string>"));
        const Desktop desktop;
        const Office office(silent, resources.path());
        office.delegate->sendComment();
        QCOMPARE(desktop.opened(),
                 QList<QUrl>{QUrl(u"mailto:avis@example.org?subject=Suggestion%20pour%20le%20logiciel%20PELMORA"_s)});
        QCOMPARE(beeps, 0);
    }

    void withoutTheMakersAddressAMailBeeps_data()
    {
        QTest::addColumn<QByteArray>("entries");
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("not a text") << QByteArray("<key>MVContactMail</key><integer>1</integer>");
    }

    void withoutTheMakersAddressAMailBeeps()
    {
        QFETCH(const QByteArray, entries);
        const QTemporaryDir resources;
        QVERIFY(Office::writeInformation(resources, entries));
        const Desktop desktop;
        const Office office(silent, resources.path());
        office.delegate->sendComment();
        QCOMPARE(beeps, 1);
        QCOMPARE(desktop.opened(), QList<QUrl>());
    }

    void theHelpPageIsOpenedByTheDesktop()
    {
        const QTemporaryDir resources;
        const QString page = resources.filePath(u"Help.html"_s);
        QVERIFY(writeFile(page, {}));
        const Desktop desktop;
        const Office office(silent, resources.path());
        office.delegate->showHelp();
        QCOMPARE(desktop.opened(), QList<QUrl>{QUrl::fromLocalFile(page)});
    }

    void withoutAHelpPageNothingIsOpened()
    {
        const QTemporaryDir resources;
        const Desktop desktop;
        const Office office(silent, resources.path());
        office.delegate->showHelp();
        QCOMPARE(desktop.opened(), QList<QUrl>());
        QCOMPARE(beeps, 0);
        QVERIFY(!Office::alert());
    }

    void withoutADocumentTheWriteErrorIsShownAndNothingIsKept()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        office->delegate->loadXMLFile(Office::specimen());
        fontsCanBeCut = false;
        office->delegate->saveAttestation();
        QTRY_VERIFY(Office::alert());
        QCOMPARE(Office::alertText(), std::optional(PelmoraError::writeError().localizedDescription()));
        QVERIFY(QDir(office->attestations()).isEmpty());
        QCOMPARE(office->window->recentsMenuItem()->menu()->actions().size(), 1);
        Office::alert()->close();

        fontsCanBeCut = true;
        office->delegate->saveAttestation();
        QTRY_VERIFY(QFile::exists(office->attestations() + u"/SPECIMEN Hélène.pdf"_s));
    }
};

template class RunnableTests<tst_AppDelegateFaults, QApplication>;
#include "tst_appdelegatefaults.moc"
