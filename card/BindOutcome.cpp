#include "card/BindOutcome.h"

#include "card/CardServiceKeys.h"
#include "card/PelmoraError.h"
#include "platform/NotificationCenter.h"

BindOutcome bindOutcome(bool bound, const std::optional<Error>& error)
{
    if (bound)
        return std::nullopt;
    return error.value_or(PelmoraError::generalError());
}

std::optional<Error> bindError(const QVariantMap& userInfo)
{
    return errorInValue(userInfo.value(BindNotification::error.toString()));
}

void postBindNotification(const BindOutcome& outcome)
{
    const QStringView status = outcome ? BindNotification::failure : BindNotification::success;
    QVariantMap userInfo{{BindNotification::status.toString(), status.toString()}};
    if (outcome)
        userInfo.insert(BindNotification::error.toString(), QVariant::fromValue(*outcome));
    NotificationCenter::defaultCenter().postNotification(BindNotification::name.toString(), userInfo);
}
