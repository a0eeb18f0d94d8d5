#include "service/check/LibraryCalls.h"

#include "service/MemoryClearing.h"
#include "service/check/KeptText.h"
#include "service/installed/ClearedText.h"

#include <algorithm>
#include <array>

#include <dlfcn.h>

using namespace Qt::StringLiterals;

namespace {

QString componentText(int component)
{
    constexpr std::array names{"PELMORA_READING_LIBRARY"_L1, "PELMORA_READING_CARD_TABLE"_L1,
                               "PELMORA_READING_DESTINATION_TABLE"_L1, "PELMORA_READING_AUTHORISATION_TABLE"_L1};
    const auto index = static_cast<std::size_t>(component);
    return index < names.size() ? QString(names.at(index)) : QString::number(component);
}

/// The first line of printed bytes, short enough for a line of the report.
QString quoted(const QByteArray& printed)
{
    constexpr qsizetype longest = 60;
    return QString::fromUtf8(printed.first(std::min(printed.size(), longest))).section(u'\n', 0, 0).simplified();
}

} // namespace

QString readingResultText(int result)
{
    struct Name
    {
        int value = 0;
        QLatin1StringView name;
    };
    static constexpr std::array names{
        Name{PELMORA_READING_OK, "PELMORA_READING_OK"_L1},
        Name{PELMORA_READING_FAILED, "PELMORA_READING_FAILED"_L1},
        Name{PELMORA_READING_TOO_LONG, "PELMORA_READING_TOO_LONG"_L1},
        Name{PELMORA_READING_CARD_ABSENT, "PELMORA_READING_CARD_ABSENT"_L1},
        Name{PELMORA_READING_READER_FAULT, "PELMORA_READING_READER_FAULT"_L1},
        Name{PELMORA_READING_CARD_CHANGED, "PELMORA_READING_CARD_CHANGED"_L1},
        Name{PELMORA_READING_READ_ERROR, "PELMORA_READING_READ_ERROR"_L1},
        Name{PELMORA_READING_CARD_MUTE, "PELMORA_READING_CARD_MUTE"_L1},
    };
    const auto* found = std::ranges::find(names, result, &Name::value);
    return found == names.end() ? QString::number(result) : QString(found->name);
}

LibraryCalls::LibraryCalls(const TrialNotes& notes)
    : m_notes(&notes)
    , m_buffer(ReadingRoom::card)
{
}

QString LibraryCalls::nextPlace(const QString& function)
{
    const QString place = u"%1, appel %2"_s.arg(function).arg(++m_calls[function]);
    return m_round == 0 ? place : u"%1, tour %2"_s.arg(place).arg(m_round);
}

void LibraryCalls::fault(const QString& place, const QString& reason)
{
    const QString key = place.section(u',', 0, 0) + u'\n' + reason;
    if (m_told.contains(key))
        return;
    m_told.insert(key);
    m_notes->fault(place, reason);
}

void LibraryCalls::judgeSurroundings(const QString& place, bool mayQuote)
{
    if (const QByteArray printed = m_output.news(); !printed.isEmpty()) {
        const auto isPrinted = [&printed](const QByteArray& secret) { return printed.contains(secret); };
        // The report does not repeat data of a card.
        const bool isSecret = std::ranges::any_of(m_secrets, isPrinted);
        const QString function = place.section(u',', 0, 0);
        if (isSecret)
            fault(place, u"imprime des données de la carte"_s);
        else if (!m_noisy.contains(function))
            m_notes->remark(u"%1 : imprime %2 octets%3"_s.arg(place)
                                .arg(printed.size())
                                .arg(mayQuote ? u" : « %1 »"_s.arg(quoted(printed)) : QString()));
        m_noisy.insert(function);
    }
    if (m_round != 0)
        return;
    for (const QString& change : m_state.changes())
        fault(place, change);
}

template <typename Function>
auto LibraryCalls::make(const QString& place, Kind kind, Function function)
{
    m_notes->write(kind == Kind::Read ? TrialNote::Kind::Read : TrialNote::Kind::Call, place);
    const auto result = function();
    m_notes->write(TrialNote::Kind::Return, place);
    return result;
}

