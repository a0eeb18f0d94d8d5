#pragma once

#include "card/CardKeys.h"
#include "card/client/LVitAccess.h"
#include "card/wire/ServiceVocabulary.h"
#include "tests/card/client/ClientOutcome.h"
#include "tests/fakes/FakeService.h"

#include <QRegularExpression>
#include <QtTest>

/// Shared by the tests of the card service's client: outcomes as texts, and abbreviations.
namespace ClientTest {

using namespace Qt::StringLiterals;
using namespace ClientOutcome;

inline const QString general = u"Pelmora -10"_s;
inline const QString internal = u"Pelmora -11"_s;
inline const QString noReader = u"Pelmora -20"_s;
inline const QString badReader = u"Pelmora -21"_s;
inline const QString success = u"success"_s;
inline const QString failureWithoutError = u"failure"_s;

inline ClientPointer makeClient(const ServiceCommand& command, ChannelLimits limits = {})
{
    return std::make_shared<LVitAccess>(command, limits);
}

/// A fake service and a client that starts it: `const auto [fake, client] = Served();`
struct Served
{
    explicit Served(const FakeScript& script = {}, ChannelLimits limits = {})
        : fake(script)
        , client(makeClient(fake.command(), limits))
    {
    }

    FakeService fake;
    ClientPointer client;
};

inline QStringList commands(const FakeService& fake)
{
    return fake.requested(u"Command"_s);
}

inline QVariantMap readerChoice(const QString& vitale, const QString& cps)
{
    QVariantMap choice;
    if (!vitale.isNull())
        choice.insert(ReaderKey::vitale.toString(), vitale);
    if (!cps.isNull())
        choice.insert(ReaderKey::cps.toString(), cps);
    return choice;
}

inline QByteArray vitaleOf(const QByteArray& lastName)
{
    return "<T_AsnDonneesVitale><listeBenef><T_AsnBeneficiaire><ident><nomUsuel>" + lastName +
           "</nomUsuel></ident></T_AsnBeneficiaire></listeBenef></T_AsnDonneesVitale>";
}

inline QString lastName(const std::optional<Outcome<CardRecord>>& outcome)
{
    return outcome && outcome->result ? outcome->result->text(CardKey::lastName).value_or(u"absent"_s) : u"no record"_s;
}

} // namespace ClientTest
