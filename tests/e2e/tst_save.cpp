#include "Run.h"
#include "tests/common/Files.h"
#include "tests/common/TestCase.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QString card(const QString& lastName, const QString& firstName)
{
    return uR"(<?xml version="1.0" encoding="UTF-8"?>
<T_AsnDonneesVitale><listeBenef><T_AsnBeneficiaire>
<ident>%1%2<nir>185057800608491</nir></ident>
<amo><qualBenef>0</qualBenef><codeRegime>01</codeRegime><caisse>751</caisse></amo>
</T_AsnBeneficiaire></listeBenef></T_AsnDonneesVitale>)"_s.arg(lastName, firstName);
}

QString cardOf(const QString& lastName, const QString& firstName)
{
    return card(u"<nomUsuel>%1</nomUsuel>"_s.arg(lastName.toHtmlEscaped()),
                u"<prenomUsuel>%1</prenomUsuel>"_s.arg(firstName.toHtmlEscaped()));
}

QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace

// Saving attestations from the command line, without a display.
class tst_Save : public TestCase
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_home;
    int m_count = 0;

    QString path(const QString& name) const { return m_home->filePath(name); }
    QString folder() const { return path(u"attestations"_s); }

    QString cardFile(const QString& content)
    {
        QString name = path(u"card-%1.xml"_s.arg(m_count++));
        QFile file(name);
        if (file.open(QIODevice::WriteOnly))
            file.write(content.toUtf8());
        return name;
    }

    RunResult pelmora(const QStringList& arguments, const QStringList& wrapper = {}) const
    {
        return runPelmora(m_home->path(), arguments, wrapper);
    }

    QString textOf(const QString& pdf) const
    {
        return QString::fromUtf8(run(m_home->path(), u"pdftotext"_s, {u"-layout"_s, pdf, u"-"_s}).output);
    }

    // Saves a card on a disk of its own, in memory, that this run alone sees; then prints the old attestation and what
    // the disk holds.
    RunResult pelmoraOnDisk(const QString& mountOptions, const QString& preparation, const QString& file) const
    {
        const QString script = uR"(mount -t tmpfs %1 tmpfs "$1" || exit 77
            %2
            "$0" --save "$1" "$2"; code=$?
            cat "$1/"*.pdf 2>/dev/null; ls -A "$1"; exit $code)"_s.arg(mountOptions, preparation);
        const QString inNamespace = u"" PELMORA_SOURCE "/tests/e2e/in-namespace.sh"_s;
        const QStringList command{u"sh"_s, u"-c"_s, script, u"" PELMORA_STAGE "/bin/pelmora"_s, folder(), file};
        return QDir().mkpath(folder()) ? run(m_home->path(), inNamespace, command) : RunResult{};
    }

    QString notSaved(const QString& reason) const
    {
        return u"pelmora : « %1/SPECIMEN Zoé.pdf » n’a pas été enregistré : %2."_s.arg(folder(), reason);
    }

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
    }

    void eachCardFileBecomesOneAttestationAndItsPathOneLine()
    {
        const QString first = cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s));
        const QString second = cardFile(cardOf(u"SPECIMEN"_s, u"François"_s));
        const RunResult result = pelmora({u"--save"_s, folder(), first, second});
        QCOMPARE(result.errors, QByteArray());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outputLines(),
                 (QStringList{folder() + u"/SPECIMEN Zoé.pdf"_s, folder() + u"/SPECIMEN François.pdf"_s}));
        QCOMPARE(entries(folder()), (QStringList{u"SPECIMEN François.pdf"_s, u"SPECIMEN Zoé.pdf"_s}));
        for (const QString& line : result.outputLines()) {
            QVERIFY(contentOf(line).startsWith("%PDF-1."));
            QCOMPARE(modeOf(line), 0600U);
        }
    }

    void aLoadedFileShowsNoFund()
    {
        const RunResult result = pelmora({u"--save"_s, folder(), cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s))});
        QCOMPARE(result.exitCode, 0);
        QVERIFY(textOf(result.outputLines().value(0)).contains(u"Non spécifié"_s));
    }

    void withoutAFileTheCardInTheReaderIsSaved()
    {
        const RunResult result = pelmora({u"--simulate"_s, u"--save"_s, folder()});
        QCOMPARE(result.errors, QByteArray());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outputLines(), QStringList{folder() + u"/SPECIMEN Hélène.pdf"_s});
        const QString text = textOf(result.outputLines().value(0));
        QVERIFY2(text.contains(u"Nom de l'assuré : SPECIMEN Hélène"_s), qPrintable(text));
        QVERIFY(!text.contains(u"Non spécifié"_s));
        QVERIFY(text.contains(u"SPECIMEN Zoé"_s));
    }

    void aSimulatedCardMayBeAnyCardFile()
    {
        const QString file = cardFile(cardOf(u"SPECIMEN"_s, u"Gaël"_s));
        const RunResult result = pelmora({u"--simulate="_s + file, u"--save"_s, folder()});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outputLines(), QStringList{folder() + u"/SPECIMEN Gaël.pdf"_s});
    }

    void whatTheReaderOrTheServiceCannotDoIsTold_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("error");
        QTest::newRow("no reader") << QStringList()
                                   << u"Aucun lecteur de carte n'a été trouvé. Vérifiez les branchements. "
                                      "Le service des lecteurs de cartes (PC/SC) ne répond pas, même si le lecteur est "
                                      "bien branché. Faites vérifier que « pcscd » est installé et démarré."_s;
        QTest::newRow("no card") << QStringList{u"--simulate=absent/card.xml"_s}
                                 << u"La carte vitale n'est pas dans le lecteur."_s;
        QTest::newRow("broken card") << QStringList{u"--simulate=/dev/null"_s}
                                     << u"Erreur de lecture de la carte Vitale. Vérifiez le branchement du lecteur ou "
                                        u"la présence de la carte Vitale "
                                        "dans le lecteur ou le sens d'insertion de la carte Vitale."_s;
        QTest::newRow("absent service") << QStringList{u"--card-service"_s, u"./absent/service"_s}
                                        << u"L’opération n’a pas pu s’achever. (erreur Pelmora -10.)"_s;
        QTest::newRow("not a service") << QStringList{u"--card-service"_s, u"/bin/true"_s}
                                       << u"L’opération n’a pas pu s’achever. (erreur Pelmora -10.)"_s;
        QTest::newRow("chatty program") << QStringList{u"--card-service"_s, u"/bin/ls"_s}
                                        << u"L’opération n’a pas pu s’achever. (erreur Pelmora -10.)"_s;
    }

    void whatTheReaderOrTheServiceCannotDoIsTold()
    {
        QFETCH(const QStringList, arguments);
        QFETCH(const QString, error);
        const RunResult result =
            pelmora(arguments + QStringList{u"--save"_s, folder()}, {u"env"_s, u"-C"_s, m_home->path()});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.output, QByteArray());
        QCOMPARE(result.errorLines(), QStringList{u"pelmora : "_s + error});
    }

    void aCardThatFailsIsToldInOneLineAndTheOthersAreSaved()
    {
        const QString missing = path(u"missing.xml"_s);
        const QString notXml = cardFile(u"not xml"_s);
        const QString nobody = cardFile(u"<T_AsnDonneesVitale/>"_s);
        const QString good = cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s));
        const RunResult result = pelmora({u"--save"_s, folder(), missing, notXml, m_home->path(), nobody, good});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.outputLines(), QStringList{folder() + u"/SPECIMEN Zoé.pdf"_s});
        const QStringList expected{
            u"pelmora : %1 : Le fichier n’existe pas."_s.arg(missing),
            u"pelmora : %1 : Le document n’est pas du XML valide (ligne 1, colonne 1)."_s.arg(notXml),
            u"pelmora : %1 : Le fichier ne peut pas être lu."_s.arg(m_home->path()),
            u"pelmora : %1 : La carte Vitale ne comporte aucun bénéficiaire."_s.arg(nobody),
        };
        QCOMPARE(result.errorLines(), expected);
    }

    // What a French file of the nineties is called, and a folder beside it.
    void filesAndFoldersWhoseNamesAreNotUtf8AreUsedAsTheyAre()
    {
        const QByteArray home = QFile::encodeName(m_home->path());
        const QByteArray card = home + "/Zo\xE9.xml";
        QCOMPARE(
            std::rename(QFile::encodeName(cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s))).constData(), card.constData()), 0);
        // Arguments of such bytes do not go through QProcess.
        const QStringList wrapper{u"sh"_s, u"-c"_s, uR"(cd "$HOME"; e=$(printf '\351')
                                  case $1 in
                                  file) "$0" --save "at$e" "Zo$e.xml" "absent$e.xml" ;;
                                  simulated) "$0" "--simulate=$HOME/Zo$e.xml" --save "at$e" ;;
                                  esac)"_s};
        const RunResult files = runPelmora(m_home->path(), {u"file"_s}, wrapper);
        QCOMPARE(files.output, QByteArray("at\xE9/SPECIMEN Zo\xC3\xA9.pdf\n"));
        QCOMPARE(files.errors, QByteArray("pelmora : absent\xE9.xml : Le fichier n’existe pas.\n"));
        QCOMPARE(::unlink((home + "/at\xE9/SPECIMEN Zo\xC3\xA9.pdf").constData()), 0);
        const RunResult simulated = runPelmora(m_home->path(), {u"simulated"_s}, wrapper);
        QCOMPARE(simulated.errors, QByteArray());
        QCOMPARE(simulated.exitCode, 0);
        QCOMPARE(::unlink((home + "/at\xE9/SPECIMEN Zo\xC3\xA9.pdf").constData()), 0);
        // Qt would not find them.
        QCOMPARE(::rmdir((home + "/at\xE9").constData()), 0);
        QCOMPARE(::unlink(card.constData()), 0);
    }

    void anOlderAttestationOfTheSameNameIsReplaced()
    {
        QVERIFY(QDir().mkpath(folder()));
        QFile old(folder() + u"/SPECIMEN Zoé.pdf"_s);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old");
        old.close();
        const RunResult result = pelmora({u"--save"_s, folder(), cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s))});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(entries(folder()), QStringList{u"SPECIMEN Zoé.pdf"_s});
        QVERIFY(contentOf(old.fileName()).startsWith("%PDF-1."));
        QCOMPARE(modeOf(old.fileName()), 0600U);
    }

    void aFileLandsInTheFolderThatWasNamedWhateverTheNamesAre_data()
    {
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("name");
        QTest::newRow("slashes") << cardOf(u"../../A"_s, u"/etc/B"_s) << u".._.._A _etc_B.pdf"_s;
        QTest::newRow("quotes") << cardOf(u"D'ARC \"x\""_s, u"`id` $(id)"_s) << u"D'ARC \"x\" `id` $(id).pdf"_s;
        QTest::newRow("controls") << cardOf(u"A\tB\nC"_s, u"D\u0085E"_s) << u"A_B_C D_E.pdf"_s;
        QTest::newRow("symbol for null") << cardOf(u"A\u2400"_s, u"B\uFFFD"_s) << u"A\u2400 B\uFFFD.pdf"_s;
        QTest::newRow("300 characters") << cardOf(QString(300, u'é'), u"Zoé"_s) << QString(125, u'é') + u".pdf"_s;
        QTest::newRow("blanks") << cardOf(u"  "_s, u" "_s) << u"    .pdf"_s;
        QTest::newRow("empty") << cardOf(u""_s, u""_s) << u" .pdf"_s;
        QTest::newRow("missing") << card({}, {}) << u"(null) (null).pdf"_s;
        QTest::newRow("dots") << cardOf(u"."_s, u"."_s) << u". ..pdf"_s;
        QTest::newRow("dash") << cardOf(u"--save"_s, u"-x"_s) << u"--save -x.pdf"_s;
    }

    void aFileLandsInTheFolderThatWasNamedWhateverTheNamesAre()
    {
        QFETCH(const QString, content);
        QFETCH(const QString, name);
        QVERIFY(QDir().mkpath(folder()));
        const QString file = cardFile(content);
        const RunResult result = pelmora({u"--save"_s, folder(), file});
        QCOMPARE(result.errors, QByteArray());
        QCOMPARE(result.outputLines(), QStringList{folder() + u'/' + name});
        QCOMPARE(entries(folder()), QStringList{name});
    }

    void nothingIsWrittenOutsideTheFolder()
    {
        const QString file = cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s));
        QCOMPARE(pelmora({u"--save"_s, folder(), file}).exitCode, 0);
        QStringList left = entries(m_home->path());
        // What Qt and the fonts' library keep there is theirs, and says nothing of a card.
        left.removeAll(u"cache"_s);
        left.removeAll(u"runtime"_s);
        QCOMPARE(left, (QStringList{u"attestations"_s, file.section(u'/', -1)}));
    }

    void aRelativeFolderIsMadeWhereThePersonStands()
    {
        const QString file = cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s));
        const RunResult result = pelmora({u"--save"_s, u"a/b é"_s, file}, {u"env"_s, u"-C"_s, m_home->path()});
        QCOMPARE(result.outputLines(), QStringList{u"a/b é/SPECIMEN Zoé.pdf"_s});
        QCOMPARE(entries(path(u"a/b é"_s)), QStringList{u"SPECIMEN Zoé.pdf"_s});
    }

    void aFileInTheWayOfTheFolderIsTold()
    {
        const QString inTheWay = cardFile(u"x"_s);
        const RunResult result = pelmora({u"--save"_s, inTheWay, cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s))});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errorLines(),
                 QStringList{u"pelmora : le dossier « %1 » ne peut pas être utilisé."_s.arg(inTheWay)});
        QCOMPARE(contentOf(inTheWay), QByteArray("x"));
    }

    void aFolderThatCannotBeWrittenIsTold()
    {
        const QString file = cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s));
        const RunResult result = pelmoraOnDisk(u"-o ro,mode=0755"_s, u"true"_s, file);
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errorLines(), QStringList{notSaved(u"le disque est en lecture seule"_s)});
        QCOMPARE(result.output, QByteArray());
    }

    void aFullDiskLeavesTheOldFile()
    {
        const QString file = cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s));
        const RunResult result =
            pelmoraOnDisk(u"-o size=16k,mode=0755"_s,
                          uR"(printf old >"$1/SPECIMEN Zoé.pdf"; head -c 8000 /dev/zero >"$1/filler")"_s, file);
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errorLines(), QStringList{notSaved(u"il n’y a plus de place sur le disque"_s)});
        QCOMPARE(QString::fromUtf8(result.output), u"oldSPECIMEN Zoé.pdf\nfiller\n"_s);
    }

    void aLimitOnTheSizeOfFilesIsToldAndLeavesTheOldFile()
    {
        QVERIFY(QDir().mkpath(folder()));
        QFile old(folder() + u"/SPECIMEN Zoé.pdf"_s);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old");
        old.close();
        const QString file = cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s));
        // What this test ignores, its children would ignore, too.
        const QString script = u"import os, resource, signal, sys; signal.signal(signal.SIGXFSZ, signal.SIG_DFL);"
                               "resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000));"
                               "os.execv(sys.argv[1], sys.argv[1:])"_s;
        const RunResult result = pelmora({u"--save"_s, folder(), file}, {u"/usr/bin/python3"_s, u"-c"_s, script});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errorLines(), QStringList{notSaved(u"l’écriture a échoué (File too large)"_s)});
        QCOMPARE(entries(folder()), QStringList{u"SPECIMEN Zoé.pdf"_s});
        QCOMPARE(contentOf(old.fileName()), QByteArray("old"));
    }

    void aPipeInThePlaceOfTheSettingsHoldsNothingUp()
    {
        QVERIFY(QDir().mkpath(path(u"config/MORVEL"_s)));
        QCOMPARE(mkfifo(QFile::encodeName(path(u"config/MORVEL/Pelmora.conf"_s)).constData(), 0600), 0);
        const QString file = cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s));
        QCOMPARE(pelmora({u"--save"_s, folder(), file}, {u"timeout"_s, u"20"_s}).exitCode, 0);
        QCOMPARE(pelmora({u"--simulate"_s, u"--save"_s, folder()}, {u"timeout"_s, u"20"_s}).exitCode, 0);
    }

    void theAttestationsFolderIsItsOwnersAloneAndThoseAboveAreAsUsual()
    {
        const QString file = cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s));
        QCOMPARE(
            pelmora({u"--save"_s, folder() + "/a/b/"_L1, file}, {u"sh"_s, u"-c"_s, u"umask 000; exec \"$0\" \"$@\""_s})
                .exitCode,
            0);
        QCOMPARE(modeOf(folder() + "/a"_L1), 0777U);
        QCOMPARE(modeOf(folder() + "/a/b"_L1), 0700U);
        QCOMPARE(modeOf(folder() + u"/a/b/SPECIMEN Zoé.pdf"_s), 0600U);
    }

    void aReaderOfTheOutputThatLeavesStopsNothing()
    {
        const QString file = cardFile(cardOf(u"SPECIMEN"_s, u"Zoé"_s));
        const QString other = cardFile(cardOf(u"SPECIMEN"_s, u"Paul"_s));
        const QString script = u"import os, signal, sys; r, w = os.pipe(); os.close(r); os.dup2(w, 1);"
                               "signal.signal(signal.SIGPIPE, signal.SIG_DFL); os.execv(sys.argv[1], sys.argv[1:])"_s;
        const RunResult result =
            pelmora({u"--save"_s, folder(), file, other}, {u"/usr/bin/python3"_s, u"-c"_s, script});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(entries(folder()), (QStringList{u"SPECIMEN Paul.pdf"_s, u"SPECIMEN Zoé.pdf"_s}));
        QCOMPARE(result.errorLines(), QStringList(2, u"pelmora : la sortie standard ne peut pas être écrite."_s));
    }

    void theLongestNameCanBeSavedAgain()
    {
        const QString file = cardFile(cardOf(QString(300, u'é'), u"Zoé"_s));
        QCOMPARE(pelmora({u"--save"_s, folder(), file}).exitCode, 0);
        QCOMPARE(pelmora({u"--save"_s, folder(), file}).exitCode, 0);
        QCOMPARE(entries(folder()), QStringList{QString(125, u'é') + u".pdf"_s});
    }

    void coreDumpsAreOffForTheProgramAndWhatItStarts()
    {
        // A card service that tells what limits it was given.
        QFile service(path(u"service"_s));
        QVERIFY(service.open(QIODevice::WriteOnly));
        service.write("#!/bin/sh\ngrep 'core file' /proc/self/limits >\"$HOME/limits\"\n");
        service.close();
        QVERIFY(service.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        QCOMPARE(pelmora({u"--card-service"_s, service.fileName(), u"--save"_s, folder()}).exitCode, 1);
        const QString limits = QString::fromLatin1(contentOf(path(u"limits"_s))).simplified();
        // A hard limit of 0 cannot be raised, and is as good.
        QVERIFY2(limits == u"Max core file size 1 1 bytes"_s || limits == u"Max core file size 0 0 bytes"_s,
                 qPrintable(limits));
    }

    void withoutADisplayTheWindowIsRefusedInOneLine()
    {
        const RunResult result = pelmora({});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errorLines(), QStringList{u"pelmora : il n’y a pas d’écran où ouvrir une fenêtre."_s});
    }

    void wrongUsageIsToldAndNothingIsDone_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("no folder") << QStringList{u"--save"_s};
        QTest::newRow("empty folder") << QStringList{u"--save"_s, u""_s};
        QTest::newRow("unknown option") << QStringList{u"--frobnicate"_s};
        QTest::newRow("two services") << QStringList{u"--save"_s, u"x"_s, u"--simulate"_s, u"--card-service"_s,
                                                     u"/bin/true"_s};
        QTest::newRow("no service") << QStringList{u"--card-service"_s};
        QTest::newRow("two cards in the window") << QStringList{u"a.xml"_s, u"b.xml"_s};
        QTest::newRow("value for help") << QStringList{u"--help=x"_s};
    }

    void wrongUsageIsToldAndNothingIsDone()
    {
        QFETCH(const QStringList, arguments);
        const RunResult result = pelmora(arguments);
        QCOMPARE(result.exitCode, 2);
        QCOMPARE(result.output, QByteArray());
        QCOMPARE(result.errorLines().size(), 2);
        QVERIFY(result.errorLines().first().startsWith(u"pelmora : "_s));
        QCOMPARE(result.errorLines().last(), u"« pelmora --help » affiche l’aide."_s);
        QCOMPARE(entries(m_home->path()), QStringList());
    }

    void helpAndVersionGoToTheStandardOutput()
    {
        const RunResult help = pelmora({u"--help"_s});
        QCOMPARE(help.exitCode, 0);
        QVERIFY(help.output.contains("--save DOSSIER"));
        const RunResult version = pelmora({u"--version"_s});
        QCOMPARE(version.exitCode, 0);
        QVERIFY(version.output.startsWith("pelmora "));
        QCOMPARE(help.errors + version.errors, QByteArray());
    }

    void badCardsAreRefusedInTimeAndNeverCrash_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("entity bomb") << QByteArray(
            "<!DOCTYPE a [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;'><!ENTITY c "
            "'&b;&b;&b;&b;&b;&b;&b;'>"
            "<!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;'><!ENTITY e '&d;&d;&d;&d;&d;&d;&d;&d;'>]><a>&e;</a>");
        QTest::newRow("100,000 levels deep") << QByteArray("<a>").repeated(100'000);
        QTest::newRow("100 MB") << "<a>" + QByteArray(100'000'000, 'x') + "</a>";
        QTest::newRow("zeros") << QByteArray(1000, '\0');
    }

    void badCardsAreRefusedInTimeAndNeverCrash()
    {
        QFETCH(const QByteArray, content);
        QFile file(path(u"bad.xml"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        const RunResult result = pelmora({u"--save"_s, folder(), file.fileName()}, {u"timeout"_s, u"20"_s});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errorLines().size(), 1);
    }

    void aFileOfAWholeTownIsRefusedInLittleMemory()
    {
        const QString file = cardFile(u"<T_AsnDonneesVitale><listeBenef>%1</listeBenef></T_AsnDonneesVitale>"_s.arg(
            QString(u"<T_AsnBeneficiaire/>"_s).repeated(249'000)));
        const QString script =
            u"import resource, subprocess, sys; code = subprocess.call(sys.argv[1:]);"
            "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss // 1024); sys.exit(code)"_s;
        const RunResult result = pelmora({u"--save"_s, folder(), file}, {u"/usr/bin/python3"_s, u"-c"_s, script});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errorLines(),
                 QStringList{u"pelmora : %1 : L’opération n’a pas pu s’achever. (erreur Pelmora -10.)"_s.arg(file)});
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        QVERIFY2(result.output.trimmed().toInt() < 120, result.output.constData()); // MiB
#endif
        QVERIFY(result.output.trimmed().toInt() > 0);
    }

    void aNameWithAScriptThatTheFontLacksIsSavedAllTheSame()
    {
        const RunResult result = pelmora({u"--save"_s, folder(), cardFile(cardOf(u"李"_s, u"عمر"_s))});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(entries(folder()), QStringList{u"李 عمر.pdf"_s});
    }
};

QTEST_GUILESS_MAIN(tst_Save)
#include "tst_save.moc"
