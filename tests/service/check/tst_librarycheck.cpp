#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 60'000; // milliseconds

/// The report on a file.
QString reportOn(const QString& library)
{
    QProcess checker;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // The report describes leaks and crashes of a faulty library; the sanitizer must not.
    environment.insert(u"ASAN_OPTIONS"_s, u"detect_leaks=0:handle_segv=0"_s);
    checker.setProcessEnvironment(environment);
    checker.start(QStringLiteral(PELMORA_LIBRARY_CHECKER), {library});
    if (!checker.waitForFinished(patience) || checker.exitStatus() != QProcess::NormalExit)
        return checker.errorString();
    return QString::fromUtf8(checker.readAllStandardOutput());
}

/// The report on a library with that fault.
QString reportOnFault(const QString& fault)
{
    const QTemporaryDir folder;
    const QString library = folder.filePath(fault + u".so"_s);
    return QFile::copy(QStringLiteral(PELMORA_FAULTY_LIBRARY), library) ? reportOn(library) : folder.errorString();
}

/// The lines of a section of the report.
QStringList section(const QString& report, const QString& title)
{
    const qsizetype start = report.indexOf(u'\n' + title + u'\n');
    if (start < 0)
        return {};
    QStringList lines;
    for (const QString& line : report.sliced(start + title.size() + 2).section(u"\n\n"_s, 0, 0).split(u'\n'))
        lines.append(line.trimmed());
    return lines;
}

struct Fault
{
    const char* name = nullptr;
    QString line;
};

QList<Fault> faultsOfCalls()
{
    return {
        {"newer-interface", u"pelmora_reading_interface, appel 1 : rend 2 et non 1"_s},
        {"does-not-open", u"pelmora_reading_open : rend PELMORA_READING_READER_FAULT"_s},
        {"changes-a-signal", u"pelmora_reading_open, appel 1 : change le traitement du signal 10"_s},
        {"changes-the-locale", u"pelmora_reading_open, appel 1 : change la langue du processus"_s},
        {"changes-the-folder", u"pelmora_reading_open, appel 1 : change le dossier de travail (/)"_s},
        {"version-of-two-lines", u"pelmora_reading_version(PELMORA_READING_LIBRARY), appel 1 : le texte contient un "
                                 "caractère de contrôle"_s},
        {"too-small-for-its-version",
         u"pelmora_reading_version(PELMORA_READING_LIBRARY), appel 5 : rend "
         "PELMORA_READING_TOO_LONG pour un tampon de la taille exacte du texte, 3 octets"_s},
        {"hangs-in-readers", u"pelmora_reading_readers, appel 1 : ne rend pas la main en 2 s"_s},
        {"readers-without-line-end", u"pelmora_reading_readers, appel 1 : la dernière ligne n’a pas de fin"_s},
        {"readers-in-latin-1", u"pelmora_reading_readers, appel 1 : le texte n’est pas en UTF-8"_s},
        {"writes-beyond-the-buffer", u"pelmora_reading_readers, appel 2 : écrit au-delà de la capacité de 0 octets"_s},
        {"cuts-the-readers",
         u"pelmora_reading_readers, appel 3 : rend PELMORA_READING_OK pour un texte de 15 octets dans "
         "un tampon de 7"_s},
        {"lies-about-the-length",
         u"pelmora_reading_readers, appel 1 : annonce 65537 octets pour une capacité de 65536"_s},
        {"accepts-any-reader",
         u"pelmora_reading_choose_readers : accepte un lecteur qui n’est pas dans sa liste (nom de "
         "300 octets)"_s},
    };
}

