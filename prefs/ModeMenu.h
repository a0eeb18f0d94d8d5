#pragma once

#include <QComboBox>
#include <QTimer>

#include <chrono>

/// The menu of modes. A choice restarts the card service, so keys take effect only after a pause, at Enter, or when the
/// focus leaves. A choice in the open list takes effect at once. The wheel does nothing. Main thread only.
class ModeMenu final : public QComboBox
{
    Q_OBJECT

public:
    /// Longer than the usual time between two keys.
    static constexpr std::chrono::milliseconds keyRest{700};

    explicit ModeMenu(QWidget* parent = nullptr);

    void showPopup() override;
    void hidePopup() override;

Q_SIGNALS:
    /// A key has selected another entry, which is not chosen yet.
    void browsed();
    /// The current entry was chosen: in the list, perhaps again, or by keys.
    void chosen();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void entryActivated();
    void settle();

    QTimer m_rest; // from a key to its effect
    bool m_isBrowsing = false;
    bool m_isInKeyPress = false;
    bool m_isOpening = false;
    int m_indexBefore = -1; // before the first key
};
