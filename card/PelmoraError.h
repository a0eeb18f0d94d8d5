#pragma once

#include "platform/Error.h"

/// Makes every error that Pelmora reports. The texts are shown unchanged; generalError and internalError have none.
class PelmoraError final
{
public:
    PelmoraError() = delete;

    static constexpr QLatin1StringView domain{"Pelmora"};

    [[nodiscard]] static Error generalError();
    [[nodiscard]] static Error internalError();
    [[nodiscard]] static Error writeError();
    [[nodiscard]] static Error noReader();
    [[nodiscard]] static Error badReader();
    [[nodiscard]] static Error readerError();
    [[nodiscard]] static Error vitaleNotPresent();
    [[nodiscard]] static Error vitaleReadError();
    [[nodiscard]] static Error vitaleNoBen();

    /// The element of the help page that explains the error; empty for errors of other domains.
    [[nodiscard]] static QString helpTopic(const Error& error);

    /// The error for a "Result" code of the card service; the general error for codes that are not listed.
    [[nodiscard]] static Error errorForCode(qint64 resultCode);
};