QList<Fault> faultsOfReads()
{
    return {
        {"forgets-the-choice",
         u"pelmora_reading_read_card, appel 3 : rend PELMORA_READING_FAILED après un choix refusé, "
         "et PELMORA_READING_OK avant"_s},
        {"crashes-in-a-read",
         u"pelmora_reading_read_card, appel 20, tour 13 : le processus est interrompu par le signal "
         "11 (Segmentation fault)"_s},
        {"ends-the-process", u"pelmora_reading_read_card, appel 1 : le processus se termine avec le code 0"_s},
        {"other-result-later", u"pelmora_reading_read_card, tour 13 : rend PELMORA_READING_READ_ERROR, et "
                               "PELMORA_READING_OK au premier tour"_s},
        {"keeps-descriptors", u"pelmora_reading_read_card, tours 11 à 100 : laisse 90 descripteurs ouverts"_s},
        {"prints-the-card", u"pelmora_reading_read_card, appel 2 : imprime des données de la carte"_s},
        {"card-with-document-type", u"pelmora_reading_read_card, appel 2 : le document a un type de document"_s},
        {"card-that-is-no-xml",
         u"pelmora_reading_read_card, appel 2 : le document n’est pas du XML bien formé de 256 niveaux au plus"_s},
        {"card-in-latin-1", u"pelmora_reading_read_card, appel 2 : le document n’est pas en UTF-8"_s},
        {"other-document",
         u"pelmora_reading_read_card, appel 2 : le document n’a pas l’élément « T_AsnDonneesVitale »"_s},
        {"keeps-the-card", u"pelmora_reading_read_card, appel 1 : garde des données de la carte en mémoire"_s},
        {"crashes-at-the-end", u"fin du processus : le processus est interrompu par le signal 6 (Aborted)"_s},
// The address sanitizer has its own allocator, whose memory is not measured.
#ifndef __SANITIZE_ADDRESS__
        {"leaves-a-thread", u"pelmora_reading_close : fils d’exécution laissés après la fermeture : 102"_s},
        {"loses-memory", u"pelmora_reading_readers, tours 11 à 100 : perd "_s},
#else
        // After lost memory, no rounds of all functions together are made. Here it is not measured, so they are made.
        {"leaves-a-thread", u"pelmora_reading_close : fils d’exécution laissés après la fermeture : 202"_s},
#endif
    };
}

} // namespace

class tst_LibraryCheck : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aSoundLibraryHasNoFault()
    {
        const QString report = reportOnFault(u"none"_s);
        QVERIFY2(section(report, u"Défauts"_s).isEmpty(), qPrintable(report));
        for (const QString& line :
             {u"  Version             1.0\n"_s, u"  Table des cartes    —\n"_s,
              u"  Lecteurs            Feitian SCR301\n"_s, u"  Lecture             document de 187 octets\n"_s,
              u"  recommencez ce contrôle sans carte dans le lecteur\n"_s, u"\n\nConclusion : aucun défaut.\n"_s})
            QVERIFY2(report.contains(line), qPrintable(report));
    }

    void eachFaultIsToldWithItsPlace_data()
    {
        QTest::addColumn<QString>("line");
        for (const Fault& fault : faultsOfCalls() + faultsOfReads())
            QTest::newRow(fault.name) << fault.line;
    }
    void eachFaultIsToldWithItsPlace()
    {
        QFETCH(const QString, line);
        const QString report = reportOnFault(QString::fromLatin1(QTest::currentDataTag()));
        // A line that ends with a blank is a prefix: the amount of lost memory varies.
        const QStringList told = section(report, u"Défauts"_s);
        const bool isTold = std::ranges::any_of(
            told, [&](const QString& each) { return line.endsWith(u' ') ? each.startsWith(line) : each == line; });
        QVERIFY2(isTold, qPrintable(report));
    }

    void whatIsPrintedIsARemark()
    {
        const QString report = reportOnFault(u"prints"_s);
        QVERIFY2(section(report, u"Remarques"_s).contains(u"pelmora_reading_read_card, appel 1 : imprime 10 octets"_s),
                 qPrintable(report));
        QVERIFY(report.endsWith(u"\nConclusion : aucun défaut.\n"_s));
    }

    void aFaultThatComesInEveryRoundIsToldOnce()
    {
        QCOMPARE(section(reportOnFault(u"prints-the-card"_s), u"Défauts"_s).size(), 1);
        const QStringList faults = section(reportOnFault(u"lies-about-the-length"_s), u"Défauts"_s);
        QCOMPARE(faults.filter(u"pelmora_reading_readers"_s).filter(u"annonce 65537"_s).size(), 1);
    }

    void aCardIsNotRepeatedInTheReport() { QVERIFY(!reportOnFault(u"prints-the-card"_s).contains(u"SPECIMEN"_s)); }

    void afterACrashTheReportSaysThatItIsIncomplete()
    {
        QVERIFY(section(reportOnFault(u"ends-the-process"_s), u"Remarques"_s)
                    .contains(u"les contrôles suivants n’ont pas été faits"_s));
    }

    void eachMissingFunctionIsTold()
    {
        QCOMPARE(section(reportOn(QStringLiteral(PELMORA_INCOMPLETE_LIBRARY)), u"Défauts"_s),
                 QStringList(u"pelmora_reading_close : cette fonction manque"_s));
    }

    void aFileThatIsNoLibraryDoesNotLoad()
    {
        const QString faults = section(reportOn(QStringLiteral(PELMORA_SOURCE "/README.md")), u"Défauts"_s).join(u'\n');
        QVERIFY2(faults.startsWith(u"chargement : "_s) && faults.contains(u"README.md"_s), qPrintable(faults));
    }
};

template class RunnableTests<tst_LibraryCheck, QCoreApplication>;
#include "tst_librarycheck.moc"
