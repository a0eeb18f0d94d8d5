// Makes documents of records with any texts. If PELMORA_FUZZ_DOCUMENTS names a folder, every thousandth document is
// saved there, for programs that check documents.
#include "attestation/document/AttestationPdf.h"
#include "attestation/page/PageOfCard.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/text/PageFonts.h"
#include "card/CardKeys.h"
#include "card/CardRecord.h"

#include <QFile>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

/// Takes texts and numbers from the front of the input.
class Input
{
public:
    Input(const uint8_t* data, size_t size)
        : m_rest(reinterpret_cast<const char*>(data), qsizetype(size))
    {
    }

    uint8_t number()
    {
        const uint8_t value = m_rest.isEmpty() ? 0 : uint8_t(m_rest[0]);
        m_rest = m_rest.mid(1);
        return value;
    }

    QString text()
    {
        const uint8_t length = number();
        const QString text = QString::fromUtf8(m_rest.left(length));
        m_rest = m_rest.mid(length);
        return text;
    }

private:
    QByteArray m_rest;
};

CardRecord recordOf(Input& input)
{
    CardRecord record;
    for (const RecordKey key : {CardKey::lastName, CardKey::firstName, CardKey::ssn, CardKey::regimeCode,
                                CardKey::fundCode, CardKey::managementCode, CardKey::fundCodeLibelle})
        record.setText(key, input.text());
    QList<BeneficiaryRecord> people;
    for (int count = input.number() % 40; count > 0; --count) {
        BeneficiaryRecord person;
        for (const RecordKey key : {CardKey::lastName, CardKey::firstName, CardKey::ssn, CardKey::birthdayDate})
            person.setText(key, input.text());
        people.append(person);
    }
    record.setBeneficiaries(people);
    return record;
}

void keep(const QByteArray& document)
{
    static const char* const folder =
        std::getenv("PELMORA_FUZZ_DOCUMENTS"); // NOLINT(concurrency-mt-unsafe): one thread
    static int number = 0;
    if (++number % 1000 != 0 || folder == nullptr)
        return;
    QFile file(QFile::decodeName(folder) + u"/%1.pdf"_s.arg(number));
    if (!file.open(QIODevice::WriteOnly) || file.write(document) != document.size())
        abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const Bundle bundle(QStringLiteral(PELMORA_STAGE_SHARE));
    static const std::expected<PageFonts, Error> fonts = PageFonts::load(bundle);
    static SchemeLogos logos(bundle);

    Input input(data, size);
    const bool hasTitle = input.number() % 2 == 1;
    const CardRecord record = recordOf(input);
    const auto document = renderAttestationPdf(pageOfCard(record, {.showRightLabel = hasTitle}, logos), fonts.value());
    if (!document || !document->startsWith("%PDF-1.4"))
        abort();
    keep(*document);
    return 0;
}
