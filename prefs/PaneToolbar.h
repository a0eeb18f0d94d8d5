#pragma once

#include <QIcon>
#include <QStringList>
#include <QToolBar>

#include <memory>
#include <vector>

class QAction;
class QActionGroup;

/// The toolbar of the preferences window: one button per pane with icon and label; one is selected.
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

    /// Replaces the buttons and keeps the selected identifier.
    void setItems(const std::vector<Item>& items);
    [[nodiscard]] QStringList itemIdentifiers() const;
    [[nodiscard]] static QString itemIdentifier(const QAction& item);

    /// Empty before a button was selected.
    [[nodiscard]] const QString& selectedItemIdentifier() const { return m_selected; }
    void setSelectedItemIdentifier(const QString& identifier);
    /// Gives the selected button the keyboard focus, so that screen readers say which pane is shown.
    void focusSelection();

Q_SIGNALS:
    /// A button was chosen, also when it was selected already.
    void itemChosen(const QAction* item);

private:
    void addItem(const Item& item);
    void itemToggled(QAction& item, bool on);
    void showSelection();

    QString m_selected;
    std::unique_ptr<QActionGroup> m_items; // owns the actions
};
