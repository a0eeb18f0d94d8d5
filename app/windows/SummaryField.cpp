#include "app/windows/SummaryField.h"

#include <QFontMetrics>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype lineCount = 3;
constexpr int narrowest = 20; // average characters
constexpr int plateMargin = 8;

// Characters; more than any field shows. Measuring megabytes would take seconds.
constexpr qsizetype longestMeasured = 300;

// Without the middle of a text that is too long to be measured.
QString measured(const QString& line)
{
    return line.size() <= longestMeasured ? line : line.left(longestMeasured / 2) + line.right(longestMeasured / 2);
}

} // namespace

SummaryField::SummaryField(QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

void SummaryField::setPlate(const std::optional<QColor>& colour)
{
    m_plate = colour;
    update();
}

int SummaryField::indent() const
{
    return m_plate ? plateMargin : 0;
}

QFont SummaryField::fontOfLine(qsizetype line) const
{
    QFont result = font();
    result.setBold(line == 0 && !m_plate);
    result.setItalic(m_plate.has_value());
    return result;
}

QSize SummaryField::sizeHint() const
{
    return minimumSizeHint();
}

QSize SummaryField::minimumSizeHint() const
{
    int height = 0;
    for (qsizetype line = 0; line < lineCount; ++line)
        height += QFontMetrics(fontOfLine(line)).lineSpacing();
    return {narrowest * fontMetrics().averageCharWidth(), height};
}

QStringList SummaryField::shownLines() const
{
    QStringList lines = text().split(u'\n').first(std::min(lineCount, text().count(u'\n') + 1));
    for (qsizetype index = 0; index < lines.size(); ++index) {
        const QFontMetrics metrics(fontOfLine(index));
        // In the middle: names of one family differ at their ends.
        lines[index] = metrics.elidedText(measured(lines[index]), Qt::ElideMiddle, width() - 2 * indent());
    }
    return lines;
}

bool SummaryField::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QLabel::event(event);
    // As escaped rich text: a name may look like markup.
    QStringList told;
    if (shownLines().join(u'\n') != text())
        told.append(text().left(lineCount * longestMeasured));
    if (!m_number.isEmpty())
        told.append(m_number.left(longestMeasured));
    const QString tip = u"<p style='white-space:pre'>"_s + told.join(u'\n').toHtmlEscaped();
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), told.isEmpty() ? QString() : tip, this);
    return true;
}

void SummaryField::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    if (m_plate)
        painter.fillRect(rect(), *m_plate);
    painter.setPen(palette().color(foregroundRole()));
    int top = 0;
    const QStringList lines = shownLines();
    for (qsizetype index = 0; index < lines.size(); ++index) {
        painter.setFont(fontOfLine(index));
        const int height = painter.fontMetrics().lineSpacing();
        painter.drawText(QRect(indent(), top, width() - 2 * indent(), height),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, lines.at(index));
        top += height;
    }
}
