#pragma once

#include "prefs/MVPreferencesController.h"
#include "prefs/PaneContentView.h"
#include "prefs/PaneToolbar.h"
#include "tests/common/TestCase.h"
#include "tests/prefs/RecordingPane.h"

#include <QAction>
#include <QTest>
#include <QToolButton>
#include <QVariantAnimation>

#include <memory>

/// A new preferences window for each test, with any number of recording panes.
class ControllerTest : public TestCase
{
    Q_OBJECT

protected:
    /// Registers a pane; its messages are in m_notes.
    RecordingPane* pane(const QString& identifier, QColor colour = Qt::white)
    {
        auto made = std::make_shared<RecordingPane>(identifier, m_notes, colour);
        m_controller->resigterPreferencesPane(made);
        return made.get();
    }

    /// The notes since the last call.
    QStringList notes() { return std::exchange(m_notes, {}); }

    QList<QWidget*> subviews() const { return m_controller->contentView()->subviews(); }
    bool isFading() const { return m_controller->contentView()->findChild<QVariantAnimation*>() != nullptr; }

    QToolButton* button(const QString& identifier) const
    {
        PaneToolbar& toolbar = m_controller->toolbar();
        for (QAction* action : toolbar.actions()) {
            if (PaneToolbar::itemIdentifier(*action) == identifier)
                return qobject_cast<QToolButton*>(toolbar.widgetForAction(action));
        }
        return nullptr;
    }
    void click(const QString& identifier) const { QTest::mouseClick(button(identifier), Qt::LeftButton); }

    QStringList m_notes; // destroyed after the panes
    std::unique_ptr<MVPreferencesController> m_controller;

private Q_SLOTS:
    void init() { m_controller = std::make_unique<MVPreferencesController>(); }
    void cleanup()
    {
        m_controller.reset();
        m_notes.clear();
    }
};
