#pragma once

#include <QList>
#include <QPixmap>
#include <QPointer>
#include <QWidget>

#include <chrono>
#include <functional>

/// Where the preferences window shows the panes' views. They lie one above the other and belong to the panes; only the
/// one on top is seen, takes keys and clicks, and is read out.
class PaneContentView final : public QWidget
{
    Q_OBJECT

public:
    static constexpr QSize paneSize{500, 280}; // points
    static constexpr std::chrono::milliseconds fadeTime{300};

    explicit PaneContentView(QWidget* parent = nullptr);

    /// The views in it, the lowest one first.
    [[nodiscard]] QList<QWidget*> subviews() const;
    void removeAllSubviews();
    /// Shows the view, alone.
    void setOnlySubview(QWidget& view);

    /// Puts the view on top, wherever it was, but shows it only with the fade that follows.
    void addTransparentSubview(QWidget& view);
    /// Fades from what is seen to the view on top, which is there for keys and clicks at once; then calls back.
    void fadeToTop(std::function<void()> completion);
    /// Takes the view out, if it is in; what then lies on top is shown.
    void removeSubview(QWidget* view);

private:
    void put(QWidget& view);
    void showTopOnly();

    QList<QPointer<QWidget>> m_subviews; // the lowest one first
    QPixmap m_before;                    // what was seen before the coming fade
    QPointer<QWidget> m_overlay;         // the picture that fades away, while there is one
};
