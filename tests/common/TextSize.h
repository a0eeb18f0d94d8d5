#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QStringList>

// The size of texts, for tests that link Qt Widgets.

/// Multiplies the size of the application's font during its life.
class ScaledText
{
public:
    explicit ScaledText(double factor)
    {
        QFont font = m_usual;
        font.setPointSizeF(m_usual.pointSizeF() * factor);
        QApplication::setFont(font);
    }
    ~ScaledText() { QApplication::setFont(m_usual); }
    Q_DISABLE_COPY_MOVE(ScaledText)

private:
    QFont m_usual = QApplication::font();
};

/// The names of the visible labels, buttons and combo boxes that are too small for their text.
inline QStringList cutTexts(const QWidget& window)
{
    QStringList cut;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        const auto* label = qobject_cast<const QLabel*>(widget);
        // An elided label has its whole text in its tool tip.
        const bool shows = label
                               ? label->toolTip().isEmpty()
                               : qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QComboBox*>(widget);
        if (!shows || !widget->isVisible())
            continue;
        const bool wraps = label && label->wordWrap();
        const int height = wraps ? label->heightForWidth(widget->width()) : widget->sizeHint().height();
        if (widget->height() < height || (!wraps && widget->width() < widget->sizeHint().width()))
            cut.append(widget->objectName() + widget->accessibleName());
    }
    return cut;
}
