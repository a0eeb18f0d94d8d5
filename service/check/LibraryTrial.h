#pragma once

#include "service/check/LibraryCalls.h"
#include "service/check/LibraryRounds.h"

/// Tries a library against its interface, in a process that may be lost. Every result is a note.
class LibraryTrial final
{
public:
    LibraryTrial(QByteArray path, RoundLimits limits, const TrialNotes& notes);

    /// On a thread that is not the process's first one.
    void run();

private:
    [[nodiscard]] bool open();
    void tryVersions();
    /// The names of the readers.
    [[nodiscard]] QList<QByteArray> tryReaders();
    void tryCard(const QByteArray& reader);
    [[nodiscard]] LibraryCalls::Answer read();
    void tryShortBuffers(const LibraryCalls::Answer& whole,
                         const std::function<LibraryCalls::Answer(std::size_t capacity)>& ask);
    void judgeVersion(const LibraryCalls::Answer& answer, const QString& label);
    void judgeCard(const LibraryCalls::Answer& answer);
    void judgeThreadsLeft(qsizetype threadsBefore);

    QByteArray m_path;
    const TrialNotes* m_notes;
    RoundLimits m_limits;
    LibraryCalls m_calls;
};
