#pragma once

#include <QProgressBar>
#include <QVariantAnimation>

/// A turning ring for work of unknown duration. For assistive technology it is a progress bar without a value.
class ProgressIndicator final : public QProgressBar
{
    Q_OBJECT

public:
    explicit ProgressIndicator(QWidget* parent = nullptr);

    void startAnimation();
    void stopAnimation();
    [[nodiscard]] bool isAnimating() const { return m_turn.state() == QAbstractAnimation::Running; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QVariantAnimation m_turn; // degrees
};
