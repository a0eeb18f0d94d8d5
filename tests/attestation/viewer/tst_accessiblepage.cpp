#include "attestation/document/AttestationPdf.h"
#include "attestation/page/MVNewAttestation.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/viewer/MVClipView.h"
#include "attestation/viewer/MVNewAttestationView.h"
#include "card/CardKeys.h"
#include "tests/attestation/document/Tools.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QAccessible>
#include <QApplication>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QString nameOf(const QAccessibleInterface* element)
{
    return element->text(QAccessible::Name);
}

QList<QAccessibleInterface*> childrenOf(const QAccessibleInterface* element)
{
    QList<QAccessibleInterface*> children;
    for (int index = 0; index < element->childCount(); ++index)
        children.append(element->child(index));
    return children;
}

QStringList namesOf(const QList<QAccessibleInterface*>& elements)
{
    QStringList names;
    for (const QAccessibleInterface* element : elements)
        names.append(nameOf(element));
    return names;
}

// The names of the elements without children, in reading order, without the logo's.
QStringList textsBelow(const QAccessibleInterface* element)
{
    if (element->role() == QAccessible::Graphic)
        return {};
    if (element->childCount() == 0)
        return {nameOf(element)};
    QStringList texts;
    for (const QAccessibleInterface* child : childrenOf(element))
        texts += textsBelow(child);
    return texts;
}

QString withoutBlanks(QString text)
{
    return text.remove(QRegularExpression(u"\\s"_s));
}

// The place of an element in the view.
QRect placeIn(const QWidget& view, const QAccessibleInterface* element)
{
    return element->rect().translated(-view.mapToGlobal(QPoint()));
}

} // namespace

class tst_AccessiblePage : public TestCase
{
    Q_OBJECT

private:
    TemporarySettings m_settings;
    SchemeLogos m_logos{stagedBundle()};
    PageFonts m_fonts = pageFonts();
    MVNewAttestation m_attestation{m_settings.store(), m_logos};
    std::unique_ptr<MVNewAttestationView> m_view;

    [[nodiscard]] QAccessibleInterface* page() const { return QAccessible::queryAccessibleInterface(m_view.get()); }
    [[nodiscard]] QAccessibleTableInterface* table(int index) const
    {
        return page()->child(page()->childCount() - 2 + index)->tableInterface();
    }

    static QStringList rowOf(const QAccessibleTableInterface* table, int row)
    {
        QStringList names;
        for (int column = 0; column < table->columnCount(); ++column)
            names.append(nameOf(table->cellAt(row, column)));
        return names;
    }

private Q_SLOTS:
    void init()
    {
        m_settings.setShowsRightLabel(false);
        m_attestation.setVitale(specimenCard(2));
        m_view = MVNewAttestationView::viewOf(m_attestation, m_fonts);
    }

    void cleanup() { m_view.reset(); }

    void thePageIsADocumentOfALogoTextsAndTwoTables()
    {
        QCOMPARE(page()->role(), QAccessible::Document);
        QCOMPARE(nameOf(page()), u"Attestation"_s);
        QList<QAccessible::Role> roles;
        for (const QAccessibleInterface* child : childrenOf(page()))
            roles.append(child->role());
        QCOMPARE(roles, QList({QAccessible::Graphic, QAccessible::StaticText, QAccessible::StaticText,
                               QAccessible::StaticText, QAccessible::Table, QAccessible::Table}));
    }

    void theLogoGoesByItsScheme()
    {
        QCOMPARE(nameOf(page()->child(0)), u"Régime général"_s);
        QCOMPARE(placeIn(*m_view, page()->child(0)), QRect(8, 15, 166, 70));
    }

    void aPageWithoutLogoBeginsWithItsTexts()
    {
        CardRecord card = specimenCard(2);
        card.setText(CardKey::regimeCode, u"77"_s);
        MVNewAttestation other(m_settings.store(), m_logos);
        other.setVitale(card);
        const auto view = MVNewAttestationView::viewOf(other, m_fonts);
        QCOMPARE(QAccessible::queryAccessibleInterface(view.get())->child(0)->role(), QAccessible::StaticText);
    }

    void theTextsAreThoseOfThePage()
    {
        QCOMPARE(namesOf(childrenOf(page()).sliced(1, 3)),
                 QStringList({u"CPAM de Paris"_s, u"Numero de l'assuré : 2 69 06 2B 123 456 34"_s,
                              u"Nom de l'assuré : SPECIMEN Marie"_s}));
    }

    void theTitleElementExistsWhenThePageShowsTheTitle()
    {
        m_settings.setShowsRightLabel(true);
        m_attestation.setVitale(specimenCard(2));
        QCOMPARE(nameOf(page()->child(4)), u"Attestation de droits à l'assurance maladie"_s);
    }

