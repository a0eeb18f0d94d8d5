#pragma once

#include "prefs/MVPreference.h"

#include <QPixmap>
#include <QStringList>
#include <QWidget>

#include <memory>

/// A pane of one colour that records each received message with its identifier in a list that panes can share.
class RecordingPane final : public MVPreference
{
public:
    RecordingPane(QString identifier, QStringList& notes, QColor colour = Qt::white)
        : m_identifier(std::move(identifier))
        , m_notes(notes)
        , m_view(std::make_unique<QWidget>())
    {
        m_view->setPalette(QPalette(colour));
    }

    [[nodiscard]] QString paneIdentifier() const override { return m_identifier; }
    [[nodiscard]] QIcon paneIcon() const override
    {
        QPixmap picture(8, 8);
        picture.fill(Qt::darkGreen);
        return picture;
    }
    [[nodiscard]] QString paneName() const override { return QStringLiteral("Volet ") + m_identifier; }
    [[nodiscard]] QWidget* paneView() override { return m_view.get(); }

    void initialization() override { note(QStringLiteral("initialization")); }
    void deinitialization() override { note(QStringLiteral("deinitialization")); }
    void paneWillAppear() override { note(QStringLiteral("will appear")); }
    void paneDidAppear() override { note(QStringLiteral("did appear")); }
    void paneWillDisappear() override { note(QStringLiteral("will disappear")); }
    void paneDidDisappear() override { note(QStringLiteral("did disappear")); }

private:
    void note(const QString& message) { m_notes.append(m_identifier + u' ' + message); }

    QString m_identifier;
    QStringList& m_notes;
    std::unique_ptr<QWidget> m_view;
};

/// A pane without the optional messages.
class SilentPane final : public MVPreference
{
public:
    [[nodiscard]] QString paneIdentifier() const override { return QStringLiteral("silent"); }
    [[nodiscard]] QIcon paneIcon() const override { return {}; }
    [[nodiscard]] QString paneName() const override { return QStringLiteral("Muet"); }
    [[nodiscard]] QWidget* paneView() override { return m_view.get(); }

private:
    std::unique_ptr<QWidget> m_view = std::make_unique<QWidget>();
};
