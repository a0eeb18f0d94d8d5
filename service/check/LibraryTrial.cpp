#include "service/check/LibraryTrial.h"

#include "card/CardKeys.h"
#include "card/wire/ReaderModel.h"
#include "card/wire/TextDecoding.h"
#include "service/CardCoverage.h"
#include "service/ReaderNames.h"

#include <QXmlStreamReader>

#include <algorithm>
#include <array>
#include <chrono>
#include <set>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// What a card's document has, apart from what it says.
struct CardOutline
{
    bool hasDocumentType = false;
    QString root;
    int beneficiaries = 0;
    QList<QByteArray> texts; // long enough to be told from other texts
};

CardOutline outlineOf(const QString& document)
{
    constexpr qsizetype shortestSecret = 5;
    CardOutline outline;
    QXmlStreamReader reader(document);
    QStringList path;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isDTD()) {
            outline.hasDocumentType = true;
        } else if (reader.isStartElement()) {
            if (path.isEmpty())
                outline.root = reader.name().toString();
            path.append(reader.name().toString());
            if (path.sliced(1).join(u'/') == CardPath::beneficiary.utf16())
                ++outline.beneficiaries;
        } else if (reader.isEndElement()) {
            path.removeLast();
        } else if (const QString text = reader.isCharacters() ? reader.text().toString().trimmed() : QString();
                   text.size() >= shortestSecret) {
            outline.texts.append(text.toUtf8());
        }
    }
    return outline;
}

/// Why the text is not a list of readers; empty when it is one.
QString faultOfReaders(const QByteArray& text)
{
    if (!decodeUtf8(text))
        return u"le texte n’est pas en UTF-8"_s;
    if (text.contains('\0'))
        return u"le texte contient un octet nul"_s;
    return text.isEmpty() || text.endsWith('\n') ? QString() : u"la dernière ligne n’a pas de fin"_s;
}

/// The same for a version.
QString faultOfVersion(const QByteArray& text)
{
    const std::optional<QString> version = decodeUtf8(text);
    if (!version)
        return u"le texte n’est pas en UTF-8"_s;
    const bool isPrintable = std::ranges::all_of(*version, [](QChar c) { return c.isPrint() || c.isSurrogate(); });
    return isPrintable ? QString() : u"le texte contient un caractère de contrôle"_s;
}

} // namespace

LibraryTrial::LibraryTrial(QByteArray path, RoundLimits limits, const TrialNotes& notes)
    : m_path(std::move(path))
    , m_notes(&notes)
    , m_limits(limits)
    , m_calls(notes)
{
}

void LibraryTrial::run()
{
    const qsizetype threadsBefore = threadsOfProcess();
    if (!m_calls.load(m_path) || !open())
        return;
    tryVersions();
    const QList<QByteArray> readers = tryReaders();
    if (readers.isEmpty())
        m_notes->remark(u"aucun lecteur : le choix des lecteurs et la lecture n’ont pas été contrôlés"_s);
    else
        tryCard(readers.first());
    m_calls.close();
    LibraryRounds(m_calls, *m_notes, m_limits, readers).run();
    judgeThreadsLeft(threadsBefore);
}

bool LibraryTrial::open()
{
    const int result = m_calls.open();
    if (result != PELMORA_READING_OK)
        m_notes->fault(u"pelmora_reading_open"_s, u"rend %1"_s.arg(readingResultText(result)));
    return result == PELMORA_READING_OK;
}

void LibraryTrial::judgeVersion(const LibraryCalls::Answer& answer, const QString& label)
{
    if (answer.result != PELMORA_READING_OK)
        m_notes->fault(answer.place, u"rend %1"_s.arg(readingResultText(answer.result)));
    else if (const QString fault = faultOfVersion(answer.text); !fault.isEmpty())
        m_notes->fault(answer.place, fault);
    else
        m_notes->fact(label, answer.text.isEmpty() ? u"—"_s : QString::fromUtf8(answer.text));
}

void LibraryTrial::tryVersions()
{
    struct Component
    {
        int number = 0;
        QString label;
    };
    const std::array components{Component{PELMORA_READING_LIBRARY, u"Version"_s},
                                Component{PELMORA_READING_CARD_TABLE, u"Table des cartes"_s},
                                Component{PELMORA_READING_DESTINATION_TABLE, u"Destinataires"_s},
                                Component{PELMORA_READING_AUTHORISATION_TABLE, u"Habilitations"_s}};
    for (const Component& component : components) {
        const LibraryCalls::Answer answer = m_calls.version(component.number);
        judgeVersion(answer, component.label);
        tryShortBuffers(answer, [&](std::size_t capacity) { return m_calls.version(component.number, capacity); });
    }
}

