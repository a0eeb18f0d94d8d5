#pragma once

#include "attestation/viewer/MVAttestationWindowController.h"
#include "card/CardRecord.h"

#include <QObject>

#include <memory>
#include <optional>

/// Keeps the attestation window on the current card. Main thread only.
class FollowingViewer final : public QObject
{
    Q_OBJECT

public:
    explicit FollowingViewer(std::unique_ptr<MVAttestationWindowController> viewer);

    /// Sets the current card. A hidden window shows it only after the main window has painted its summary.
    void follow(const CardRecord& record);
    /// Shows a postponed card now.
    void update();
    /// Shows the card and the window.
    void show(const CardRecord& record);

private:
    std::unique_ptr<MVAttestationWindowController> m_viewer;
    std::optional<CardRecord> m_due; // not shown by the window yet
};
