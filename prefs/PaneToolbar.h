#pragma once

#include <QIcon>
#include <QString>
#include <QStringList>
#include <QToolBar>

#include <memory>
#include <vector>

class QAction;
class QActionGroup;

/// The toolbar of the preferences window: one button per pane, its icon over its label, one of them selected.
class PaneToolbar final : public QToolBar
{
    Q_OBJECT

public:
    struct Item
    {
        QString identifier;
        QIcon image;
        QString label;
    };

    explicit PaneToolbar(const QString& identifier);
    ~PaneToolbar() override;

    /// Replaces the buttons; the selection stays with its identifier.
    void setItems(const std::vector<Item>& items);
    [[nodiscard]] QStringList itemIdentifiers() const;
    [[nodiscard]] static QString itemIdentifier(const QAction& item);

    /// Empty when no button was selected yet.
    [[nodiscard]] const QString& selectedItemIdentifier() const { return m_selected; }
    void setSelectedItemIdentifier(const QString& identifier);

Q_SIGNALS:
    /// A button was chosen, by mouse, keyboard or assistive technology; perhaps the selected one again.
    void itemChosen(const QAction* item);

private:
    void addItem(const Item& item);
    void itemToggled(QAction& item, bool on);
    void showSelection();

    QString m_selected;
    std::unique_ptr<QActionGroup> m_items; // owns the buttons' actions
};
