// Makes a record from a card's XML of 4 KB, beside libxml2 alone parsing the same bytes.
#include "Timing.h"
#include "card/CardParser.h"

#include <libxml/parser.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int rounds = 5000;

QByteArray cardOfSixBeneficiaries()
{
    QByteArray persons;
    for (int rank = 1; rank <= 6; ++rank) {
        persons +=
            "<T_AsnBeneficiaire><ident><nomUsuel>SPECIMEN</nomUsuel><nomPatronymique>MODÈLE</nomPatronymique>"
            "<prenomUsuel>Hélène</prenomUsuel><naissance><date>14051985</date><dateEnCarte>850514</dateEnCarte>"
            "</naissance><rangDeNaissance>1</rangDeNaissance><nir>285057511612381</nir>"
            "<nirCertifie>285057511612381</nirCertifie><listePeriodesDroits><T_AsnPeriode><debut>01012025</debut>"
            "<fin>31122025</fin></T_AsnPeriode></listePeriodesDroits></ident><amo><qualBenef>" +
            QByteArray::number(6 - rank) +
            "</qualBenef><codeRegime>01</codeRegime><caisse>751</caisse><centreCarte>8801</centreCarte>"
            "<codeGestion>10</codeGestion><libelleExo>Pas d’exonération</libelleExo></amo></T_AsnBeneficiaire>\n";
    }
    return "<?xml version=\"1.0\" "
           "encoding=\"UTF-8\"?>\n<T_AsnDonneesVitale><tech><numSerie>0000000000012345</numSerie></tech>"
           "<listeBenef>" +
           persons + "</listeBenef></T_AsnDonneesVitale>\n";
}

void parseToRecord(const QString& text)
{
    const std::expected<XmlDocument, Error> document = XmlDocument::fromText(text);
    if (!document || !parseCardDocument(&*document))
        std::abort();
}

// The flags are those of the program.
void parseBare(const QByteArray& bytes)
{
    xmlDoc* document = xmlReadMemory(bytes.constData(), static_cast<int>(bytes.size()), nullptr, nullptr,
                                     XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NOCDATA |
                                         XML_PARSE_IGNORE_ENC);
    if (document == nullptr)
        std::abort();
    xmlFreeDoc(document);
}

} // namespace

int main()
{
    const QByteArray bytes = cardOfSixBeneficiaries();
    const QString text = QString::fromUtf8(bytes);
    std::vector<double> ours;
    std::vector<double> bare;
    // In turn, so that a slow moment of the machine affects both.
    for (int round = 0; round < rounds; ++round) {
        ours.push_back(timeOf([&text] { parseToRecord(text); }));
        bare.push_back(timeOf([&bytes] { parseBare(bytes); }));
    }
    const double oursMedian = median(ours);
    const double bareMedian = median(bare);
    std::printf("card XML of %lld bytes, medians of %d rounds\n", static_cast<long long>(bytes.size()), rounds);
    std::printf("  to its record       %7.1f us  (at most 100)\n", oursMedian);
    std::printf("  libxml2 parse alone %7.1f us\n", bareMedian);
    std::printf("  ratio               %7.2f     (at most 3)\n", oursMedian / bareMedian);
}