template <typename Function>
LibraryCalls::Answer LibraryCalls::askText(const QString& name, Kind kind, std::size_t capacity, Function function)
{
    const QString place = nextPlace(name);
    pelmora_reading_text* const text = m_buffer.prepare(capacity);
    Answer answer{.result = make(place, kind, [&] { return function(text); }), .text = {}, .place = place};
    if (const std::optional<QString> damage = m_buffer.damage())
        fault(place, *damage);
    if (answer.result == PELMORA_READING_OK) {
        if (std::optional<QByteArray> written = m_buffer.written())
            answer.text = *std::move(written);
        else
            fault(place, u"annonce %1 octets pour une capacité de %2"_s.arg(m_buffer.length()).arg(capacity));
    }
    if (kind != Kind::Read)
        judgeSurroundings(place, true);
    return answer;
}

bool LibraryCalls::load(const QByteArray& path)
{
    const QString loading = u"chargement"_s;
    void* const library =
        make(loading, Kind::Other, [&path] { return ::dlopen(path.constData(), RTLD_NOW | RTLD_LOCAL); });
    if (library == nullptr) {
        const char* const reason = ::dlerror(); // NOLINT(concurrency-mt-unsafe): each thread has its own
        m_notes->fault(loading, QString::fromLocal8Bit(reason));
        return false;
    }
    judgeSurroundings(loading, true);
    const FoundFunctions found = findInstalledFunctions(library);
    for (const QString& function : found.missing)
        m_notes->fault(function, u"cette fonction manque"_s);
    if (!found.missing.isEmpty())
        return false;
    m_functions = found.functions;
    const QString place = nextPlace(u"pelmora_reading_interface"_s);
    const int interface = make(place, Kind::Other, m_functions.interface);
    judgeSurroundings(place, true);
    if (interface == PELMORA_READING_INTERFACE)
        return true;
    m_notes->fault(place, u"rend %1 et non %2"_s.arg(interface).arg(static_cast<int>(PELMORA_READING_INTERFACE)));
    return false;
}

int LibraryCalls::open()
{
    const QString place = nextPlace(u"pelmora_reading_open"_s);
    const int result = make(place, Kind::Other, m_functions.open);
    judgeSurroundings(place, true);
    return result;
}

void LibraryCalls::close()
{
    const QString place = nextPlace(u"pelmora_reading_close"_s);
    make(place, Kind::Other, [this] {
        m_functions.close();
        return true;
    });
    judgeSurroundings(place, true);
}

LibraryCalls::Answer LibraryCalls::version(int component, std::optional<std::size_t> capacity)
{
    return askText(u"pelmora_reading_version(%1)"_s.arg(componentText(component)), Kind::Other,
                   capacity.value_or(ReadingRoom::version), [this, component](pelmora_reading_text* text) {
                       return m_functions.version(static_cast<pelmora_reading_component>(component), text);
                   });
}

LibraryCalls::Answer LibraryCalls::readers(std::optional<std::size_t> capacity)
{
    return askText(u"pelmora_reading_readers"_s, Kind::Other, capacity.value_or(ReadingRoom::readers),
                   m_functions.readers);
}

int LibraryCalls::choose(const QByteArray& vitale, const QByteArray& professional)
{
    const QString place = nextPlace(u"pelmora_reading_choose_readers"_s);
    const int result = make(place, Kind::Other,
                            [&] { return m_functions.chooseReaders(vitale.constData(), professional.constData()); });
    judgeSurroundings(place, true);
    return result;
}

LibraryCalls::Answer LibraryCalls::readCard(std::optional<std::size_t> capacity)
{
    return askText(u"pelmora_reading_read_card"_s, Kind::Read, capacity.value_or(ReadingRoom::card),
                   m_functions.readCard);
}

void LibraryCalls::searchMemoryForCard()
{
    const QString place = nextPlace(u"pelmora_reading_read_card"_s);
    pelmora_reading_text* const text = m_buffer.prepare(ReadingRoom::card);
    const int result = make(place, Kind::Read, [&] { return m_functions.readCard(text); });
    if (const std::optional<QByteArrayView> card = m_buffer.view(); card && result == PELMORA_READING_OK) {
        const KeptText kept(*card);
        m_buffer.clear();
        // Where the library's functions have returned from.
        clearUnusedStack();
        if (kept.isInMemory().value_or(false))
            fault(place, u"garde des données de la carte en mémoire"_s);
    }
    judgeSurroundings(place, false);
}
