#include "app/windows/PanelLineField.h"

#include "app/windows/FileLink.h"

#include <QFontMetrics>
#include <QHelpEvent>
#include <QPainter>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype reservedLines = 2;
constexpr int narrowestLine = 20; // average characters

// Characters; more than any field shows.
constexpr qsizetype longestLine = 1000;

// Line breaks remove blanks.
QString withoutBlanks(QString text)
{
    return text.removeIf([](QChar character) { return character.isSpace(); });
}

} // namespace

PanelLineField::PanelLineField(QWidget* parent)
    : QLabel(parent)
    , m_link(new FileLink(this))
{
    setTextFormat(Qt::PlainText);
}

void PanelLineField::show(const QString& text, const QString& path)
{
    m_link->setPath(path);
    setText(text);
    placeLink();
}

QString PanelLineField::textBeforeLink() const
{
    return text().chopped(m_link->isHidden() ? 0 : m_link->name().size());
}

void PanelLineField::placeLink()
{
    if (m_link->isHidden())
        return;
    const QStringList lines = shownLines();
    const int left = fontMetrics().horizontalAdvance(lines.constLast());
    const int height = fontMetrics().lineSpacing();
    m_link->setGeometry(left, static_cast<int>(lines.size() - 1) * height,
                        std::clamp(m_link->sizeHint().width(), 0, std::max(0, width() - left)), height);
}

void PanelLineField::resizeEvent(QResizeEvent* event)
{
    QLabel::resizeEvent(event);
    placeLink();
}

QSize PanelLineField::sizeHint() const
{
    return minimumSizeHint();
}

QSize PanelLineField::minimumSizeHint() const
{
    return {narrowestLine * fontMetrics().averageCharWidth(),
            static_cast<int>(reservedLines) * fontMetrics().lineSpacing()};
}

QStringList PanelLineField::wrapped(const QString& paragraph, qsizetype lines) const
{
    const QString text = paragraph.left(longestLine);
    QTextLayout layout(text, font());
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    QStringList result;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid() && result.size() < lines; line = layout.createLine()) {
        line.setLineWidth(width());
        const bool isLast = result.size() + 1 == lines;
        const QString shown = isLast ? text.mid(line.textStart()) : text.mid(line.textStart(), line.textLength());
        result.append(fontMetrics().elidedText(shown.trimmed(), Qt::ElideRight, width()));
    }
    layout.endLayout();
    return result;
}

QStringList PanelLineField::shownLines() const
{
    const qsizetype room = std::max<qsizetype>(reservedLines, height() / fontMetrics().lineSpacing());
    const QString card = text().section(u'\n', 0, 0);
    const QString told = textBeforeLink().section(u'\n', 1);
    if (told.isEmpty())
        return wrapped(card, room);
    // The link follows on the same line.
    if (!m_link->isHidden())
        return wrapped(card, room - 1) << told;
    const QStringList below = wrapped(told, room - 1);
    return wrapped(card, room - below.size()) + below;
}

bool PanelLineField::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QLabel::event(event);
    const bool isWhole = withoutBlanks(shownLines().join(QString())) == withoutBlanks(textBeforeLink());
    // As escaped rich text: tool tips wrap only rich text.
    const QString tip = u"<p>"_s + text().left(longestLine).toHtmlEscaped().replace(u'\n', u"</p><p>"_s) + u"</p>"_s;
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), isWhole ? QString() : tip, this);
    return true;
}

void PanelLineField::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    const int height = fontMetrics().lineSpacing();
    int top = 0;
    for (const QString& line : shownLines()) {
        painter.drawText(QRect(0, top, width(), height), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, line);
        top += height;
    }
}