    void eachTableHasItsTitlesAndRows()
    {
        QCOMPARE(table(0)->rowCount(), 1);
        QCOMPARE(table(0)->columnCount(), 4);
        QCOMPARE(rowOf(table(0), 0), QStringList({u"01 751 8801"_s, u"10"_s, u"2 69 06 2B 123 456 34"_s, u""_s}));
        QCOMPARE(table(0)->columnDescription(2),
                 u"n° de sécurité sociale de l'assuré (à utiliser pour tous les bénéficiaires ci-dessous)"_s);

        QCOMPARE(table(1)->rowCount(), 2);
        QCOMPARE(table(1)->columnCount(), 4);
        QCOMPARE(rowOf(table(1), 1),
                 QStringList({u"SPECIMEN Numéro2"_s, u"1 85 05 78 006 084 91"_s, u"15/03/1980"_s, u"1"_s}));
        QCOMPARE(table(1)->columnDescription(0), u"Bénéficiaire(s) nom de famille suivi d'un éventuel nom d'usage"_s);
    }

    void tablesAreNamedByTheirFirstHeader()
    {
        QCOMPARE(namesOf(childrenOf(page()).last(2)),
                 QStringList({u"organisme de rattachement sécurité sociale"_s, u"Bénéficiaire(s)"_s}));
    }

    void cellsHaveTheirRowColumnAndHeader()
    {
        QAccessibleInterface* cell = table(1)->cellAt(1, 2);
        QCOMPARE(cell->role(), QAccessible::Cell);
        const QAccessibleTableCellInterface* place = cell->tableCellInterface();
        QCOMPARE(place->rowIndex(), 1);
        QCOMPARE(place->columnIndex(), 2);
        QCOMPARE(place->rowExtent(), 1);
        QCOMPARE(place->columnExtent(), 1);
        QCOMPARE(place->table(), cell->parent());
        QCOMPARE(place->columnHeaderCells().size(), 1);
        QCOMPARE(nameOf(place->columnHeaderCells().at(0)), u"né(e) le / Rang"_s);
        QCOMPARE(place->columnHeaderCells().at(0)->role(), QAccessible::ColumnHeader);
        QVERIFY(place->rowHeaderCells().isEmpty());
    }

    void theRankHasTheHeaderOfTheDate()
    {
        const QAccessibleTableCellInterface* rank = table(1)->cellAt(0, 3)->tableCellInterface();
        const QAccessibleTableCellInterface* date = table(1)->cellAt(0, 2)->tableCellInterface();
        QCOMPARE(rank->columnHeaderCells(), date->columnHeaderCells());
        QCOMPARE(table(1)->columnDescription(3), u"né(e) le / Rang"_s);
        QCOMPARE(placeIn(*m_view, date->columnHeaderCells().at(0)), QRect(473, 305, 115, 51));
    }

    void noCellExistsOutsideTheTablesRange()
    {
        QCOMPARE(table(1)->cellAt(2, 0), nullptr);
        QCOMPARE(table(1)->cellAt(0, 4), nullptr);
        QCOMPARE(table(1)->cellAt(-1, 0), nullptr);
        QCOMPARE(table(1)->cellAt(0, -1), nullptr);
        QCOMPARE(table(1)->columnDescription(4), QString());
    }

    void withoutBeneficiariesTheirTableHasHeadersOnly()
    {
        m_attestation.setVitale(specimenCard(0));
        QCOMPARE(table(1)->rowCount(), 0);
        QCOMPARE(childrenOf(page()).last()->childCount(), 3);
        QCOMPARE(placeIn(*m_view, childrenOf(page()).last()), QRect(8, 305, 580, 51));
    }

    void aPageWithoutRecordHasNoTextAndEmptyCells()
    {
        const MVNewAttestation empty(m_settings.store(), m_logos);
        const auto view = MVNewAttestationView::viewOf(empty, m_fonts);
        const QAccessibleInterface* blank = QAccessible::queryAccessibleInterface(view.get());
        QCOMPARE(blank->childCount(), 2);
        QCOMPARE(rowOf(blank->child(0)->tableInterface(), 0), QStringList({u""_s, u""_s, u""_s, u""_s}));
    }

