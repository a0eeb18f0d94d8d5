#pragma once

#include "attestation/viewer/MVAttestationWindowController.h"
#include "card/CardRecord.h"

#include <QObject>

#include <memory>
#include <optional>

/// The moved window's x position where it covers the other window least: beside it, on the same screen. Unchanged when
/// at least half of the other window is visible anyway. All rectangles include title bars.
[[nodiscard]] int leftBeside(const QRect& other, const QRect& moved, const QRect& screen);

/// Keeps the attestation window on the current card. Main thread only.
class FollowingViewer final : public QObject
{
    Q_OBJECT

public:
    /// The main window must outlive it.
    FollowingViewer(std::unique_ptr<MVAttestationWindowController> viewer, const QWidget& mainWindow);

    /// Sets the current card. A hidden window shows it only after the main window has painted its summary.
    void follow(const CardRecord& record);
    /// Shows a postponed card now.
    void update();
    /// Closes the window and forgets its card.
    void forget();
    /// Shows the card and the window.
    void show(const CardRecord& record);

private:
    void placeOnce();

    std::unique_ptr<MVAttestationWindowController> m_viewer;
    const QWidget& m_mainWindow;
    bool m_isPlaced = false;
    std::optional<CardRecord> m_due; // not shown by the window yet
};
