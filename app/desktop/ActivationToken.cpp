#include "app/desktop/ActivationToken.h"

#include <algorithm>

namespace {

// Where Qt looks for it.
constexpr auto variable = "XDG_ACTIVATION_TOKEN";

constexpr qsizetype longestToken = 1024; // characters

bool isToken(const QString& text)
{
    return !text.isEmpty() && text.size() <= longestToken &&
           std::ranges::all_of(text, [](QChar character) { return character > u' ' && character <= u'~'; });
}

} // namespace

std::optional<QString> ActivationToken::ofThisStart()
{
    const QString token = qEnvironmentVariable(variable);
    return isToken(token) ? std::optional(token) : std::nullopt;
}

void ActivationToken::use(const QString& token)
{
    if (isToken(token))
        qputenv(variable, token.toLatin1());
}
