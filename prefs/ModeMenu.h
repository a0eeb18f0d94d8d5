#pragma once

#include <QComboBox>
#include <QTimer>

#include <chrono>

/// The menu of modes, each of which starts the card service anew. An entry that is picked in the open list counts at
/// once. In the closed menu the wheel does nothing, and an entry that keys lead to counts once the keys have rested, at
/// Enter, or when the keyboard goes elsewhere. Main thread only.
class ModeMenu final : public QComboBox
{
    Q_OBJECT

public:
    /// Longer than people take from one key to the next.
    static constexpr std::chrono::milliseconds keyRest{700};

    explicit ModeMenu(QWidget* parent = nullptr);

    void showPopup() override;
    void hidePopup() override;

Q_SIGNALS:
    /// A key has led to another entry, which does not count yet.
    void browsed();
    /// The user has chosen the current entry: by a pick in the list, perhaps the same as before, or by keys.
    void chosen();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void entryActivated();
    void settle();

    QTimer m_rest; // single shot: from a key to its effect
    bool m_isBrowsing = false;
    bool m_isInKeyPress = false;
    bool m_isOpening = false;
    int m_indexBefore = -1; // before the keys
};
