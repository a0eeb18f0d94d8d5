#pragma once

#include "card/CardRecord.h"
#include "platform/Error.h"

#include <QString>
#include <QStringList>

#include <expected>

class AttestationFiles;

/// "pelmora --save": makes attestations without a window. Each path goes to the standard output and each failure to the
/// standard error, a line each. Main thread; the files must outlive it.
class SaveCommand
{
public:
    explicit SaveCommand(const AttestationFiles& files)
        : m_files(files)
    {
    }

    /// The attestation of each card file; a failure does not stop the others.
    void saveCardFiles(const QStringList& paths);

    /// The attestation of the card that was read, or why it was not.
    void saveCard(const std::expected<CardRecord, Error>& record);

    /// 0 when everything was saved, otherwise 1.
    [[nodiscard]] int exitCode() const { return m_failed ? 1 : 0; }

private:
    void save(const CardRecord& record);
    void fail(const QString& reason);

    const AttestationFiles& m_files;
    bool m_failed = false;
};
