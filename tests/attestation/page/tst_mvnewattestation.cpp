#include "attestation/page/MVNewAttestation.h"
#include "attestation/page/SchemeLogos.h"
#include "card/CardKeys.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {

// Throws an exception instead of parsing a text.
class RaisingDateFormatter final : public DateFormatter
{
public:
    using DateFormatter::DateFormatter;

    [[nodiscard]] std::optional<QDate> dateFromString(QStringView /*text*/) const override
    {
        throw std::runtime_error("no calendar");
    }
};

} // namespace

class tst_MVNewAttestation : public TestCase
{
    Q_OBJECT

private:
    TemporarySettings m_settings;
    SchemeLogos m_logos{stagedBundle()};

private Q_SLOTS:
    void init() { m_settings.setShowsRightLabel(false); }

    void aNewAttestationIsAnEmptyPage()
    {
        const MVNewAttestation attestation(m_settings.store(), m_logos);
        const AttestationPage& page = attestation.page();
        QVERIFY(!page.logo);
        QCOMPARE(page.fundName, QString());
        QCOMPARE(page.NSS, QString());
        QCOMPARE(page.insuredName, QString());
        QVERIFY(!page.showRightLabel);
        QVERIFY(!page.organism);
        QVERIFY(!page.gestionCode);
        QVERIFY(page.lines.isEmpty());
        QCOMPARE(page.inset, QMarginsF(8, 8, 8, 8));
        QCOMPARE(attestation.vitale(), CardRecord());
    }

    void theRecordIsKeptAndTheViewIsAskedToDraw()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        const QSignalSpy needsDisplay(&attestation, &MVNewAttestation::needsDisplay);
        attestation.setVitale(specimenCard(2));
        QCOMPARE(attestation.vitale(), specimenCard(2));
        QCOMPARE(needsDisplay.count(), 1);
    }

    void aSchemeWithoutALogoKeepsThePreviousOne()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        attestation.setVitale(cardWith({{CardKey::regimeCode, u"2"_s}}));
        attestation.setVitale(cardWith({{CardKey::regimeCode, u"55"_s}}));
        QCOMPARE(attestation.page().logo, m_logos.logoNamed(u"02"_s));
        QCOMPARE(attestation.page().organism, u"55 000 0000"_s);
    }

    void theNextRecordReplacesAllOtherValues()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        attestation.setVitale(specimenCard(3));
        attestation.setVitale(CardRecord());
        QVERIFY(!attestation.page().fundName);
        QVERIFY(!attestation.page().NSS);
        QCOMPARE(attestation.page().insuredName, u"(null) (null)"_s);
        QVERIFY(attestation.page().lines.isEmpty());
    }

    void theTitleOptionIsReadEachTimeARecordIsSet()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        m_settings.setShowsRightLabel(true);
        QVERIFY(!attestation.page().showRightLabel);
        attestation.setVitale(specimenCard(1));
        QVERIFY(attestation.page().showRightLabel);
        m_settings.setShowsRightLabel(false);
        QVERIFY(attestation.page().showRightLabel);
        attestation.setVitale(specimenCard(1));
        QVERIFY(!attestation.page().showRightLabel);
    }

    void theDateFormatterIsFrenchAndReused()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        const std::shared_ptr<DateFormatter> formatter = attestation.dateFormatter();
        QCOMPARE(formatter->locale().name(), u"fr_FR"_s);
        attestation.setVitale(specimenCard(1));
        QCOMPARE(attestation.dateFormatter(), formatter);
        QCOMPARE(formatter->dateFormat(), u"dd/MM/yyyy"_s);
    }

    void anExceptionInAStepIsLoggedAndKeepsTheValuesSetBefore()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        attestation.setVitale(specimenCard(2));
        attestation.setDateFormatter(std::make_shared<RaisingDateFormatter>(QLocale(u"fr_FR"_s)));

        const LogCapture log;
        CardRecord other = specimenCard(5);
        other.setText(CardKey::regimeCode, u"2"_s);
        attestation.setVitale(other);
        QCOMPARE(log.lines(), QStringList{u"no calendar"_s});
        QCOMPARE(log.lines(MXLog::Error), log.lines());
        QCOMPARE(attestation.page().organism, u"02 751"_s);
        QCOMPARE(attestation.page().lines.size(), 2);
    }
};

template class RunnableTests<tst_MVNewAttestation, QCoreApplication>;
#include "tst_mvnewattestation.moc"
