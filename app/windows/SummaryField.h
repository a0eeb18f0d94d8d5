#pragma once

#include <QColor>
#include <QLabel>

#include <optional>

/// The card's summary, with a bold first line. Long lines are elided, so that no name enlarges the window; text() and
/// the tool tip have the whole text. Never rich text.
class SummaryField final : public QLabel
{
    Q_OBJECT

public:
    explicit SummaryField(QWidget* parent = nullptr);

    /// Shows the card as an earlier one on that background colour; nullopt for the current card.
    void setPlate(const std::optional<QColor>& colour);

    /// The number as the tool tip shows it; empty for none.
    void setNumber(const QString& grouped) { m_number = grouped; }

    /// Three lines for any text.
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QFont fontOfLine(qsizetype line) const;
    /// The lines that fit.
    [[nodiscard]] QStringList shownLines() const;
    /// The margin beside the text.
    [[nodiscard]] int indent() const;

    std::optional<QColor> m_plate;
    QString m_number;
};
