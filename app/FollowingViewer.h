#pragma once

#include "attestation/viewer/MVAttestationWindowController.h"
#include "card/CardRecord.h"

#include <QObject>

#include <memory>
#include <optional>

/// Sees to it that the window with the attestation shows the current card. Main thread only.
class FollowingViewer final : public QObject
{
    Q_OBJECT

public:
    explicit FollowingViewer(std::unique_ptr<MVAttestationWindowController> viewer);

    /// The card is the current one from now on. A window that is on the screen shows it at once, a hidden one once the
    /// main window has painted its summary, which is what people wait for.
    void follow(const CardRecord& record);
    /// What is still due, at once.
    void update();
    /// Shows that card in its window.
    void show(const CardRecord& record);

private:
    std::unique_ptr<MVAttestationWindowController> m_viewer;
    std::optional<CardRecord> m_due; // the window does not show it yet
};
