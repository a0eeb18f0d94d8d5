#include "card/client/BindOutcome.h"

#include "card/PelmoraError.h"
#include "card/client/CardServiceKeys.h"
#include "platform/NotificationCenter.h"

using namespace Qt::StringLiterals;

BindOutcome bindOutcome(bool bound, const std::optional<Error>& error)
{
    if (!bound)
        return std::unexpected(error.value_or(PelmoraError::generalError()));
    return {};
}

Error replacedBindError()
{
    return {u"Pelmora.Bind"_s, 1};
}

bool isReplaced(const BindOutcome& outcome)
{
    return !outcome && outcome.error() == replacedBindError();
}

std::optional<Error> bindError(const QVariantMap& userInfo)
{
    return errorInValue(userInfo.value(BindNotification::error.toString()));
}

void postBindNotification(const BindOutcome& outcome)
{
    if (isReplaced(outcome))
        return;
    const QStringView status = outcome ? BindNotification::success : BindNotification::failure;
    QVariantMap userInfo{{BindNotification::status.toString(), status.toString()}};
    if (!outcome)
        userInfo.insert(BindNotification::error.toString(), QVariant::fromValue(outcome.error()));
    NotificationCenter::defaultCenter().postNotification(BindNotification::name.toString(), userInfo);
}
