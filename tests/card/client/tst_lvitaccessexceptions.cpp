#include "tests/card/client/ClientTest.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

using namespace Qt::StringLiterals;
using namespace ClientOutcome;
using namespace ClientTest;

namespace {

// Larger allocations are refused. Texts and nodes of Qt and libxml2 are not allocated with operator new.
std::atomic<std::size_t> largestAllocation = std::numeric_limits<std::size_t>::max();

/// During its life, the program's allocations of more than that many bytes throw.
class AllocationLimit
{
public:
    explicit AllocationLimit(std::size_t bytes) { largestAllocation = bytes; }
    ~AllocationLimit() { largestAllocation = std::numeric_limits<std::size_t>::max(); }
    Q_DISABLE_COPY_MOVE(AllocationLimit)
};

FakeScript informations(const QString& version)
{
    return FakeScript().text(
        "informations", "Informations",
        u"<r><apiLecVitale><version>7.10</version><tableHab>%1</tableHab></apiLecVitale></r>"_s.arg(version));
}

} // namespace

// Replaces the program's operator new, so that a test can make an allocation fail.
void* operator new(std::size_t size)
{
    void* const memory = size > largestAllocation ? nullptr : std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

/// A client whose reading of a document throws std::bad_alloc.
class tst_LVitAccessExceptions : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void informationsThatThrowGiveTheGeneralErrorAndAreCleared()
    {
        const auto [fake, client] = Served(informations(QString(20'000, u'7')));
        QCOMPARE(summary(awaitInformations(client)), success);
        QCOMPARE(client->informations()->size(), 2);
        QCOMPARE(client->informations()->value(u"MVTableHabVersion"_s).toString().size(), 20'000);

        std::optional<Outcome<QVariantMap>> outcome;
        {
            const AllocationLimit limit(16'384);
            outcome = awaitInformations(client);
        }
        // The version that was read before is cleared.
        QCOMPARE(summary(outcome), general);
        QCOMPARE(outcome->result, QVariantMap());
        QCOMPARE(client->informations(), QVariantMap());

        QCOMPARE(summary(awaitInformations(client)), success);
        QCOMPARE(fake.processes().size(), 1);
    }

    void aReadThatThrowsIsTheGeneralErrorWithoutARecord()
    {
        // A list of that many persons needs one allocation above the limit below.
        constexpr int persons = 400;
        const QString card = u"<T_AsnDonneesVitale><listeBenef>%1</listeBenef></T_AsnDonneesVitale>"_s.arg(
            u"<T_AsnBeneficiaire><ident><nomUsuel>SPECIMEN</nomUsuel></ident></T_AsnBeneficiaire>"_s.repeated(persons));
        const auto [fake, client] = Served(FakeScript().text("vitale_read", "Vitale", card));
        const auto good = awaitRead(client);
        QCOMPARE(summary(good), success);
        QCOMPARE(good->result->beneficiaries().size(), persons);

        std::optional<Outcome<CardRecord>> outcome;
        {
            const AllocationLimit limit(2000);
            outcome = awaitRead(client);
        }
        QCOMPARE(summary(outcome), general);
        QVERIFY(!outcome->result);

        QCOMPARE(summary(awaitRead(client)), success);
        QCOMPARE(fake.processes().size(), 1);
    }
};

template class RunnableTests<tst_LVitAccessExceptions, QCoreApplication>;

#include "tst_lvitaccessexceptions.moc"
