#include "service/check/KeptText.h"

#include "platform/FileDescriptor.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

// Shorter texts may be in memory for other reasons.
constexpr qsizetype shortest = 8;
constexpr char mask = '\x5A';
// Longer ranges are addresses set aside (sanitizers take terabytes), not memory in use. Reading them would take hours.
constexpr std::uint64_t longestRange = std::uint64_t{1} << 30U; // bytes

char maskedByte(char byte)
{
    return static_cast<char>(byte ^ mask);
}

struct MemoryRange
{
    std::uint64_t start = 0;
    std::uint64_t end = 0;
};

std::vector<MemoryRange> writableMemory()
{
    std::vector<MemoryRange> ranges;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        MemoryRange range;
        char dash = '\0';
        std::string rights;
        if (fields >> std::hex >> range.start >> dash >> range.end >> rights && rights.starts_with("rw") &&
            range.end - range.start <= longestRange)
            ranges.push_back(range);
    }
    return ranges;
}

/// Whether the bytes have the text that is masked.
bool contains(std::string_view bytes, QByteArrayView masked)
{
    const char first = maskedByte(masked.front());
    for (std::size_t place = bytes.find(first); place != std::string_view::npos; place = bytes.find(first, place + 1)) {
        const std::string_view found = bytes.substr(place, static_cast<std::size_t>(masked.size()));
        if (std::ranges::equal(found, masked, {}, {}, maskedByte))
            return true;
    }
    return false;
}

/// Whether the memory in the range has the text that is masked.
bool hasText(const FileDescriptor& memory, MemoryRange range, QByteArrayView masked)
{
    constexpr std::size_t slice = std::size_t{1} << 20U;
    std::vector<char> bytes(slice + static_cast<std::size_t>(masked.size()));
    bool isFound = false;
    for (std::uint64_t place = range.start; place < range.end && !isFound; place += slice) {
        const std::size_t wanted = std::min<std::uint64_t>(bytes.size(), range.end - place);
        const ssize_t count = ::pread(memory.get(), bytes.data(), wanted, static_cast<off_t>(place));
        // Some mappings of devices cannot be read.
        if (count <= 0)
            break;
        isFound = contains({bytes.data(), static_cast<std::size_t>(count)}, masked);
    }
    // A later search must not find what this one has read.
    ::explicit_bzero(bytes.data(), bytes.size());
    return isFound;
}

} // namespace

KeptText::KeptText(QByteArrayView document)
{
    QByteArrayView found;
    for (qsizetype start = document.indexOf('>'); start >= 0; start = document.indexOf('>', start + 1)) {
        const qsizetype end = document.indexOf('<', start);
        const QByteArrayView text = end < 0 ? QByteArrayView() : document.sliced(start + 1, end - start - 1).trimmed();
        if (text.size() > found.size())
            found = text;
    }
    if (found.size() < shortest)
        return;
    m_size = std::min(found.size(), longest);
    std::ranges::transform(found.first(m_size), m_masked.begin(), maskedByte);
}

std::optional<bool> KeptText::isInMemory() const
{
    const FileDescriptor memory(::open("/proc/self/mem", O_RDONLY | O_CLOEXEC));
    if (m_size == 0 || !memory.isValid())
        return std::nullopt;
    return std::ranges::any_of(writableMemory(), [&](MemoryRange range) { return hasText(memory, range, masked()); });
}
