#pragma once

#include <QString>

/// Pieces of card XML for the tests: a card of the given beneficiaries, a beneficiary of the given content.
namespace CardXml {

inline QString card(const QString& beneficiaries, const QString& technical = QString())
{
    return QStringLiteral("<T_AsnDonneesVitale><tech>%1</tech><listeBenef>%2</listeBenef></T_AsnDonneesVitale>")
        .arg(technical, beneficiaries);
}

inline QString beneficiary(const QString& content)
{
    return QStringLiteral("<T_AsnBeneficiaire>%1</T_AsnBeneficiaire>").arg(content);
}

/// A beneficiary with a name and a quality. A value that is null is left out.
inline QString person(const QString& lastName, const QString& quality = QString())
{
    const QString ident =
        lastName.isNull() ? QString() : QStringLiteral("<ident><nomUsuel>%1</nomUsuel></ident>").arg(lastName);
    const QString amo =
        quality.isNull() ? QString() : QStringLiteral("<amo><qualBenef>%1</qualBenef></amo>").arg(quality);
    return beneficiary(ident + amo);
}

} // namespace CardXml
