// Reads messages from a byte stream, with any keys and with those of replies. The messages and the end do not depend on
// how the stream is split.
#include "card/wire/ServiceMessage.h"
#include "card/wire/ServiceVocabulary.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

struct Outcome
{
    QByteArray messages;
    std::optional<FramingError> failure;

    friend bool operator==(const Outcome&, const Outcome&) = default;
};

using Keys = std::span<const QLatin1StringView>;

Outcome readInSlices(QByteArrayView bytes, qsizetype slice, Keys keys)
{
    Outcome outcome;
    ServiceMessageReader reader(keys);
    for (qsizetype start = 0; start < bytes.size(); start += slice) {
        reader.append(bytes.sliced(start, std::min(slice, bytes.size() - start)));
        for (;;) {
            const auto next = reader.next();
            if (!next) {
                outcome.failure = next.error();
                return outcome;
            }
            if (!*next)
                break;
            outcome.messages += encodeServiceMessage(**next);
        }
    }
    return outcome;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    for (const Keys keys : {Keys(), Keys(ServiceWord::replyKeys)}) {
        const Outcome whole = readInSlices(bytes, std::max(bytes.size(), qsizetype(1)), keys);
        if (readInSlices(bytes, 1, keys) != whole || readInSlices(bytes, 7, keys) != whole)
            std::abort();
    }
    return 0;
}
