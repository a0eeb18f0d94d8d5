#include "attestation/page/AttestationTables.h"

#include "attestation/page/FormatNSS.h"

using namespace Qt::StringLiterals;

namespace {

TableColumn column(const QString& title, const QVariant& width, const QVariantMap& others = {})
{
    TableColumn column = others;
    column.insert(TableColumnKey::title, title);
    column.insert(TableColumnKey::width, width);
    return column;
}

TableCell cell(const QString& data)
{
    return {{TableCellKey::data, data}};
}

TableCell fixedWidthCell(const QString& data)
{
    return {{TableCellKey::data, data}, {TableCellKey::fixeWidthFont, true}};
}

std::optional<QString> lineText(const BeneficiaryLine& line, const QString& key)
{
    const auto found = line.constFind(key);
    return found == line.cend() ? std::nullopt : std::optional(found->toString());
}

} // namespace

double columnWidth(const TableColumn& column)
{
    return double(column.value(TableColumnKey::width).toFloat());
}

const QList<TableColumn>& organismColumns()
{
    static const QList<TableColumn> columns{
        column(u"organisme de rattachement sécurité sociale"_s, 210.0F),
        column(u"code gestion"_s, 75.0F),
        column(u"n° de sécurité sociale de l'assuré\n(à utiliser pour tous les bénéficiaires ci-dessous)"_s, 180.0F),
        column(u"modulation du ticket modérateur"_s, 114.0F, {{TableColumnKey::drawSeparator, false}}),
    };
    return columns;
}

const QList<TableColumn>& beneficiaryColumns()
{
    // One rule only, between number and date: date and rank share their title.
    static const QList<TableColumn> columns{
        column(u"Bénéficiaire(s)\nnom de famille suivi d'un éventuel nom d'usage"_s, 285,
               {{TableColumnKey::drawSeparator, false}}),
        column(u"n° de sécurité sociale du bénéficiaire\n(pour information)"_s, 180.0F,
               {{TableColumnKey::alignment, RightAlignment}}),
        column(u"né(e) le / Rang"_s, 86.0F,
               {{TableColumnKey::drawSeparator, false}, {TableColumnKey::alignment, RightAlignment}}),
        column(u""_s, 28.0F, {{TableColumnKey::drawSeparator, false}, {TableColumnKey::alignment, CenterAlignment}}),
    };
    return columns;
}

TableRow organismRow(const AttestationPage& page)
{
    // The document shows no modulation, whatever the card says: its cell stays blank.
    return {
        cell(page.organism.value_or(QString())),
        cell(page.gestionCode.value_or(QString())),
        fixedWidthCell(formatNSS(page.NSS)),
        cell(QString()),
    };
}

TableRow beneficiaryRow(const BeneficiaryLine& line)
{
    return {
        cell(lineText(line, BeneficiaryLineKey::name).value_or(QString())),
        fixedWidthCell(formatNSS(lineText(line, BeneficiaryLineKey::nss))),
        fixedWidthCell(lineText(line, BeneficiaryLineKey::birthdayDate).value_or(QString())),
        cell(lineText(line, BeneficiaryLineKey::rank).value_or(QString())),
    };
}
