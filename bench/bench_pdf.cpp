// From a card record to the bytes of its attestation, in a program that runs already, beside the same page drawn bare.
#include "BarePage.h"
#include "SpecimenCard.h"
#include "Timing.h"
#include "attestation/document/AttestationPdf.h"
#include "attestation/page/PageOfCard.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/text/PageFonts.h"

#include <QGuiApplication>
#include <QSvgRenderer>

#include <cstdio>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int warmUps = 20;
constexpr int rounds = 300;

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const Bundle bundle(QStringLiteral(PELMORA_STAGE_SHARE));
    const auto fonts = PageFonts::load(bundle);
    if (!fonts)
        qFatal("%s", qPrintable(fonts.error().localizedDescription()));
    SchemeLogos logos(bundle);
    const BareFonts bareFonts = loadBareFonts(QStringLiteral(PELMORA_STAGE_SHARE));
    QSvgRenderer bareLogo(QStringLiteral(PELMORA_LOGOS "/01.svg"));

    const CardRecord card = specimenCard();
    const auto fromRecord = [&] {
        return renderAttestationPdf(pageOfCard(card, {}, logos), *fonts).value_or(QByteArray());
    };
    const auto bare = [&] { return barePdf(bareFonts, bareLogo); };
    if (fromRecord().isEmpty() || bare().isEmpty())
        fail("no document");

    std::vector<double> ours;
    std::vector<double> floor;
    std::vector<double> ratios;
    for (int round = 0; round < warmUps + rounds; ++round) {
        const double bareTime = timeOf(bare);
        const double ourTime = timeOf(fromRecord);
        if (round < warmUps)
            continue;
        floor.push_back(bareTime);
        ours.push_back(ourTime);
        ratios.push_back(ourTime / bareTime);
    }
    std::printf("record to PDF   %8.0f us  (%lld bytes)\n", median(ours), static_cast<long long>(fromRecord().size()));
    std::printf("bare QPdfWriter %8.0f us  (%lld bytes)\n", median(floor), static_cast<long long>(bare().size()));
    std::printf("ratio           %8.2f     (at most 0.60)\n", median(ratios));
    return 0;
}
