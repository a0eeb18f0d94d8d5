#pragma once

#include "platform/UserDefaults.h"
#include "prefs/PaneViewController.h"
#include "prefs/settings/MVSettings.h"
#include "prefs/settings/StandardPreferences.h"
#include "tests/common/LogCapture.h"
#include "tests/common/TestCase.h"

#include <QScrollArea>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/// New settings for each test, as after the program's start, and a record of the log.
class PaneTest : public TestCase
{
    Q_OBJECT

protected:
    [[nodiscard]] QString settingsFile() const { return m_folder->filePath(QStringLiteral("Pelmora.conf")); }

    void begin()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        qputenv("HOME", QFile::encodeName(m_folder->path()));
        restart();
        m_log.clear();
    }
    void end()
    {
        m_window.reset();
        m_settings.reset();
    }

    /// Simulates a restart of the program.
    void restart()
    {
        m_settings.reset();
        m_settings = std::make_unique<UserDefaults>(settingsFile());
        setStandardPreferences(*m_settings);
    }

    /// A control of the pane's view.
    template <typename Control>
    static Control* control(PaneViewController& pane, const char* name)
    {
        return pane.view().findChild<Control*>(QLatin1String(name));
    }

    /// Puts the pane's view into a window, which is on the screen.
    bool show(PaneViewController& pane)
    {
        m_window = std::make_unique<QWidget>();
        m_window->resize(500, 280);
        pane.paneView()->setParent(m_window.get());
        pane.paneView()->setGeometry(m_window->rect());
        m_window->show();
        return QTest::qWaitForWindowActive(m_window.get());
    }

    const Bundle m_bundle{QStringLiteral(PELMORA_STAGE_SHARE)};
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UserDefaults> m_settings;
    std::unique_ptr<QWidget> m_window;
    LogCapture m_log;

private Q_SLOTS:
    void init() { begin(); }
    void cleanup() { end(); }
};
