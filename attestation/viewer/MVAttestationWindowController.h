#pragma once

#include "attestation/page/MVNewAttestation.h"
#include "card/CardRecord.h"
#include "platform/gui/AlertQueue.h"

#include <QMainWindow>
#include <QObject>

#include <memory>

class MVScrollView;
class QAction;
class PageFonts;
class PrintDesk;
class SchemeLogos;
class UserDefaults;

/// The viewer: a window on one attestation page, reused for every card. Closing the window hides it. Main thread only.
class MVAttestationWindowController final : public QObject
{
    Q_OBJECT

public:
    /// Loads the window, which stays hidden. The settings, the logos, the fonts and the print desk must outlive the
    /// controller.
    MVAttestationWindowController(const UserDefaults& settings, SchemeLogos& logos, const PageFonts& fonts,
                                  PrintDesk& printDesk, QObject* parent = nullptr);
    ~MVAttestationWindowController() override;

    /// The card being shown; a new one takes its place on the page and in the window's title.
    [[nodiscard]] const CardRecord& vitale() const { return m_attestation.vitale(); }
    void setVitale(const CardRecord& vitale);

    /// Prints a page of its own made from the card, if the print desk permits it: at which scale the window shows the
    /// card plays no part.
    void printAttestation(const QObject* sender);

    /// Brings the window to the front, from wherever it is.
    void showWindow(const QObject* sender);

    [[nodiscard]] QMainWindow* window() const { return m_window.get(); }
    /// The scroll view whose document is the page.
    [[nodiscard]] MVScrollView* scrollView() const { return m_scrollView; }
    [[nodiscard]] const MVNewAttestation& attestation() const { return m_attestation; }

private:
    void internalInit();
    void connectActions(QAction& print, QAction& close);

    const PageFonts& m_fonts;
    PrintDesk& m_printDesk;
    MVNewAttestation m_attestation;
    std::unique_ptr<QMainWindow> m_window;
    AlertQueue m_alerts;
    MVScrollView* m_scrollView = nullptr; // the window's own
};
