#include "app/models/StatusMenu.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_StatusMenu : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theMenuHasSixEntriesTaggedFromTenAndTwoSeparators()
    {
        struct Expected
        {
            QString title; // none: a separator
            int tag;
        };
        const std::vector<Expected> expected{
            {u"Lecture de la carte Vitale"_s, 10},
            {u"Voir l'attestation"_s, 11},
            {u"Imprimer l'attestation"_s, 12},
            {u"Enregistrer l'attestation"_s, 13},
            {QString(), 0},
            {u"Ouvrir le dossier des attestations"_s, 14},
            {QString(), 0},
            {u"Quitter Pelmora"_s, 15},
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

    void theTagNumbersAreFixed()
    {
        QCOMPARE(int{StatusMenu::ReadTag}, 10);
        QCOMPARE(int{StatusMenu::ViewTag}, 11);
        QCOMPARE(int{StatusMenu::PrintTag}, 12);
        QCOMPARE(int{StatusMenu::SaveTag}, 13);
        QCOMPARE(int{StatusMenu::OpenFolderTag}, 14);
        QCOMPARE(int{StatusMenu::QuitTag}, 15);
    }

    void theMenuIsTitledPelmora() { QCOMPARE(StatusMenu::title, u"Pelmora"_s); }
};

template class RunnableTests<tst_StatusMenu, void>;
#include "tst_statusmenu.moc"
