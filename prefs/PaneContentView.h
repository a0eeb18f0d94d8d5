#pragma once

#include <QList>
#include <QPixmap>
#include <QPointer>
#include <QWidget>

#include <chrono>
#include <functional>

/// The part of the preferences window with the panes' views, one above the other. The panes own the views. Only the top
/// view is visible and gets events.
class PaneContentView final : public QWidget
{
    Q_OBJECT

public:
    static constexpr QSize paneSize{500, 280}; // points
    static constexpr std::chrono::milliseconds fadeTime{300};

    using QWidget::QWidget;

    /// The views, lowest first.
    [[nodiscard]] QList<QWidget*> subviews() const;
    void removeAllSubviews();
    /// Shows only this view.
    void setOnlySubview(QWidget& view);

    /// Puts the view on top; it becomes visible with the next fade.
    void addTransparentSubview(QWidget& view);
    /// Fades to the top view, which gets events at once, then calls back.
    void fadeToTop(std::function<void()> completion);
    /// Removes the view, if it is there, and shows the top one.
    void removeSubview(QWidget* view);

private:
    void put(QWidget& view);
    void showTopOnly();

    QList<QPointer<QWidget>> m_subviews; // lowest first
    QPixmap m_before;                    // what was visible before the next fade
    QPointer<QWidget> m_overlay;         // the fading picture, during a fade
};
