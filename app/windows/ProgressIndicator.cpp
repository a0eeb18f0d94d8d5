#include "app/windows/ProgressIndicator.h"

#include <QPainter>
#include <QPen>

namespace {

constexpr int side = 48;  // pixels
constexpr int stroke = 5; // pixels
constexpr int turnMs = 1000;
constexpr int arc = 100; // degrees of the ring that are lit
constexpr int sixteenths = 16;

} // namespace

ProgressIndicator::ProgressIndicator(QWidget* parent)
    : QProgressBar(parent)
{
    setRange(0, 0);
    setTextVisible(false);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_turn.setStartValue(0);
    m_turn.setEndValue(360);
    m_turn.setDuration(turnMs);
    m_turn.setLoopCount(-1);
    connect(&m_turn, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
}

void ProgressIndicator::startAnimation()
{
    m_turn.start();
}

void ProgressIndicator::stopAnimation()
{
    m_turn.stop();
}

QSize ProgressIndicator::sizeHint() const
{
    return {side, side};
}

QSize ProgressIndicator::minimumSizeHint() const
{
    return sizeHint();
}

void ProgressIndicator::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF ring = QRectF(rect()).adjusted(stroke, stroke, -stroke, -stroke);
    QColor track = palette().color(QPalette::WindowText);
    track.setAlphaF(0.15F);
    painter.setPen(QPen(track, stroke));
    painter.drawEllipse(ring);
    painter.setPen(QPen(palette().color(QPalette::Highlight), stroke, Qt::SolidLine, Qt::RoundCap));
    // Clockwise, from the top.
    const int start = 90 - m_turn.currentValue().toInt();
    painter.drawArc(ring, start * sixteenths, -arc * sixteenths);
}
