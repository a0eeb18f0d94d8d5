#pragma once

#include "app/AppDelegate.h"
#include "app/windows/MainWindow.h"
#include "attestation/page/PageFonts.h"
#include "attestation/page/SchemeLogos.h"
#include "card/client/LVitAccess.h"
#include "platform/Bundle.h"
#include "platform/UserDefaults.h"
#include "prefs/settings/MVSettings.h"

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QTemporaryDir>

#include <memory>
#include <optional>
#include <vector>

/// The application's controller with its window, as at a front desk: a home, settings and a card service of its own.
class Office
{
public:
    /// The command starts the card service; the bundle is the program's own unless another is given.
    explicit Office(const ServiceCommand& service, const QString& resources = QStringLiteral(PELMORA_STAGE_SHARE))
        : client(std::make_shared<LVitAccess>(service))
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

    /// What was set is written while the home is there.
    ~Office() { settings.synchronize(); }
    Office(const Office&) = delete;
    Office& operator=(const Office&) = delete;

    /// Brings the application up, as main does.
    void start() const
    {
        // The tests' own program is no portable copy, so there is nothing to ask.
        if (AppDelegate::applicationWillFinishLaunching(m_bundle) == MoveOutcome::Ends)
            return;
        delegate->awakeFromNib();
        delegate->applicationDidFinishLaunching();
    }

    /// A path in the home.
    [[nodiscard]] QString path(const QString& name) const { return m_home.filePath(name); }

    /// The folder where attestations go unless the settings say otherwise.
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

    std::shared_ptr<LVitAccess> client;

private:
    // The panes of the one preferences window are never released, and keep the settings that they were given.
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
