#include "service/check/GuardedText.h"

#include <algorithm>
#include <new>
#include <span>

#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t guardSize = 64;
constexpr char guardValue = '\xA5';

bool isKept(const char* guard)
{
    return std::ranges::all_of(std::span(guard, guardSize), [](char byte) { return byte == guardValue; });
}

} // namespace

GuardedText::GuardedText(std::size_t largest)
    : m_pageSize(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)))
    , m_mappedSize((largest + 2 * guardSize + m_pageSize - 1) / m_pageSize * m_pageSize + m_pageSize)
{
    void* const memory = ::mmap(nullptr, m_mappedSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    m_memory = static_cast<char*>(memory);
    char* const wall = m_memory + m_mappedSize - m_pageSize;
    if (::mprotect(wall, m_pageSize, PROT_NONE) != 0)
        throw std::bad_alloc();
    m_end = wall - guardSize;
}

GuardedText::~GuardedText()
{
    ::munmap(m_memory, m_mappedSize);
}

pelmora_reading_text* GuardedText::prepare(std::size_t capacity)
{
    m_capacity = capacity;
    m_text = {.bytes = m_end - capacity, .capacity = capacity, .length = 0};
    std::fill_n(m_text.bytes - guardSize, guardSize, guardValue);
    std::fill_n(m_end, guardSize, guardValue);
    return &m_text;
}

std::optional<QString> GuardedText::damage() const
{
    if (!isKept(m_end))
        return u"écrit au-delà de la capacité de %1 octets"_s.arg(m_capacity);
    if (!isKept(m_end - m_capacity - guardSize))
        return u"écrit avant le début du tampon"_s;
    if (m_text.bytes != m_end - m_capacity || m_text.capacity != m_capacity)
        return u"change l’adresse ou la capacité du tampon"_s;
    return std::nullopt;
}

std::optional<QByteArrayView> GuardedText::view() const
{
    if (m_text.length > m_capacity)
        return std::nullopt;
    return QByteArrayView(m_end - m_capacity, static_cast<qsizetype>(m_text.length));
}

std::optional<QByteArray> GuardedText::written() const
{
    const std::optional<QByteArrayView> bytes = view();
    return bytes ? std::optional(bytes->toByteArray()) : std::nullopt;
}

void GuardedText::clear()
{
    ::explicit_bzero(m_memory, m_mappedSize - m_pageSize);
}
