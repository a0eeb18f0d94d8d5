#pragma once

#include <QColor>
#include <QWidget>

#include <optional>

/// A view filled with one colour. It is always opaque; without a colour nothing is drawn.
class MVSimpleOpaqueView final : public QWidget
{
    Q_OBJECT

public:
    explicit MVSimpleOpaqueView(QWidget* parent = nullptr);

    [[nodiscard]] const std::optional<QColor>& backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(std::optional<QColor> colour);

    [[nodiscard]] bool isOpaque() const { return true; }

Q_SIGNALS:
    /// A click of the left button.
    void clicked();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void drawRect(const QRect& dirtyRect);

    std::optional<QColor> m_backgroundColor;
};
