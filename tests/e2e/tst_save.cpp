#include "tests/common/RunnableTests.h"
#include "tests/e2e/SaveTest.h"

#include <QCoreApplication>

#include <cstdio>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace SaveTests;

class tst_Save final : public SaveTest
{
    Q_OBJECT

private:
    QString textOf(const QString& pdf) const
    {
        return QString::fromUtf8(run(m_home->path(), u"pdftotext"_s, {u"-layout"_s, pdf, u"-"_s}).output);
    }

private Q_SLOTS:
    void eachCardFileBecomesOneAttestationAndItsPathOneLine()
    {
        const QString first = zoe();
        const QString second = cardFile(cardOf(u"SPECIMEN"_s, u"François"_s));
        const RunResult result = save({first, second});
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
        const RunResult result = save({zoe()});
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

    void nameTextAndOutputAreTheSameInAnyLocale_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::newRow("ASCII") << u"C"_s;
        QTest::newRow("other letters for i") << u"tr_TR.UTF-8"_s;
        QTest::newRow("right to left") << u"ar_EG.UTF-8"_s;
        QTest::newRow("unknown") << u"xx_XX.ISO-8859-1"_s;
    }

    void nameTextAndOutputAreTheSameInAnyLocale()
    {
        QFETCH(const QString, locale);
        const QString usual = save({zoe()}).outputLines().value(0);
        const QString text = textOf(usual);
        QVERIFY(text.contains(u"SPECIMEN Zoé"_s));
        QVERIFY(QFile::remove(usual));
        const RunResult result = save({zoe()}, {u"env"_s, u"LC_ALL="_s + locale});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.errors, QByteArray());
        QCOMPARE(result.outputLines(), QStringList{usual});
        QCOMPARE(textOf(usual), text);
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
        const QString empty = cardFile(u"<T_AsnDonneesVitale/>"_s);
        const QString good = zoe();
        const RunResult result = save({missing, notXml, m_home->path(), empty, good});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.outputLines(), QStringList{folder() + u"/SPECIMEN Zoé.pdf"_s});
        const QStringList expected{
            u"pelmora : %1 : Le fichier n’existe pas."_s.arg(missing),
            u"pelmora : %1 : Ce fichier n’est pas une carte Vitale. Le document n’est pas du XML valide "
            "(ligne 1, colonne 1)."_s.arg(notXml),
            u"pelmora : %1 : Le fichier ne peut pas être lu."_s.arg(m_home->path()),
            u"pelmora : %1 : La carte Vitale ne comporte aucun bénéficiaire."_s.arg(empty),
        };
        QCOMPARE(result.errorLines(), expected);
    }

    // Names in ISO Latin 1, as files of old systems have them.
    void filesAndFoldersWhoseNamesAreNotUtf8AreUsedAsTheyAre()
    {
        const QByteArray home = QFile::encodeName(m_home->path());
        const QByteArray card = home + "/Zo\xE9.xml";
        QCOMPARE(std::rename(QFile::encodeName(zoe()).constData(), card.constData()), 0);
        // QProcess cannot pass such bytes as arguments.
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
        // Removed here, because Qt would not find them.
        QCOMPARE(::rmdir((home + "/at\xE9").constData()), 0);
        QCOMPARE(::unlink(card.constData()), 0);
    }

    void anOlderAttestationOfTheSameNameIsReplaced()
    {
        const QString old = folder() + u"/SPECIMEN Zoé.pdf"_s;
        QVERIFY(writeFile(old, "old"));
        const RunResult result = save({zoe()});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(entries(folder()), QStringList{u"SPECIMEN Zoé.pdf"_s});
        QVERIFY(contentOf(old).startsWith("%PDF-1."));
        QCOMPARE(modeOf(old), 0600U);
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
        const RunResult result = save({file});
        QCOMPARE(result.errors, QByteArray());
        QCOMPARE(result.outputLines(), QStringList{folder() + u'/' + name});
        QCOMPARE(entries(folder()), QStringList{name});
    }

    void nothingIsWrittenOutsideTheFolder()
    {
        const QString file = zoe();
        QCOMPARE(save({file}).exitCode, 0);
        QStringList left = entries(m_home->path());
        // Qt and the font library store files there, which contain nothing of a card.
        left.removeAll(u"cache"_s);
        left.removeAll(u"runtime"_s);
        QCOMPARE(left, (QStringList{u"attestations"_s, file.section(u'/', -1)}));
    }

    void aSiteSettingIsUsedWithoutAWindowToo()
    {
        const QString title = u"Attestation de droits"_s;
        QVERIFY(!textOf(save({zoe()}).outputLines().value(0)).contains(title));
        QVERIFY(writeFile(path(u"etc/MORVEL/Pelmora.conf"_s), "[Verrouillé]\nMVShowRightLabelPrintOption=true\n"));
        QVERIFY(writeFile(path(u"config/MORVEL/Pelmora.conf"_s), "[General]\nMVShowRightLabelPrintOption=false\n"));
        const RunResult result = save({zoe()}, {u"env"_s, u"XDG_CONFIG_DIRS="_s + path(u"etc"_s)});
        QVERIFY(textOf(result.outputLines().value(0)).contains(title));
        QCOMPARE(result.errors, QByteArray());
    }

    void aRelativeFolderIsMadeWhereThePersonStands()
    {
        const RunResult result = pelmora({u"--save"_s, u"a/b é"_s, zoe()}, {u"env"_s, u"-C"_s, m_home->path()});
        QCOMPARE(result.outputLines(), QStringList{u"a/b é/SPECIMEN Zoé.pdf"_s});
        QCOMPARE(entries(path(u"a/b é"_s)), QStringList{u"SPECIMEN Zoé.pdf"_s});
    }

    void theAttestationsFolderIsItsOwnersAloneAndThoseAboveAreAsUsual()
    {
        QCOMPARE(
            pelmora({u"--save"_s, folder() + "/a/b/"_L1, zoe()}, {u"sh"_s, u"-c"_s, u"umask 000; exec \"$0\" \"$@\""_s})
                .exitCode,
            0);
        QCOMPARE(modeOf(folder() + "/a"_L1), 0777U);
        QCOMPARE(modeOf(folder() + "/a/b"_L1), 0700U);
        QCOMPARE(modeOf(folder() + u"/a/b/SPECIMEN Zoé.pdf"_s), 0600U);
    }

    void theLongestNameCanBeSavedAgain()
    {
        const QString file = cardFile(cardOf(QString(300, u'é'), u"Zoé"_s));
        QCOMPARE(save({file}).exitCode, 0);
        QCOMPARE(save({file}).exitCode, 0);
        QCOMPARE(entries(folder()), QStringList{QString(125, u'é') + u".pdf"_s});
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

    void aNameInAScriptThatIsNotInTheFontIsSaved()
    {
        const RunResult result = save({cardFile(cardOf(u"李"_s, u"عمر"_s))});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(entries(folder()), QStringList{u"李 عمر.pdf"_s});
    }
};

template class RunnableTests<tst_Save, QCoreApplication>;
#include "tst_save.moc"
