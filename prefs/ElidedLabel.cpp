#include "prefs/ElidedLabel.h"

#include <QPainter>
#include <QStyle>

using namespace Qt::StringLiterals;

ElidedLabel::ElidedLabel(QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

void ElidedLabel::setWholeText(const QString& text)
{
    setText(text);
    // Tooltips treat a text that looks like markup as markup.
    setToolTip(Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text);
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {fontMetrics().horizontalAdvance(u"…"_s), QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent* event)
{
    if (fontMetrics().horizontalAdvance(text()) <= contentsRect().width()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    const QString elided = fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width());
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment()), palette(), isEnabled(), elided,
                          foregroundRole());
}
