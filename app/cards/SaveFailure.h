#pragma once

#include "platform/Error.h"
#include "platform/files/WriteFailure.h"

#include <QString>

/// Why an attestation was not saved, and how it is told.
struct SaveFailure
{
    enum class Kind
    {
        FolderUnusable,
        NoDocument,
        WriteFailed
    };

    Kind kind;
    /// The folder that is unusable, or the file that was not written.
    QString path;
    /// Why writing failed; of that kind only.
    WriteFailure write;
    /// Why there is no document, in a sentence; of that kind only.
    QString cause;

    /// The failure for a terminal or a program, without the file's name, which is a patient's. The sentence begins with
    /// the prefix when it concerns that card only.
    [[nodiscard]] Error error(const QString& prefix) const;
    /// The failure in few words, with the file's name, for the main window.
    [[nodiscard]] QString panelText() const;
    /// Of a write that failed: that nothing was written although it has been said, why, and what to do.
    [[nodiscard]] QString alertText() const;
};
