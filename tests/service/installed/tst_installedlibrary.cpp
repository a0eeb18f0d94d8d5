#include "service/installed/InstalledLibrary.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

#include <cerrno>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray card = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><T_AsnDonneesVitale>é</T_AsnDonneesVitale>";

/// A folder with a library whose behaviour is given by files beside it.
class Installation
{
public:
    explicit Installation(const QString& library = QStringLiteral(PELMORA_SCRIPTED_LIBRARY))
    {
        if (QFile::copy(library, path(u"library.so"_s)))
            ::chmod(QFile::encodeName(path(u"library.so"_s)).constData(), 0755);
    }

    void write(const QString& name, const QByteArray& content) const
    {
        if (!writeFile(path(name), content))
            qCritical("%s cannot be written", qPrintable(name));
    }

    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }
    [[nodiscard]] SystemPlace place() const
    {
        return {.root = QFile::encodeName(m_folder.path()), .relative = "library.so", .owner = ::geteuid()};
    }

    /// The calls so far, joined.
    [[nodiscard]] QByteArray calls() const
    {
        const QString file = path(u"calls"_s);
        return QFile::exists(file) ? contentOf(file).trimmed().replace('\n', "; ") : QByteArray();
    }

private:
    QTemporaryDir m_folder;
};

/// The process's standard error during the object's life.
class ErrorCapture
{
public:
    ErrorCapture()
    {
        m_file.open();
        ::dup2(m_file.handle(), STDERR_FILENO);
    }
    Q_DISABLE_COPY_MOVE(ErrorCapture)
    ~ErrorCapture()
    {
        ::dup2(m_saved, STDERR_FILENO);
        ::close(m_saved);
    }

    QString text()
    {
        m_file.seek(0);
        return QString::fromUtf8(m_file.readAll());
    }

private:
    int m_saved = ::dup(STDERR_FILENO);
    QTemporaryFile m_file;
};

QString cardOrResult(const std::expected<QString, ReadResult>& read)
{
    return read ? *read : QString::number(static_cast<int>(read.error()));
}

} // namespace

