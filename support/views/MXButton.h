#pragma once

#include "support/views/MXButtonCell.h"

#include <QPushButton>

/// A push button for layout files that is drawn by its cell.
class MXButton final : public QPushButton
{
    Q_OBJECT

public:
    explicit MXButton(QWidget* parent = nullptr);

    [[nodiscard]] const MXButtonCell& cell() const { return m_cell; }
    void setBackgroundColor(std::optional<QColor> colour);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    MXButtonCell m_cell;
};
