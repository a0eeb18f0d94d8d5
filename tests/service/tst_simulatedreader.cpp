#include "service/SimulatedReader.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// The result code of a read; 0 for a card that was read.
qint64 resultOf(const QString& path)
{
    SimulatedReader reader(QFile::encodeName(path));
    const std::expected<QString, ReadResult> card = reader.readCard();
    return card ? 0 : static_cast<qint64>(card.error());
}

} // namespace

class tst_SimulatedReader : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theLibraryIsTheSystemsOnlyInTheModeSystem()
    {
        SimulatedReader reader("x");
        QCOMPARE(reader.initialise(LibraryMode::Automatic), LibraryKind::Embedded);
        QCOMPARE(reader.initialise(LibraryMode::System), LibraryKind::System);
        QCOMPARE(reader.initialise(LibraryMode::Embedded), LibraryKind::Embedded);
    }

    void onlyItsOwnReaderCanBeChosen()
    {
        SimulatedReader reader("x");
        QCOMPARE(reader.readers(), QStringList{u"Feitian SCR301"_s});
        QVERIFY(reader.chooseReaders(u"Feitian SCR301"_s, u"Feitian SCR301"_s));
        QVERIFY(!reader.chooseReaders(u"feitian scr301"_s, u"Feitian SCR301"_s));
        QVERIFY(!reader.chooseReaders(u"Feitian SCR301"_s, u"autre"_s));
        QVERIFY(!reader.chooseReaders(u""_s, u""_s));
    }

    void theStateIsACardAndDoesNotChange()
    {
        SimulatedReader reader("x");
        QList<CardReaderState> reports;
        QVERIFY(!reader.watchReader([&reports](CardReaderState state) { reports.append(state); }));
        QCOMPARE(reports, QList{CardReaderState::Card});
    }

    void theCardIsInTheReaderWhileTheFileExists()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"carte.xml"_s);
        SimulatedReader reader(QFile::encodeName(path));
        QCOMPARE(reader.readCard().error(), ReadResult::CardAbsent);
        QVERIFY(writeFile(path, "<a>1</a>"));
        QCOMPARE(reader.readCard().value(), u"<a>1</a>"_s);
        QVERIFY(QFile::remove(path));
        QCOMPARE(reader.readCard().error(), ReadResult::CardAbsent);
        QVERIFY(writeFile(path, "<a>2</a>"));
        QCOMPARE(reader.readCard().value(), u"<a>2</a>"_s);
        QCOMPARE(resultOf(path + u"/dessous"_s), qint64(11));
        QCOMPARE(resultOf(u""_s), qint64(11));
    }

    void theContentIsDecodedAndOtherwiseUnchanged()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"carte.xml"_s);
        QVERIFY(writeFile(path, "<?xml version='1.0' encoding='ISO-8859-1'?>\r\n<a>Zo\xE9</a>\r\n"));
        SimulatedReader reader(QFile::encodeName(path));
        QCOMPARE(reader.readCard().value(), u"<?xml version='1.0' encoding='ISO-8859-1'?>\r\n<a>Zoé</a>\r\n"_s);
    }

    void aFileThatIsNotACardIsAReadError_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("not XML") << QByteArray("bonjour");
        QTest::newRow("truncated") << QByteArray("<a><b>");
        QTest::newRow("not UTF-8") << QByteArray("<a>\xE9</a>");
        QTest::newRow("unknown encoding") << QByteArray("<?xml version='1.0' encoding='EBCDIC-FR'?><a/>");
        QTest::newRow("declarations") << QByteArray("<!DOCTYPE a SYSTEM 'file:///dev/zero' [<!ELEMENT a ANY>]><a/>");
        QTest::newRow("100,000 levels") << QByteArray("<a>").repeated(100'000) + QByteArray("</a>").repeated(100'000);
        QTest::newRow("over 16 MiB") << "<a>" + QByteArray(16 * 1024 * 1024, 'x') + "</a>";
    }

    void aFileThatIsNotACardIsAReadError()
    {
        QFETCH(QByteArray, content);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"carte.xml"_s);
        QVERIFY(writeFile(path, content));
        QCOMPARE(resultOf(path), qint64(17));
    }

    void aFileOf16MiBIsRead()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"carte.xml"_s);
        QVERIFY(writeFile(path, "<a>" + QByteArray(16 * 1024 * 1024 - 7, 'x') + "</a>"));
        QCOMPARE(resultOf(path), qint64(0));
    }

    void aPathThatIsNotARegularFileIsAReadErrorAtOnce()
    {
        const QTemporaryDir folder;
        QCOMPARE(resultOf(folder.path()), qint64(17));
        QCOMPARE(resultOf(u"/dev/zero"_s), qint64(17));
        const QString pipe = folder.filePath(u"tube"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QCOMPARE(resultOf(pipe), qint64(17));
        const QString loop = folder.filePath(u"boucle"_s);
        QVERIFY(QFile::link(loop, loop));
        QCOMPARE(resultOf(loop), qint64(17));
    }

    void aFileThatMayNotBeReadIsAReadError()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"carte.xml"_s);
        QVERIFY(writeFile(path, "<a/>"));
        QVERIFY(QFile::setPermissions(path, {}));
        // Root can read every file, so the test changes its user.
        constexpr uid_t nobody = 65534;
        const bool isRoot = ::geteuid() == 0;
        if (isRoot)
            ::setfsuid(nobody);
        const qint64 result = resultOf(path);
        if (isRoot)
            ::setfsuid(0);
        QCOMPARE(result, qint64(17));
    }

    void thePathMayHaveAnyBytes()
    {
        const QTemporaryDir folder;
        const QByteArray path = QFile::encodeName(folder.path()) + "/carte-\xE9.xml";
        QVERIFY(writeFile(folder.filePath(u"a"_s), "<a/>"));
        QCOMPARE(::rename(QFile::encodeName(folder.filePath(u"a"_s)).constData(), path.constData()), 0);
        SimulatedReader reader(path);
        const auto content = reader.readCard();
        // Qt cannot remove a file of such a name.
        QCOMPARE(::unlink(path.constData()), 0);
        QCOMPARE(content.value(), u"<a/>"_s);
    }
};

template class RunnableTests<tst_SimulatedReader, QCoreApplication>;
#include "tst_simulatedreader.moc"
