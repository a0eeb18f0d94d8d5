#include "service/diagnosis/Diagnosis.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

ReaderFacts reader(const QString& shown, std::expected<ReaderState, CardFault> state = ReaderState{})
{
    return {.name = {.shown = shown, .system = shown.toUtf8() + " 00 00", .model = shown}, .state = std::move(state)};
}

/// A machine on which all is well.
Diagnosis soundDiagnosis()
{
    Diagnosis diagnosis;
    diagnosis.version = u"1.2"_s;
    diagnosis.socket = {.path = u"/run/pcscd.comm"_s, .permissions = u"rw-rw-rw- root root"_s, .isAccessible = true};
    diagnosis.readers = QList<ReaderFacts>{
        reader(u"Feitian SCR301"_s,
               ReaderState{.hasCard = true, .isMute = false, .isInUse = false, .atr = QByteArray("\x3B\x75\x00", 3)}),
        reader(u"Autre"_s)};
    diagnosis.installedPath = u"/usr/lib/a.so"_s;
    diagnosis.installed = InstalledFacts{
        .refusal = SystemFileFault{.isAbsent = true, .reason = {}}, .isOpen = false, .versions = {}, .readers = {}};
    diagnosis.cardMaps = {u"Une carte, version 1"_s, u"Une autre, version 2"_s};
    diagnosis.protections = {{u"Réseau"_s, u"aucun"_s, {}},
                             {u"Sockets locales"_s, u"celles de PC/SC et du journal seulement"_s, {}}};
    return diagnosis;
}

InstalledFacts openLibrary(const QStringList& readers)
{
    return {.refusal = std::nullopt,
            .isOpen = true,
            .versions = {.library = u"4.20"_s, .cardTable = u"7"_s, .destinationTable = {}, .authorisationTable = {}},
            .readers = readers};
}

/// The line, if the text has it; otherwise a message with the line and the text.
QString withLine(const Diagnosis& diagnosis, const QString& line)
{
    const QString text = diagnosisText(diagnosis);
    return text.split(u'\n').contains(line) ? line : u"« %1 » is not in:\n%2"_s.arg(line, text);
}

} // namespace

