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

/// Saves attestations, and the copies of cards for support, into the folder of the settings, and tells what came of it.
/// Main thread only.
class AttestationSaving final : public QObject
{
    Q_OBJECT

public:
    /// What it works with; all of it outlives it.
    struct Surroundings
    {
        const UserDefaults& settings;
        SchemeLogos& logos;
        const PageFonts& fonts;
        FrontWindow& front;
        WritingDesk& writing;
    };

    explicit AttestationSaving(const Surroundings& surroundings);

    /// The folder as the settings name it.
    [[nodiscard]] QString folder() const;
    void save(const CardRecord& record);
    /// The copy for support, where the settings want one.
    void saveXMLIfNeeded(const std::optional<CardRecord>& record);

Q_SIGNALS:
    /// An attestation was saved at that path. Said even of one that could not be written.
    void saved(const QString& path);

private:
    void finishSave(const std::expected<QString, SaveFailure>& result);

    Surroundings m_with;
};
