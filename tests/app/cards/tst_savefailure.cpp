#include "app/cards/SaveFailure.h"
#include "card/PelmoraError.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QSet>
#include <QTest>

#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array obstacles{WriteObstacle::NameTaken,    WriteObstacle::NoFolder,   WriteObstacle::DiskFull,
                               WriteObstacle::QuotaReached, WriteObstacle::NotAllowed, WriteObstacle::ReadOnly,
                               WriteObstacle::NameRefused,  WriteObstacle::Other};

SaveFailure writeFailure(WriteObstacle obstacle)
{
    return {SaveFailure::Kind::WriteFailed, u"/dossier/SPECIMEN Zoé.pdf"_s, {obstacle, u"raison"_s}, {}};
}

const SaveFailure noDocument{SaveFailure::Kind::NoDocument, u"/x"_s, {}, u"Pas de logo."_s};

} // namespace

class tst_SaveFailure : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void anErrorTellsTheFolderAndNotThePatient()
    {
        const Error folder = SaveFailure{SaveFailure::Kind::FolderUnusable, u"/x"_s, {}, {}}.error(u"a : "_s);
        QCOMPARE(folder.localizedDescription(), u"le dossier « /x » ne peut pas être utilisé."_s);
        QCOMPARE(noDocument.error(u"a : "_s).localizedDescription(), u"Pas de logo."_s);
        QCOMPARE(writeFailure(WriteObstacle::Other).error(u"a : "_s).localizedDescription(),
                 u"a : l’attestation n’a pas été enregistrée dans « /dossier » : raison."_s);
    }

    void eachObstacleHasItsNumber()
    {
        QSet<int> codes{SaveFailure{SaveFailure::Kind::FolderUnusable, u"/x"_s, {}, {}}.error({}).code()};
        for (const WriteObstacle obstacle : obstacles)
            codes.insert(writeFailure(obstacle).error({}).code());
        QCOMPARE(codes, (QSet<int>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
        QCOMPARE(noDocument.error({}), PelmoraError::internalError());
    }

    void thePanelTellsWhoseAttestationIsNotSavedAndWhy()
    {
        QCOMPARE((SaveFailure{SaveFailure::Kind::FolderUnusable, u"/x"_s, {}, {}}.panelText()),
                 u"Non enregistrée\u00A0: le dossier est inutilisable. Changez-le dans les préférences."_s);
        QCOMPARE(noDocument.panelText(), u"Non enregistrée\u00A0: Pas de logo."_s);
        QCOMPARE(writeFailure(WriteObstacle::DiskFull).panelText(),
                 u"Non enregistrée\u00A0: raison («\u202FSPECIMEN Zoé.pdf\u202F»)."_s);
    }

    void theAlertTellsThatNothingWasWrittenWhyAndWhatToDo()
    {
        QSet<QString> texts;
        for (const WriteObstacle obstacle : obstacles) {
            const QString text = writeFailure(obstacle).alertText();
            QVERIFY(text.startsWith(u"Malgré le message précédent, rien n’a été écrit\u00A0: «\u202FSPECIMEN "
                                    "Zoé.pdf\u202F» n’est pas enregistré, car raison.\n\n"_s));
            QVERIFY(text.endsWith(u", puis enregistrez de nouveau."_s));
            texts.insert(text);
        }
        // Two of the obstacles have the same remedy: another disk.
        QCOMPARE(texts.size(), static_cast<qsizetype>(obstacles.size()) - 1);
    }

    void aNameOfTheCardDoesNotStandInForTheReason()
    {
        SaveFailure failure = writeFailure(WriteObstacle::DiskFull);
        failure.path = u"/dossier/%2 %3.pdf"_s;
        QVERIFY(failure.alertText().contains(u"«\u202F%2 %3.pdf\u202F»"_s));
        QVERIFY(failure.panelText().contains(u"«\u202F%2 %3.pdf\u202F»"_s));
    }
};

template class RunnableTests<tst_SaveFailure, void>;
#include "tst_savefailure.moc"
