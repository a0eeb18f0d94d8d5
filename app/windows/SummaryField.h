#pragma once

#include <QColor>
#include <QLabel>

#include <optional>

/// The card's summary: the first line stands out, and a line that is longer than the field is elided, so that no name
/// makes the window grow; the whole text is in text(), for assistive technology, and in the tool tip. Never rich text.
class SummaryField final : public QLabel
{
    Q_OBJECT

public:
    explicit SummaryField(QWidget* parent = nullptr);

    /// Shows the card as an earlier one, on a plate of that colour, which must suit the field's ink; nothing for a card
    /// that is the last one.
    void setPlate(const std::optional<QColor>& colour);

    /// Room for three lines, whatever the text.
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QFont fontOfLine(qsizetype line) const;
    /// The lines as they fit into the field.
    [[nodiscard]] QStringList shownLines() const;
    /// Free space on either side of the text.
    [[nodiscard]] int indent() const;

    std::optional<QColor> m_plate;
};
