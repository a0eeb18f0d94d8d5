#pragma once

#include <QLabel>

/// One line of plain text that gives way in its middle where there is no room. Its tooltip and assistive technology
/// always have the whole of it.
class ElidedLabel final : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    void setWholeText(const QString& text);

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};