    // The letters have the same order. Line breaks may differ.
    void theElementsHaveTheTextOfTheDocument_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << u"Marie"_s;
        QTest::newRow("accents") << u"Zoé Éloïse Ÿ"_s;
        QTest::newRow("very long") << u"Marie-Antoinette Charlotte Joséphine de la Tour "_s.repeated(3).trimmed();
        QTest::newRow("line breaks, and characters that no font has") << u"Ma\nrie\t\u200b\U000F1234 Anne"_s;
    }

    void theElementsHaveTheTextOfTheDocument()
    {
        QFETCH(const QString, name);
        CardRecord card = specimenCard(3);
        card.setText(CardKey::firstName, name);
        QList<BeneficiaryRecord> people = card.beneficiaries();
        people[0].setText(CardKey::firstName, name);
        card.setBeneficiaries(people);
        m_settings.setShowsRightLabel(true);
        m_attestation.setVitale(card);

        const DocumentFile document(renderAttestationPdf(m_attestation.page(), m_fonts).value());
        const QString written = QString::fromUtf8(toolOutput(u"pdftotext"_s, {u"-raw"_s, document.path(), u"-"_s}))
                                    .normalized(QString::NormalizationForm_C);
        QCOMPARE(withoutBlanks(textsBelow(page()).join(u' ')), withoutBlanks(written));
    }

    void elementsHaveThePlacesOfTheirInk()
    {
        const QAccessibleInterface* cell = table(1)->cellAt(1, 1);
        QCOMPARE(placeIn(*m_view, cell), QRect(293, 395, 181, 41));
        const QAccessibleInterface* name = page()->child(3);
        const QRect place = placeIn(*m_view, name);
        QCOMPARE(place.topLeft(), QPoint(8, 168));
        QVERIFY2(place.width() > 150 && place.width() < 300, qPrintable(QString::number(place.width())));
        QVERIFY2(place.height() >= 15 && place.height() <= 17, qPrintable(QString::number(place.height())));
    }

    void elementsMoveAndScaleWithThePage()
    {
        m_view->setPlacement(QTransform(0.5, 0, 0, 0.5, 100, 40));
        QCOMPARE(m_view->geometry(), QRect(100, 40, 298, 421));
        QCOMPARE(placeIn(*m_view, table(1)->cellAt(1, 1)), QRect(146, 197, 91, 21));
    }

    void theElementAtAPointIsFound()
    {
        const QPoint place = m_view->mapToGlobal(QPoint(300, 400));
        QAccessibleInterface* found = page()->childAt(place.x(), place.y());
        QCOMPARE(found, childrenOf(page()).last());
        QCOMPARE(nameOf(found->childAt(place.x(), place.y())), u"1 85 05 78 006 084 91"_s);
        const QPoint blank = m_view->mapToGlobal(QPoint(300, 800));
        QCOMPARE(page()->childAt(blank.x(), blank.y()), nullptr);
    }

    void everyElementHasItsParentAndIndex()
    {
        QList<QAccessibleInterface*> open{page()};
        int count = 0;
        while (!open.isEmpty()) {
            QAccessibleInterface* element = open.takeFirst();
            for (int index = 0; index < element->childCount(); ++index) {
                QAccessibleInterface* child = element->child(index);
                QVERIFY(child->isValid());
                QCOMPARE(child->parent(), element);
                QCOMPARE(element->indexOfChild(child), index);
                open.append(child);
                ++count;
            }
        }
        QCOMPARE(count, 1 + 3 + 2 + (4 + 4) + (3 + 8));
        QCOMPARE(page()->child(6), nullptr);
        QCOMPARE(page()->child(-1), nullptr);
        QCOMPARE(page()->indexOfChild(page()), -1);
    }

    void elementsAreVisibleWhenThePageIs()
    {
        QVERIFY(page()->child(0)->state().invisible);
        QVERIFY(page()->child(0)->state().readOnly);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
        QVERIFY(!page()->child(0)->state().invisible);
        QVERIFY(!table(1)->cellAt(0, 0)->state().invisible);
        QCOMPARE(table(1)->cellAt(0, 0)->window(), m_view->windowHandle());
    }

    void nothingCanBeSelectedOrChanged()
    {
        QAccessibleInterface* cell = table(1)->cellAt(0, 0);
        cell->setText(QAccessible::Name, u"autre"_s);
        QCOMPARE(nameOf(cell), u"SPECIMEN Numéro1"_s);
        QVERIFY(!table(1)->selectRow(0));
        QVERIFY(!table(1)->selectColumn(0));
        QCOMPARE(table(1)->selectedCellCount(), 0);
        QVERIFY(!cell->tableCellInterface()->isSelected());
    }

    void anotherRecordHasOtherElements()
    {
        const QAccessible::Id before = QAccessible::uniqueId(page()->child(0));
        m_attestation.setVitale(specimenCard(5));
        QCOMPARE(table(1)->rowCount(), 5);
        QCOMPARE(QAccessible::accessibleInterface(before), nullptr);
    }

    void elementsAreInvalidAfterTheirViewIsDeleted()
    {
        const QAccessible::Id text = QAccessible::uniqueId(page()->child(0));
        const QAccessible::Id cell = QAccessible::uniqueId(table(1)->cellAt(0, 0));
        QVERIFY(QAccessible::accessibleInterface(cell) != nullptr);
        m_view.reset();
        QCOMPARE(QAccessible::accessibleInterface(text), nullptr);
        QCOMPARE(QAccessible::accessibleInterface(cell), nullptr);
    }

    void aViewWithoutFontsHasNoElements()
    {
        MVNewAttestationView view;
        QCOMPARE(QAccessible::queryAccessibleInterface(&view)->childCount(), 0);
    }
};

template class RunnableTests<tst_AccessiblePage, QApplication>;
#include "tst_accessiblepage.moc"