class tst_InstalledLibrary : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aCardIsRead()
    {
        const Installation installation;
        installation.write(u"readers.text"_s, "Feitian SCR301\nAlcor AU9540\n");
        installation.write(u"read_card.text"_s, card);
        InstalledLibrary library(installation.place());
        QCOMPARE(library.initialise(LibraryMode::Automatic), std::optional(LibraryKind::System));
        QCOMPARE(library.readers(), (QStringList{u"Feitian SCR301"_s, u"Alcor AU9540"_s}));
        QVERIFY(library.chooseReaders(u"Feitian SCR301"_s, u"Alcor AU9540"_s));
        QCOMPARE(cardOrResult(library.readCard()), QString::fromUtf8(card));
        QCOMPARE(installation.calls(),
                 "open; readers; readers; choose_readers <Feitian SCR301> <Alcor AU9540>; read_card");
    }

    void theLibraryIsUsedOnlyInItsModes()
    {
        for (const auto& [mode, isUsed] :
             {std::pair(LibraryMode::Automatic, true), std::pair(LibraryMode::System, true),
              std::pair(LibraryMode::Embedded, false)}) {
            const Installation installation;
            InstalledLibrary library(installation.place());
            QCOMPARE(library.initialise(mode).has_value(), isUsed);
            QCOMPARE(installation.calls(), isUsed ? "open" : "");
        }
    }

    void theLibraryIsClosedByEveryChangeOfModeAndAtTheEnd()
    {
        const Installation installation;
        {
            InstalledLibrary library(installation.place());
            QVERIFY(library.initialise(LibraryMode::System).has_value());
            QVERIFY(library.initialise(LibraryMode::Automatic).has_value());
            QVERIFY(!library.initialise(LibraryMode::Embedded).has_value());
            QCOMPARE(installation.calls(), "open; close; open; close");
            QVERIFY(library.initialise(LibraryMode::Automatic).has_value());
        }
        QCOMPARE(installation.calls(), "open; close; open; close; open; close");
    }

    void withoutALibraryNothingWorksAndNothingIsLogged()
    {
        const Installation installation;
        QVERIFY(QFile::remove(installation.path(u"library.so"_s)));
        ErrorCapture errors;
        InstalledLibrary library(installation.place());
        QVERIFY(!library.initialise(LibraryMode::System).has_value());
        QCOMPARE(library.readers(), QStringList());
        QVERIFY(!library.chooseReaders(u"A"_s, u"A"_s));
        QCOMPARE(cardOrResult(library.readCard()), u"0"_s);
        QCOMPARE(errors.text(), QString());
    }

    void aLibraryThatCannotBeUsedIsRefusedWithALine_data()
    {
        QTest::addColumn<QString>("library");
        QTest::addColumn<QByteArray>("interface");
        QTest::addColumn<mode_t>("mode");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* name, const QByteArray& interface, mode_t mode, const QString& reason,
                            const QString& library = QStringLiteral(PELMORA_SCRIPTED_LIBRARY)) {
            QTest::newRow(name) << library << interface << mode << reason;
        };
        row("writable", "1", 0775, u"%1 peut être modifié par d’autres que root"_s);
        row("newer interface", "2", 0755, u"%1 est de l’interface 2, et non 1"_s);
        row("no interface", "0", 0755, u"%1 est de l’interface 0, et non 1"_s);
        row("a function less", "1", 0755, u"%1 n’a pas de fonction pelmora_reading_close"_s,
            QStringLiteral(PELMORA_INCOMPLETE_LIBRARY));
        row("another file", "1", 0755, u"%1 ne se charge pas : %1: "_s, QStringLiteral(PELMORA_SOURCE "/README.md"));
    }

    void aLibraryThatCannotBeUsedIsRefusedWithALine()
    {
        QFETCH(QString, library);
        QFETCH(QByteArray, interface);
        QFETCH(mode_t, mode);
        QFETCH(QString, reason);
        const Installation installation(library);
        installation.write(u"interface.result"_s, interface);
        QCOMPARE(::chmod(installation.place().path().constData(), mode), 0);
        ErrorCapture errors;
        InstalledLibrary subject(installation.place());
        QVERIFY(!subject.initialise(LibraryMode::System).has_value());
        const QString expected = u"com.morvel.lvit: bibliothèque de lecture installée refusée : "_s +
                                 reason.arg(installation.path(u"library.so"_s));
        QCOMPARE(errors.text().first(std::min(expected.size(), errors.text().size())), expected);
        QCOMPARE(errors.text().count(u'\n'), 1);
        QCOMPARE(installation.calls(), "");
    }

    void aTruncatedLibraryIsRefusedWithALineWithoutACrash_data()
    {
        QTest::addColumn<int>("percent");
        for (const int percent : {0, 1, 5, 10, 20}) // the last part of the file is debugging information
            QTest::addRow("%d %% are there", percent) << percent;
    }

    void aTruncatedLibraryIsRefusedWithALineWithoutACrash()
    {
        QFETCH(int, percent);
        const Installation installation;
        QFile file(installation.path(u"library.so"_s));
        QVERIFY(file.resize(file.size() * percent / 100));
        ErrorCapture errors;
        InstalledLibrary library(installation.place());
        QVERIFY(!library.initialise(LibraryMode::Automatic).has_value());
        const QString told = errors.text();
        QVERIFY2(told.startsWith(
                     u"com.morvel.lvit: bibliothèque de lecture installée refusée : %1 ne se charge pas : "_s.arg(
                         file.fileName())),
                 qPrintable(told));
        QCOMPARE(told.count(u'\n'), 1);
        QCOMPARE(::waitpid(-1, nullptr, WNOHANG), -1); // no child process is left, not even a zombie
        QCOMPARE(errno, ECHILD);
        // A complete library is used at the next change of mode.
        QVERIFY(file.remove());
        QVERIFY(QFile::copy(QStringLiteral(PELMORA_SCRIPTED_LIBRARY), file.fileName()));
        QCOMPARE(::chmod(installation.place().path().constData(), 0755), 0);
        QCOMPARE(library.initialise(LibraryMode::Automatic), std::optional(LibraryKind::System));
    }

    void aLibraryThatFailsInItsTrialIsNotLoaded_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<std::chrono::milliseconds>("limit");
        QTest::addColumn<QString>("reason");
        QTest::newRow("by ending its process")
            << u"interface.result"_s << 30'000ms
            << u"%1 ne se charge pas : l’essai est interrompu par le signal 6 (Aborted)"_s;
        QTest::newRow("by hanging") << u"interface.hang"_s << 200ms << u"%1 ne se charge pas : rien en 0.2 s"_s;
        QTest::newRow("by changing") << u"interface.touch"_s << 30'000ms << u"%1 a changé pendant son essai"_s;
    }

    void aLibraryThatFailsInItsTrialIsNotLoaded()
    {
        QFETCH(const QString, file);
        QFETCH(const std::chrono::milliseconds, limit);
        QFETCH(const QString, reason);
        const Installation installation;
        installation.write(file, "no number"); // the library aborts on this result
        QElapsedTimer timer;
        timer.start();
        const auto functions = loadInstalledFunctions(installation.place(), limit);
        QVERIFY(!functions.has_value());
        QCOMPARE(functions.error().reason, reason.arg(installation.path(u"library.so"_s)));
        QVERIFY(timer.elapsed() < 5000);
        QCOMPARE(::waitpid(-1, nullptr, WNOHANG), -1);
        QCOMPARE(errno, ECHILD);
    }

    void aLibraryThatDoesNotOpenIsNotUsed()
    {
        const Installation installation;
        installation.write(u"open.result"_s, "1");
        ErrorCapture errors;
        {
            InstalledLibrary library(installation.place());
            QVERIFY(!library.initialise(LibraryMode::Automatic).has_value());
        }
        QCOMPARE(installation.calls(), "open");
        QCOMPARE(errors.text(),
                 u"com.morvel.lvit: bibliothèque de lecture installée : pelmora_reading_open : résultat 1\n"_s);
    }

    void pcscNamesAreShownShortAndPassedBackComplete()
    {
        const Installation installation;
        installation.write(u"readers.text"_s, "Feitian SCR301 [CCID Interface] (1) 00 00\n\nFeitian SCR301 01 00\n"
                                              "Feitian SCR301 01 00\n");
        InstalledLibrary library(installation.place());
        QVERIFY(library.initialise(LibraryMode::System).has_value());
        QCOMPARE(library.readers(), (QStringList{u"Feitian SCR301"_s, u"Feitian SCR301 (2)"_s}));
        QVERIFY(library.chooseReaders(u"Feitian SCR301 (2)"_s, u"Feitian SCR301"_s));
        QVERIFY(installation.calls().endsWith(
            "choose_readers <Feitian SCR301 01 00> <Feitian SCR301 [CCID Interface] (1) 00 00>"));
        QVERIFY(!library.chooseReaders(u"Feitian SCR301"_s, u"Feitian SCR301 (3)"_s));
    }

    void aChoiceThatTheLibraryRefusesIsRefused()
    {
        const Installation installation;
        installation.write(u"readers.text"_s, "A");
        installation.write(u"choose_readers.result"_s, "13");
        ErrorCapture errors;
        InstalledLibrary library(installation.place());
        QVERIFY(library.initialise(LibraryMode::System).has_value());
        QVERIFY(!library.chooseReaders(u"A"_s, u"A"_s));
        QVERIFY(errors.text().endsWith(u": pelmora_reading_choose_readers : résultat 13\n"_s));
    }

    void unusableReaderListsGiveNoReaders_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("failure") << u"readers.result"_s << QByteArray("13");
        QTest::newRow("no UTF-8") << u"readers.text"_s << QByteArray("Lecteur \xE9\n");
        QTest::newRow("zero") << u"readers.text"_s << QByteArray("A\0B\n", 4);
        QTest::newRow("too long") << u"readers.text"_s << QByteArray(65 * 1024, 'A');
        QTest::newRow("impossible length") << u"readers.length"_s << QByteArray("1000000000");
    }

    void unusableReaderListsGiveNoReaders()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, content);
        const Installation installation;
        installation.write(file, content);
        ErrorCapture errors;
        InstalledLibrary library(installation.place());
        QVERIFY(library.initialise(LibraryMode::System).has_value());
        QCOMPARE(library.readers(), QStringList());
        QCOMPARE(errors.text().count(u'\n'), 1);
    }

    void theLibrarysVersionsAreShown()
    {
        const Installation installation;
        installation.write(u"version0.text"_s, "4.20 <é>");
        installation.write(u"version1.text"_s, "5");
        installation.write(u"version2.text"_s, "a\nb");
        installation.write(u"version3.text"_s, "\xFF");
        ErrorCapture errors;
        InstalledLibrary library(installation.place());
        QVERIFY(library.initialise(LibraryMode::System).has_value());
        const QString document = library.informations();
        QVERIFY2(document.contains(u"<version>4.20 &lt;é&gt;</version><tableLibVitale>5</tableLibVitale>"
                                   "<tableLibOrgDest></tableLibOrgDest><tableHab></tableHab>"_s),
                 qPrintable(document));
        QCOMPARE(errors.text().count(u": pelmora_reading_version : texte illisible\n"_s), 2);
    }

    void resultCodesAreThoseOfTheLibrary_data()
    {
        QTest::addColumn<QByteArray>("result");
        QTest::addColumn<QString>("expected");
        for (const int known : {11, 13, 15, 17, 25})
            QTest::addRow("%d", known) << QByteArray::number(known) << QString::number(known);
        QTest::newRow("failed") << QByteArray("1") << u"0"_s;
        QTest::newRow("too long") << QByteArray("2") << u"17"_s;
        QTest::newRow("unknown") << QByteArray("-7") << u"0"_s;
    }

    void resultCodesAreThoseOfTheLibrary()
    {
        QFETCH(QByteArray, result);
        QFETCH(QString, expected);
        const Installation installation;
        installation.write(u"read_card.text"_s, card);
        installation.write(u"read_card.result"_s, result);
        ErrorCapture errors;
        InstalledLibrary library(installation.place());
        QVERIFY(library.initialise(LibraryMode::System).has_value());
        QCOMPARE(cardOrResult(library.readCard()), expected);
        // A missing card is not logged.
        QCOMPARE(errors.text().isEmpty(), result == "11");
    }

    void aDocumentThatIsNotACardIsAReadErrorAndIsNotPrinted_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("length");
        const auto row = [](const char* name, const QByteArray& text, const QByteArray& length = {}) {
            QTest::newRow(name) << text << length;
        };
        row("empty", {});
        row("ISO Latin 1", "<T_AsnDonneesVitale>SP\311CIMEN</T_AsnDonneesVitale>");
        row("cut short", card.chopped(3));
        row("no XML", "SPECIMEN");
        row("declarations", "<!DOCTYPE SPECIMEN [<!ELEMENT a ANY>]><a/>");
        row("over 4 MiB", QByteArray("<SPECIMEN>") + QByteArray(5 * 1024 * 1024, ' ') + "</SPECIMEN>");
        row("impossible length", card, "4194305");
        row("negative length", card, "-1");
    }

    void aDocumentThatIsNotACardIsAReadErrorAndIsNotPrinted()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, length);
        const Installation installation;
        installation.write(u"read_card.text"_s, text);
        if (!length.isEmpty())
            installation.write(u"read_card.length"_s, length);
        ErrorCapture errors;
        InstalledLibrary library(installation.place());
        QVERIFY(library.initialise(LibraryMode::System).has_value());
        QCOMPARE(cardOrResult(library.readCard()), u"17"_s);
        QCOMPARE(errors.text().count(u'\n'), 1);
        QVERIFY(!errors.text().contains(u"CIMEN"_s));
    }

    void theLibrarysPathIsFixed()
    {
        const SystemPlace place = InstalledLibrary::standardPlace();
        QCOMPARE(place.root, "/");
        QCOMPARE(place.path(), "/usr/lib/pelmora/reading-library.so");
        QCOMPARE(place.owner, 0u);
    }
};

template class RunnableTests<tst_InstalledLibrary, QCoreApplication>;
#include "tst_installedlibrary.moc"
