#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>

class AlertQueue;
class CardRecord;
class PageFonts;
class PrintOperation;
class QWidget;
class SchemeLogos;
class UserDefaults;

/// Where the application prints attestations: one at a time asks the user, from the request to the end of its dialog.
/// As long as it asks, no other card may take the place of the one whose page it prints. The last printer is remembered
/// in the settings. With the setting for it, one copy goes to that printer without a question. Main thread only; the
/// settings, the logos and the fonts must outlive it. The print helper is the program that PrintServer starts.
class PrintDesk final : public QObject
{
    Q_OBJECT

public:
    PrintDesk(UserDefaults& settings, SchemeLogos& logos, const PageFonts& fonts, QString printHelper);
    Q_DISABLE_COPY(PrintDesk)
    ~PrintDesk() override;

    /// Asked before a window prints its own card. Whoever refuses tells the user why.
    void setPermission(std::function<bool()> permission);
    /// Whether a window may print its own card now. What the window shows may change meanwhile: ask first, then take
    /// its card.
    [[nodiscard]] bool mayPrint() const;

    /// Gives the file that is offered for a card's page. Without it, a file in the documents folder is.
    void setFileNaming(std::function<QString(const CardRecord&)> fileNaming);

    /// Prints the record's attestation: a fresh page, whatever is on the screen, on one sheet. The print dialog opens
    /// on the window that asks, and blocks all windows. What fails is told by the window's alerts. While another print
    /// asks nothing is printed, and that one comes to the front. Returns at once; the alerts and the window must
    /// outlive the print.
    void print(const CardRecord& record, AlertQueue& alerts, QWidget& window);

    /// Whether a print still has its question to the user, how to print, on the screen or on the way there.
    [[nodiscard]] bool isAsking() const;
    /// Brings that question to the front; nothing when there is none.
    void bringToFront() const;

Q_SIGNALS:
    /// A printer's queue has a page.
    void sent(const QString& queue);
    /// A page is in the file.
    void saved(const QString& path);

private:
    [[nodiscard]] QString offeredFile(const CardRecord& record) const;
    void remember(const QString& queue);

    UserDefaults& m_settings;
    SchemeLogos& m_logos;
    const PageFonts& m_fonts;
    QString m_printHelper;
    std::function<bool()> m_permission;
    std::function<QString(const CardRecord&)> m_fileNaming;
    QPointer<PrintOperation> m_operation; // the last one; it deletes itself
};
