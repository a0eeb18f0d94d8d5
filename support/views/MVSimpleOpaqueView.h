#pragma once

#include <QColor>
#include <QWidget>

#include <optional>

/// A plain view that fills itself with one colour. It is always opaque: what lies behind it is not drawn, and with no
/// colour its area is left undrawn.
class MVSimpleOpaqueView final : public QWidget
{
    Q_OBJECT

public:
    explicit MVSimpleOpaqueView(QWidget* parent = nullptr);

    [[nodiscard]] const std::optional<QColor>& backgroundColor() const { return m_backgroundColor; }
    /// Redraws the whole view.
    void setBackgroundColor(std::optional<QColor> colour);

    [[nodiscard]] bool isOpaque() const { return true; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void drawRect(const QRect& dirtyRect);

    std::optional<QColor> m_backgroundColor;
};