QList<QByteArray> LibraryTrial::tryReaders()
{
    const LibraryCalls::Answer answer = m_calls.readers();
    if (answer.result != PELMORA_READING_OK) {
        m_notes->fault(answer.place, u"rend %1"_s.arg(readingResultText(answer.result)));
        return {};
    }
    if (const QString fault = faultOfReaders(answer.text); !fault.isEmpty())
        m_notes->fault(answer.place, fault);
    tryShortBuffers(answer, [this](std::size_t capacity) { return m_calls.readers(capacity); });
    QList<QByteArray> names;
    for (const QByteArray& name : answer.text.split('\n')) {
        if (!name.isEmpty() && !names.contains(name))
            names.append(name);
    }
    const QList<ReaderName> known = readerNames(names);
    QStringList shown;
    for (const ReaderName& name : known)
        shown.append(name.shown);
    m_notes->fact(u"Lecteurs"_s, shown.isEmpty() ? u"—"_s : shown.join(u", "_s));
    const auto accepted = std::ranges::find(known, acceptedReader, &ReaderName::shown);
    if (accepted == known.end() && !known.isEmpty())
        m_notes->remark(u"aucun de ces lecteurs n’est accepté par Pelmora (« %1 »)"_s.arg(acceptedReader));
    else if (accepted != known.end())
        names.move(accepted - known.begin(), 0);
    return names;
}

LibraryCalls::Answer LibraryTrial::read()
{
    LibraryCalls::Answer answer = m_calls.readCard();
    if (answer.result == PELMORA_READING_OK)
        judgeCard(answer);
    m_calls.judgeSurroundings(answer.place, false);
    return answer;
}

void LibraryTrial::judgeCard(const LibraryCalls::Answer& answer)
{
    const std::optional<QString> document = decodeUtf8(answer.text);
    if (!document) {
        m_notes->fault(answer.place, u"le document n’est pas en UTF-8"_s);
        return;
    }
    const CardOutline outline = outlineOf(*document);
    m_calls.setSecrets(outline.texts);
    if (outline.hasDocumentType)
        m_notes->fault(answer.place, u"le document a un type de document"_s);
    else if (!cardCoverage(*document))
        m_notes->fault(answer.place, u"le document n’est pas du XML bien formé de 256 niveaux au plus"_s);
    else if (outline.root != CardPath::document.utf16())
        m_notes->fault(answer.place, u"le document n’a pas l’élément « %1 »"_s.arg(CardPath::document.utf16()));
    else if (outline.beneficiaries == 0)
        m_notes->remark(u"%1 : le document n’a pas de bénéficiaire"_s.arg(answer.place));
}

void LibraryTrial::tryCard(const QByteArray& reader)
{
    if (const int chosen = m_calls.choose(reader, reader); chosen != PELMORA_READING_OK) {
        m_notes->fault(u"pelmora_reading_choose_readers"_s,
                       u"rend %1 pour un lecteur de sa liste"_s.arg(readingResultText(chosen)));
        return;
    }
    m_calls.searchMemoryForCard();
    const LibraryCalls::Answer first = read();
    m_notes->fact(u"Lecture"_s, first.result == PELMORA_READING_OK ? u"document de %1 octets"_s.arg(first.text.size())
                                                                   : readingResultText(first.result));
    m_notes->remark(first.result == PELMORA_READING_OK ? u"recommencez ce contrôle sans carte dans le lecteur"_s
                                                       : u"recommencez ce contrôle avec une carte dans le lecteur"_s);
    // Longer than any name in the list.
    const QByteArray unknown(300, 'x');
    for (const QByteArray& name : {QByteArray(), unknown}) {
        if (m_calls.choose(name, name) == PELMORA_READING_OK)
            m_notes->fault(u"pelmora_reading_choose_readers"_s,
                           u"accepte un lecteur qui n’est pas dans sa liste (nom de %1 octets)"_s.arg(name.size()));
    }
    if (const LibraryCalls::Answer again = read(); again.result != first.result)
        m_notes->fault(again.place, u"rend %1 après un choix refusé, et %2 avant"_s.arg(
                                        readingResultText(again.result), readingResultText(first.result)));
    tryShortBuffers(first, [this](std::size_t capacity) {
        LibraryCalls::Answer answer = m_calls.readCard(capacity);
        m_calls.judgeSurroundings(answer.place, false);
        return answer;
    });
}

void LibraryTrial::tryShortBuffers(const LibraryCalls::Answer& whole,
                                   const std::function<LibraryCalls::Answer(std::size_t capacity)>& ask)
{
    if (whole.result != PELMORA_READING_OK)
        return;
    const auto size = static_cast<std::size_t>(whole.text.size());
    for (const std::size_t capacity : std::set<std::size_t>{0, size / 2, size == 0 ? 0 : size - 1}) {
        if (capacity >= size)
            continue;
        if (const LibraryCalls::Answer answer = ask(capacity); answer.result != PELMORA_READING_TOO_LONG)
            m_notes->fault(answer.place, u"rend %1 pour un texte de %2 octets dans un tampon de %3"_s
                                             .arg(readingResultText(answer.result))
                                             .arg(size)
                                             .arg(capacity));
    }
    if (const LibraryCalls::Answer answer = ask(size); answer.result != PELMORA_READING_OK)
        m_notes->fault(answer.place, u"rend %1 pour un tampon de la taille exacte du texte, %2 octets"_s
                                         .arg(readingResultText(answer.result))
                                         .arg(size));
}

void LibraryTrial::judgeThreadsLeft(qsizetype threadsBefore)
{
    // As long as the service waits at its end.
    constexpr auto patience = 1000ms;
    constexpr auto step = 10ms;
    const auto end = std::chrono::steady_clock::now() + patience;
    while (threadsOfProcess() > threadsBefore && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(step);
    if (const qsizetype left = threadsOfProcess() - threadsBefore; left > 0)
        m_notes->fault(u"pelmora_reading_close"_s, u"fils d’exécution laissés après la fermeture : %1"_s.arg(left));
}
