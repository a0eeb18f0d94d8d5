// Parses a feed and chooses an update.
#include "update/UpdateFeed.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QUrl address(QStringLiteral("https://updates.morvel.example/feed.xml"));
    const QByteArray xml(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (const auto feed = UpdateFeed::parse(xml, address, 1'000'000)) {
        [[maybe_unused]] const auto choice = chooseUpdate(*feed, QStringLiteral("1.0"), QStringLiteral("2.36"));
    }
    return 0;
}
