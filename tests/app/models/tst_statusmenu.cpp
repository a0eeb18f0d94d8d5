#include "app/models/StatusMenu.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_StatusMenu : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theMenuHasSixEntriesWithTheirTagsAndTwoSeparators()
    {
        struct Expected
        {
            QString title; // none: a separator
            int tag;
        };
        const std::vector<Expected> expected{
            {u"Lecture de la carte Vitale"_s, StatusMenu::ReadTag},
            {u"Voir l'attestation"_s, StatusMenu::ViewTag},
            {u"Imprimer l'attestation"_s, StatusMenu::PrintTag},
            {u"Enregistrer l'attestation"_s, StatusMenu::SaveTag},
            {QString(), 0},
            {u"Ouvrir le dossier des attestations"_s, StatusMenu::OpenFolderTag},
            {QString(), 0},
            {u"Quitter Pelmora"_s, StatusMenu::QuitTag},
        };
        const std::vector<MenuEntry> entries = StatusMenu::entries();
        QCOMPARE(entries.size(), expected.size());
        for (std::size_t index = 0; index < expected.size(); ++index) {
            QCOMPARE(entries[index].isSeparator, expected[index].title.isNull());
            QCOMPARE(entries[index].title, expected[index].title);
            QCOMPARE(entries[index].tag, expected[index].tag);
            QVERIFY(entries[index].enabled);
        }
    }
};

template class RunnableTests<tst_StatusMenu, void>;
#include "tst_statusmenu.moc"
