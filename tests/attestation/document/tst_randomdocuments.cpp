#include "attestation/document/AttestationPdf.h"
#include "attestation/page/PageOfCard.h"
#include "attestation/page/SchemeLogos.h"
#include "card/CardKeys.h"
#include "tests/attestation/document/Tools.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QGuiApplication>
#include <QTest>

#include <array>
#include <random>

using namespace Qt::StringLiterals;

namespace {

// The number of documents, and how many of them another program checks.
constexpr int usualCount = 500;
constexpr int checkedCount = 1000; // at most
constexpr int usualChecks = 5;

int fromEnvironment(const char* name, int usual)
{
    bool isNumber = false;
    const int value = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber && value > 0 ? value : usual;
}

struct Characters
{
    char32_t first;
    char32_t last;
};

// Scripts, combining marks, direction controls, codes that are not characters, and halves of surrogate pairs.
constexpr std::array alphabets{
    Characters{U'A', U'z'},       Characters{0x20, 0x7e},         Characters{0xc0, 0x17f},
    Characters{0x300, 0x36f},     Characters{0x370, 0x3ff},       Characters{0x400, 0x4ff},
    Characters{0x590, 0x5ff},     Characters{0x600, 0x6ff},       Characters{0x900, 0x97f},
    Characters{0xe00, 0xe7f},     Characters{0x10a0, 0x10ff},     Characters{0x1e00, 0x1eff},
    Characters{0x2000, 0x206f},   Characters{0x4e00, 0x4eff},     Characters{0xac00, 0xacff},
    Characters{0xd800, 0xdfff},   Characters{0xe000, 0xe0ff},     Characters{0xfb00, 0xfb4f},
    Characters{0xfe70, 0xffff},   Characters{0x0, 0x1f},          Characters{0x10380, 0x1039f},
    Characters{0x1f300, 0x1f64f}, Characters{0x10fff0, 0x10ffff},
};

/// Records with random texts. The same seed gives the same records.
class RandomRecords
{
public:
    explicit RandomRecords(int seed)
        : m_random(static_cast<unsigned>(seed))
    {
    }

    CardRecord next()
    {
        CardRecord record;
        // Most cards have only Latin letters. The others usually have one more alphabet.
        m_alphabet = isOnceIn(10) ? anyAlphabet() : alphabets.front();
        for (const RecordKey key : {CardKey::lastName, CardKey::firstName, CardKey::ssn, CardKey::regimeCode,
                                    CardKey::fundCode, CardKey::managementCode, CardKey::fundCodeLibelle})
            setSome(record, key);
        if (isOnceIn(3))
            record.setText(CardKey::regimeCode, QString::number(number(0, 99)));
        QList<BeneficiaryRecord> people(isOnceIn(200) ? number(12, 99) : number(0, 4));
        for (BeneficiaryRecord& person : people) {
            for (const RecordKey key : {CardKey::lastName, CardKey::firstName, CardKey::ssn, CardKey::birthdayDate,
                                        CardKey::birthdayDateRaw, CardKey::rank})
                setSome(person, key);
        }
        record.setBeneficiaries(people);
        return record;
    }

    bool isOnceIn(int times) { return number(1, times) == 1; }

private:
    int number(int least, int most) { return std::uniform_int_distribution(least, most)(m_random); }

    template <typename Record>
    void setSome(Record& record, RecordKey key)
    {
        if (!isOnceIn(8))
            record.setText(key, text());
    }

    QString text()
    {
        const int length = isOnceIn(20) ? number(0, 300) : number(0, 25);
        const bool isMixed = isOnceIn(100);
        Characters alphabet = isOnceIn(2) ? alphabets.front() : m_alphabet;
        QString text;
        while (text.size() < length) {
            if (isMixed)
                alphabet = anyAlphabet();
            const auto character =
                std::uniform_int_distribution<std::uint32_t>(alphabet.first, alphabet.last)(m_random);
            if (QChar::requiresSurrogates(character))
                text += QChar::fromUcs4(character);
            else
                text += QChar(static_cast<char16_t>(character));
        }
        return text;
    }

    Characters anyAlphabet() { return alphabets.at(std::size_t(number(0, int(alphabets.size()) - 1))); }

    std::mt19937 m_random;
    Characters m_alphabet = alphabets.front();
};

} // namespace

/// PELMORA_RANDOM_DOCUMENTS sets the number of documents, PELMORA_RANDOM_SEED the seed of the random numbers.
class tst_RandomDocuments : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void anyRecordGivesASoundDocument()
    {
        const int count = fromEnvironment("PELMORA_RANDOM_DOCUMENTS", usualCount);
        const int interval = std::max(count / checkedCount, usualCount / usualChecks);
        RandomRecords records(fromEnvironment("PELMORA_RANDOM_SEED", 1));
        SchemeLogos logos(stagedBundle());
        const PageFonts fonts = pageFonts();
        for (int i = 1; i <= count; ++i) {
            const bool hasTitle = records.isOnceIn(2);
            const auto document =
                renderAttestationPdf(pageOfCard(records.next(), {.showRightLabel = hasTitle}, logos), fonts);
            QVERIFY2(document.has_value(), qPrintable(u"record %1"_s.arg(i)));
            if (i % interval != 0)
                continue;
            QVERIFY2(isSound(DocumentFile(*document)), qPrintable(u"record %1"_s.arg(i)));
        }
    }
};

template class RunnableTests<tst_RandomDocuments, QGuiApplication>;
#include "tst_randomdocuments.moc"
