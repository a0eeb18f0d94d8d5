#pragma once

#include "service/check/GuardedText.h"
#include "service/check/ProcessState.h"
#include "service/check/TrialNotes.h"
#include "service/installed/InstalledFunctions.h"

#include <QHash>
#include <QSet>

/// Calls the functions of a library under test, and notes each call and what is wrong with it apart from its text:
/// writes outside of the buffer, prints, changes of the process.
class LibraryCalls final
{
public:
    /// A text function's answer. The text is empty after a failure.
    struct Answer
    {
        int result = PELMORA_READING_FAILED;
        QByteArray text;
        QString place; // of the call, for faults in the text
    };

    explicit LibraryCalls(const TrialNotes& notes);

    /// Loads the library and asks for its interface. False when it cannot be used.
    [[nodiscard]] bool load(const QByteArray& path);

    [[nodiscard]] int open();
    void close();
    [[nodiscard]] Answer version(int component, std::optional<std::size_t> capacity = {});
    [[nodiscard]] Answer readers(std::optional<std::size_t> capacity = {});
    [[nodiscard]] int choose(const QByteArray& vitale, const QByteArray& professional);
    [[nodiscard]] Answer readCard(std::optional<std::size_t> capacity = {});

    /// Reads a card and searches the memory for it. The first read of all: a later search finds copies that are ours.
    void searchMemoryForCard();

    /// The round that belongs to the place of the following calls; 0 outside of rounds. In rounds the state of the
    /// process is not compared, which would take most of the time.
    void setRound(int round) { m_round = round; }

    /// Texts of the card, which must not be printed.
    void setSecrets(const QList<QByteArray>& secrets) { m_secrets = secrets; }

    /// Notes what was printed and changed since the last call. Calls do it themselves, except those that read a card,
    /// whose texts must be known first.
    void judgeSurroundings(const QString& place, bool mayQuote);

private:
    enum class Kind
    {
        Read,
        Other
    };

    [[nodiscard]] QString nextPlace(const QString& function);
    /// Notes the fault, unless the function has had the same one: in rounds it comes again and again.
    void fault(const QString& place, const QString& reason);
    template <typename Function>
    auto make(const QString& place, Kind kind, Function function);
    template <typename Function>
    Answer askText(const QString& name, Kind kind, std::size_t capacity, Function function);

    InstalledFunctions m_functions; // none is null after load()
    const TrialNotes* m_notes;
    GuardedText m_buffer;
    ProcessState m_state;
    CapturedOutput m_output;
    QHash<QString, int> m_calls; // by function
    QSet<QString> m_noisy;       // functions whose prints were noted
    QSet<QString> m_told;        // functions with their faults
    QList<QByteArray> m_secrets;
    int m_round = 0;
};

/// A return value with its name in the header.
[[nodiscard]] QString readingResultText(int result);
