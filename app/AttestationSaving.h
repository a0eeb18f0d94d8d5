#pragma once

#include "app/cards/SaveFailure.h"
#include "card/CardRecord.h"

#include <QObject>

#include <expected>

class FrontWindow;
class PageFonts;
class SchemeLogos;
class UserDefaults;
class WritingDesk;

/// Saves attestations, and copies of cards for support, in the settings' folder, and reports the result. Main thread.
class AttestationSaving final : public QObject
{
    Q_OBJECT

public:
    /// All of them outlive it.
    struct Surroundings
    {
        const UserDefaults& settings;
        SchemeLogos& logos;
        const PageFonts& fonts;
        FrontWindow& front;
        WritingDesk& writing;
    };

    explicit AttestationSaving(const Surroundings& surroundings);

    [[nodiscard]] QString folder() const;
    /// The file that save() writes.
    [[nodiscard]] QString pathFor(const CardRecord& record) const;
    void save(const CardRecord& record);
    /// Writes the copy for support if the settings want one.
    void saveXMLIfNeeded(const std::optional<CardRecord>& record);

Q_SIGNALS:
    /// An attestation was saved there. Also emitted when it could not be written.
    void saved(const QString& path);

private:
    void finishSave(const std::expected<QString, SaveFailure>& result);

    Surroundings m_with;
};
