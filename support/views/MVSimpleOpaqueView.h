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

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void drawRect(const QRect& dirtyRect);

    std::optional<QColor> m_backgroundColor;
};
