#include "tests/common/RunnableTests.h"
#include "tests/e2e/SaveTest.h"

#include <QCoreApplication>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace SaveTests;

/// Saving where the machine, the output or a card file has faults.
class tst_SaveFaults final : public SaveTest
{
    Q_OBJECT

private:
    // Saves a card on a tmpfs in a mount namespace of its own; then prints the PDF files and the names of all files.
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

    QString notSaved(const QString& card, const QString& reason) const
    {
        return u"pelmora : %1 : l’attestation n’a pas été enregistrée dans « %2 » : %3."_s.arg(card, folder(), reason);
    }

private Q_SLOTS:
    void aFileInTheWayOfTheFolderIsTold()
    {
        const QString inTheWay = cardFile(u"x"_s);
        const RunResult result = pelmora({u"--save"_s, inTheWay, zoe()});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errorLines(),
                 QStringList{u"pelmora : le dossier « %1 » ne peut pas être utilisé."_s.arg(inTheWay)});
        QCOMPARE(contentOf(inTheWay), QByteArray("x"));
    }

    void aFolderThatCannotBeWrittenIsTold()
    {
        const QString card = zoe();
        const RunResult result = pelmoraOnDisk(u"-o ro,mode=0755"_s, u"true"_s, card);
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errorLines(), QStringList{notSaved(card, u"le disque est en lecture seule"_s)});
        QCOMPARE(result.output, QByteArray());
    }

    void aFullDiskLeavesTheOldFile()
    {
        const QString card = zoe();
        const RunResult result =
            pelmoraOnDisk(u"-o size=16k,mode=0755"_s,
                          uR"(printf old >"$1/SPECIMEN Zoé.pdf"; head -c 8000 /dev/zero >"$1/filler")"_s, card);
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errorLines(), QStringList{notSaved(card, u"il n’y a plus de place sur le disque"_s)});
        QCOMPARE(QString::fromUtf8(result.output), u"oldSPECIMEN Zoé.pdf\nfiller\n"_s);
    }

    void aLimitOnTheSizeOfFilesIsToldAndLeavesTheOldFile()
    {
        const QString old = folder() + u"/SPECIMEN Zoé.pdf"_s;
        QVERIFY(writeFile(old, "old"));
        // Children inherit ignored signals, so the default action is restored.
        const QString script = u"import os, resource, signal, sys; signal.signal(signal.SIGXFSZ, signal.SIG_DFL);"
                               "resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000));"
                               "os.execv(sys.argv[1], sys.argv[1:])"_s;
        const QString card = zoe();
        const RunResult result = save({card}, {u"/usr/bin/python3"_s, u"-c"_s, script});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errorLines(), QStringList{notSaved(card, u"l’écriture a échoué (File too large)"_s)});
        QCOMPARE(entries(folder()), QStringList{u"SPECIMEN Zoé.pdf"_s});
        QCOMPARE(contentOf(old), QByteArray("old"));
    }

    void aPipeInThePlaceOfTheSettingsHoldsNothingUp()
    {
        QVERIFY(QDir().mkpath(path(u"config/MORVEL"_s)));
        QCOMPARE(mkfifo(QFile::encodeName(path(u"config/MORVEL/Pelmora.conf"_s)).constData(), 0600), 0);
        QCOMPARE(save({zoe()}, {u"timeout"_s, u"20"_s}).exitCode, 0);
        QCOMPARE(pelmora({u"--simulate"_s, u"--save"_s, folder()}, {u"timeout"_s, u"20"_s}).exitCode, 0);
    }

    void aReaderOfTheOutputThatLeavesStopsNothing()
    {
        const QString other = cardFile(cardOf(u"SPECIMEN"_s, u"Paul"_s));
        const QString script = u"import os, signal, sys; r, w = os.pipe(); os.close(r); os.dup2(w, 1);"
                               "signal.signal(signal.SIGPIPE, signal.SIG_DFL); os.execv(sys.argv[1], sys.argv[1:])"_s;
        const RunResult result = save({zoe(), other}, {u"/usr/bin/python3"_s, u"-c"_s, script});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(entries(folder()), (QStringList{u"SPECIMEN Paul.pdf"_s, u"SPECIMEN Zoé.pdf"_s}));
        QCOMPARE(result.errorLines(), QStringList(2, u"pelmora : la sortie standard ne peut pas être écrite."_s));
    }

    void coreDumpsAreOffForTheProgramAndWhatItStarts()
    {
        // A card service that records its limits.
        const QString service = path(u"service"_s);
        QVERIFY(writeFile(service, "#!/bin/sh\ngrep 'core file' /proc/self/limits >\"$HOME/limits\"\n"));
        QVERIFY(QFile::setPermissions(service, QFile::ReadOwner | QFile::ExeOwner));
        QCOMPARE(pelmora({u"--card-service"_s, service, u"--save"_s, folder()}).exitCode, 1);
        const QString limits = QString::fromLatin1(contentOf(path(u"limits"_s))).simplified();
        // A hard limit of 0 cannot be raised, and turns core dumps off, too.
        QVERIFY2(limits == u"Max core file size 1 1 bytes"_s || limits == u"Max core file size 0 0 bytes"_s,
                 qPrintable(limits));
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
        const QString file = path(u"bad.xml"_s);
        QVERIFY(writeFile(file, content));
        const RunResult result = save({file}, {u"timeout"_s, u"20"_s});
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
        const RunResult result = save({file}, {u"/usr/bin/python3"_s, u"-c"_s, script});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errorLines(),
                 QStringList{u"pelmora : %1 : L’opération n’a pas pu s’achever. (erreur Pelmora -10.)"_s.arg(file)});
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        QVERIFY2(result.output.trimmed().toInt() < 120, result.output.constData()); // MiB
#endif
        QVERIFY(result.output.trimmed().toInt() > 0);
    }
};

template class RunnableTests<tst_SaveFaults, QCoreApplication>;
#include "tst_savefaults.moc"