class tst_Diagnosis : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void allIsToldInColumns()
    {
        const QString expected = uR"(Pelmora 1.2, service de lecture : diagnostic (aucune carte n’est lue)

Service PC/SC
  Socket              /run/pcscd.comm
  Droits              rw-rw-rw- root root (accessible)
  État                en marche

Lecteur « Feitian SCR301 »
  Nom PC/SC           Feitian SCR301 00 00
  Carte Vitale        lecteur accepté
  Carte               présente
  ATR                 3B 75 00

Lecteur « Autre »
  Nom PC/SC           Autre 00 00
  Carte Vitale        lecteur non retenu
  Carte               absente

Bibliothèque de lecture installée
  Fichier             /usr/lib/a.so
  État                absente

Bibliothèque de lecture embarquée
  Version             1.2
  Emploi              sert en mode automatique
  Cartes connues      Une carte, version 1
                      Une autre, version 2

Protections
  Réseau              aucun
  Sockets locales     celles de PC/SC et du journal seulement

Conclusion : un lecteur « Feitian SCR301 » est prêt, Pelmora peut lire les cartes connues.
)"_s;
        QCOMPARE(diagnosisText(soundDiagnosis()).split(u'\n'), expected.split(u'\n'));
        QVERIFY(soundDiagnosis().isReady());
    }

    void whatIsWrongIsTold_data()
    {
        QTest::addColumn<Diagnosis>("diagnosis");
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("isReady");
        const auto row = [](const char* name, bool isReady, const QString& line, auto&& spoil) {
            Diagnosis diagnosis = soundDiagnosis();
            spoil(diagnosis);
            QTest::newRow(name) << diagnosis << line << isReady;
        };
        row("no socket", true, u"  Socket              /run/pcscd.comm (absent)"_s,
            [](Diagnosis& d) { d.socket.permissions.clear(); });
        row("forbidden socket", true, u"  Droits              rw-rw-rw- root root (inaccessible à ce compte)"_s,
            [](Diagnosis& d) { d.socket.isAccessible = false; });
        row("service down", false, u"  État                "_s + describe(CardFault::ServiceDown),
            [](Diagnosis& d) { d.readers = std::unexpected(CardFault::ServiceDown); });
        row("service that hangs", false, u"  État                pas de réponse : un appel reste bloqué"_s,
            [](Diagnosis& d) { d.readers.reset(); });
        row("no reader", false, u"  Aucun               vérifiez le branchement et le pilote (pcsc_scan -r)"_s,
            [](Diagnosis& d) { d.readers = QList<ReaderFacts>(); });
        row("another reader only", false,
            u"Conclusion : Pelmora ne trouve pas de lecteur « Feitian SCR301 », le seul qu’il accepte."_s,
            [](Diagnosis& d) { d.readers = QList{reader(u"Feitian SCR301 (2)"_s)}; });
        row("reader lost", false, u"  Carte               "_s + describe(CardFault::ReaderLost), [](Diagnosis& d) {
            d.readers = QList{reader(u"Feitian SCR301"_s, std::unexpected(CardFault::ReaderLost))};
        });
        row("mute card", true, u"  Carte               muette : à l’envers, encrassée ou hors d’usage"_s,
            [](Diagnosis& d) {
                d.readers = QList{reader(u"Feitian SCR301"_s,
                                         ReaderState{.hasCard = true, .isMute = true, .isInUse = false, .atr = {}})};
            });
        row("reader in use", true, u"  Carte               absente (un programme s’en sert)"_s, [](Diagnosis& d) {
            d.readers = QList{reader(u"Feitian SCR301"_s,
                                     ReaderState{.hasCard = false, .isMute = false, .isInUse = true, .atr = {}})};
        });
        row("reader kept by a program", true,
            u"  Carte               présente (un programme la garde pour lui seul : fermez-le)"_s, [](Diagnosis& d) {
                d.readers = QList{
                    reader(u"Feitian SCR301"_s,
                           ReaderState{.hasCard = true, .isMute = false, .isInUse = true, .isKept = true, .atr = {}})};
            });
        row("refused library", true, u"  État                refusée : raison"_s,
            [](Diagnosis& d) { d.installed->refusal = SystemFileFault{.isAbsent = false, .reason = u"raison"_s}; });
        row("library that does not open", true, u"  État                refusée : elle ne s’ouvre pas"_s,
            [](Diagnosis& d) { d.installed->refusal.reset(); });
        row("library that hangs", false, u"  État                pas de réponse : un appel reste bloqué"_s,
            [](Diagnosis& d) { d.installed.reset(); });
        row("what the library that hangs does to the other one", false,
            u"  Emploi              en mode embarqué seulement"_s, [](Diagnosis& d) { d.installed.reset(); });
        row("conclusion with a library that hangs", false,
            u"Conclusion : la bibliothèque de lecture installée bloque la lecture, retirez-la ou choisissez le mode "
            u"embarqué."_s,
            [](Diagnosis& d) { d.installed.reset(); });
        row("no card is known", false,
            u"Conclusion : un lecteur « Feitian SCR301 » est prêt, mais Pelmora ne connaît aucune carte."_s,
            [](Diagnosis& d) { d.cardMaps.clear(); });
        row("faulty map", true, u"  À corriger          carte.json : ligne 3"_s,
            [](Diagnosis& d) { d.warnings = {u"carte.json : ligne 3"_s}; });
        row("a protection that is not available", true,
            u"  Réseau              indisponible (Operation not supported)"_s,
            [](Diagnosis& d) { d.protections[0].obstacle = u"Operation not supported"_s; });
    }

    void whatIsWrongIsTold()
    {
        QFETCH(Diagnosis, diagnosis);
        QFETCH(QString, line);
        QFETCH(bool, isReady);
        QCOMPARE(withLine(diagnosis, line), line);
        QCOMPARE(diagnosis.isReady(), isReady);
    }

    void anInstalledLibraryThatOpensIsTheOneThatReads()
    {
        Diagnosis diagnosis = soundDiagnosis();
        diagnosis.installed = openLibrary({u"Feitian SCR301"_s, u"Autre"_s});
        for (const QString& line :
             {u"  État                acceptée, sert en mode automatique"_s, u"  Version             4.20"_s,
              u"  Table des cartes    7"_s, u"  Destinataires       —"_s,
              u"  Lecteurs            Feitian SCR301, Autre"_s, u"  Emploi              en mode embarqué seulement"_s,
              u"Conclusion : un lecteur « Feitian SCR301 » est prêt, Pelmora peut lire une carte."_s})
            QCOMPARE(withLine(diagnosis, line), line);
        QVERIFY(diagnosis.isReady());
        // Only the library's readers count, not those of PC/SC.
        diagnosis.installed = openLibrary({u"Autre"_s});
        QVERIFY(!diagnosis.isReady());
    }
};

template class RunnableTests<tst_Diagnosis, void>;
#include "tst_diagnosis.moc"
