#pragma once

#include "attestation/page/MVNewAttestation.h"
#include "card/CardRecord.h"
#include "platform/gui/AlertQueue.h"

#include <QMainWindow>

#include <memory>

class MVScrollView;
class QAction;
class PageFonts;
class PrintDesk;
class SchemeLogos;
class UserDefaults;

/// The viewer: one window with an attestation page and a bar of buttons, used for every card. Closing the window hides
/// it. Main thread only.
class MVAttestationWindowController final : public QObject
{
    Q_OBJECT

public:
    /// Loads the hidden window. All arguments except the parent must outlive the controller.
    MVAttestationWindowController(const UserDefaults& settings, SchemeLogos& logos, const PageFonts& fonts,
                                  PrintDesk& printDesk, QObject* parent = nullptr);
    ~MVAttestationWindowController() override;

    /// The shown card; setting it changes the page and the window's title.
    [[nodiscard]] const CardRecord& vitale() const { return m_attestation.vitale(); }
    void setVitale(const CardRecord& vitale);

    /// Prints a new page of the card if the print desk permits it, whatever the window's scale.
    void printAttestation(const QObject* sender);

    /// Shows the window in front.
    void showWindow(const QObject* sender);

    [[nodiscard]] QMainWindow* window() const { return m_window.get(); }
    /// The scroll view with the page.
    [[nodiscard]] MVScrollView* scrollView() const { return m_scrollView; }
    [[nodiscard]] const MVNewAttestation& attestation() const { return m_attestation; }

Q_SIGNALS:
    /// The shown card's attestation is to be saved.
    void saveRequested();

private:
    void internalInit();
    void connectActions(QAction& print, QAction& save, QAction& close);

    const PageFonts& m_fonts;
    PrintDesk& m_printDesk;
    MVNewAttestation m_attestation;
    std::unique_ptr<QMainWindow> m_window;
    AlertQueue m_alerts;
    MVScrollView* m_scrollView = nullptr; // belongs to the window
};
