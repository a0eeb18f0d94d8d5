// The channel's bytes to messages: whatever comes in, however it is cut, gives the same messages and the same end.
#include "card/ServiceMessage.h"

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

Outcome readInSlices(QByteArrayView bytes, qsizetype slice)
{
    Outcome outcome;
    ServiceMessageReader reader;
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
    const Outcome whole = readInSlices(bytes, std::max(bytes.size(), qsizetype(1)));
    if (readInSlices(bytes, 1) != whole || readInSlices(bytes, 7) != whole)
        std::abort();
    return 0;
}
