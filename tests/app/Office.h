#pragma once

#include "app/AppDelegate.h"
#include "app/windows/MainWindow.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/text/PageFonts.h"
#include "card/client/LVitAccess.h"
#include "platform/Bundle.h"
#include "platform/UserDefaults.h"
#include "prefs/settings/MVSettings.h"
#include "tests/common/Files.h"
#include "tests/fakes/FakeService.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <optional>
#include <vector>

/// Scripts of fake card services: the first answers no request, the second answers all but requests to read a card.
inline const FakeScript silent = FakeScript().doing("any", "silent");
inline const FakeScript silentRead = FakeScript().doing("vitale_read", "silent");

/// The application's controller and window, with their own home folder, settings and card service.
class Office
{
public:
    /// With a fake card service. The default resources are those of the program.
    explicit Office(const FakeScript& script = {}, const QString& resources = QStringLiteral(PELMORA_STAGE_SHARE))
        : Office(std::make_unique<FakeService>(script), std::nullopt, resources)
    {
    }
    explicit Office(const ServiceCommand& service)
        : Office(std::make_unique<FakeService>(), service, QStringLiteral(PELMORA_STAGE_SHARE))
    {
    }

    /// An office that has started and whose card service is bound; null when that fails.
    template <typename... Service>
    static std::unique_ptr<Office> bound(const Service&... service)
    {
        auto office = std::make_unique<Office>(service...);
        office->start();
        const bool isBound = QTest::qWaitFor([&office] { return office->delegate->isEnabled(); });
        return isBound ? std::move(office) : nullptr;
    }

    /// The card service with a simulated reader, which holds the card of that file.
    static ServiceCommand simulation(const QString& card)
    {
        return {QStringLiteral(PELMORA_STAGE "/libexec/pelmora/com.morvel.lvit"), {QStringLiteral("--simulate"), card}};
    }
    /// Writes resources that consist of an information dictionary with these entries.
    [[nodiscard]] static bool writeInformation(const QTemporaryDir& resources, const QByteArray& entries)
    {
        return writeFile(resources.filePath(QStringLiteral("Info.plist")),
                         "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>" + entries +
                             "</dict></plist>");
    }
    static QString specimen() { return QStringLiteral(PELMORA_STAGE_SHARE "/specimen.xml"); }

private:
    Office(std::unique_ptr<FakeService> fakeService, const std::optional<ServiceCommand>& service,
           const QString& resources)
        : fake(std::move(fakeService))
        , client(std::make_shared<LVitAccess>(service ? *service : fake->command()))
        , m_bundle(resources)
        , m_fonts(PageFonts::load(Bundle(QStringLiteral(PELMORA_STAGE_SHARE))))
        , m_logos(m_bundle)
        , settings(lastingSettings(path(QStringLiteral("Pelmora.conf"))))
    {
        qputenv("HOME", QFile::encodeName(m_home.path()));
        window = std::make_unique<MainWindow>(m_bundle);
        delegate = std::make_unique<AppDelegate>(
            AppDelegate::Surroundings{m_bundle, settings, m_logos, *m_fonts, *window}, client);
    }

public:
    /// Writes the settings before the home folder is removed.
    ~Office() { settings.synchronize(); }
    Q_DISABLE_COPY_MOVE(Office)

    /// Starts the application in the same steps as main().
    void start() const
    {
        // The test program is not a portable copy, so no question is asked.
        if (AppDelegate::applicationWillFinishLaunching(m_bundle) == MoveOutcome::Ends)
            return;
        delegate->awakeFromNib();
        delegate->applicationDidFinishLaunching();
    }

    /// A path in the home.
    [[nodiscard]] QString path(const QString& name) const { return m_home.filePath(name); }

    /// The default folder of attestations.
    [[nodiscard]] QString attestations() const { return path(QStringLiteral("Documents/Attestations Pelmora")); }

    /// The alert that is on the screen.
    [[nodiscard]] static QMessageBox* alert()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* box = qobject_cast<QMessageBox*>(widget);
            if (box && box->isVisible())
                return box;
        }
        return nullptr;
    }

    /// The text of the alert that is on the screen.
    [[nodiscard]] static std::optional<QString> alertText()
    {
        const QMessageBox* box = alert();
        return box ? std::optional(box->text()) : std::nullopt;
    }

    /// Presses the button of the alert that is on the screen.
    static void pressOk()
    {
        if (const QMessageBox* box = alert())
            QTest::mouseClick(box->buttons().constFirst(), Qt::LeftButton);
    }

    /// The summary of the card in the main window.
    [[nodiscard]] QString summary() const { return window->vitaleInfoTextField()->text(); }
    /// The text under the summary.
    [[nodiscard]] QString panelLine() const
    {
        return window->findChild<QLabel*>(QStringLiteral("panelLineField"))->text();
    }
    /// The last line of the text under the summary; empty if there is only one.
    [[nodiscard]] QString notice() const
    {
        const QStringList lines = panelLine().split(u'\n');
        return lines.size() > 1 ? lines.last() : QString();
    }

    /// The number of reads that the card service was asked for.
    [[nodiscard]] qsizetype reads() const
    {
        return fake->requested(QStringLiteral("Command")).count(QStringLiteral("vitale_read"));
    }

    /// The attestation's window: the window other than the main one that has an entry for printing.
    [[nodiscard]] QMainWindow* viewer() const
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* found = qobject_cast<QMainWindow*>(widget);
            if (found && found != window.get() && found->findChild<QAction*>(QStringLiteral("printAction")))
                return found;
        }
        return nullptr;
    }

    /// Chooses an entry of the status item's menu.
    void chooseFromStatusMenu(int tag) const
    {
        QAction entry;
        entry.setData(tag);
        delegate->executeAction(&entry);
    }

    std::unique_ptr<FakeService> fake;
    std::shared_ptr<LVitAccess> client;

private:
    // The panes of the preferences window are never deleted, and keep a pointer to their settings.
    static UserDefaults& lastingSettings(const QString& path)
    {
        static std::vector<std::unique_ptr<UserDefaults>> all;
        return *all.emplace_back(std::make_unique<UserDefaults>(path));
    }

    QTemporaryDir m_home;
    Bundle m_bundle;
    std::expected<PageFonts, Error> m_fonts;
    SchemeLogos m_logos;

public:
    UserDefaults& settings;
    std::unique_ptr<MainWindow> window;
    std::unique_ptr<AppDelegate> delegate;
};
