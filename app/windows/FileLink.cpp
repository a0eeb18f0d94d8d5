#include "app/windows/FileLink.h"

#include "app/models/PanelLine.h"

#include <QContextMenuEvent>
#include <QDir>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

constexpr int room = 2; // pixels beside the name

} // namespace

FileLink::FileLink(QWidget* parent)
    : QAbstractButton(parent)
{
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::StrongFocus);
    hide();
}

void FileLink::setPath(const QString& path)
{
    m_name = PanelLine::shownName(path);
    setAccessibleName(u"Ouvrir %1"_s.arg(m_name));
    // As escaped rich text: tool tips wrap only rich text.
    setToolTip(u"<p>"_s + QDir::toNativeSeparators(path).toHtmlEscaped() + u"</p>"_s);
    setVisible(!path.isEmpty());
    update();
}

QFont FileLink::linkFont() const
{
    QFont result = font();
    result.setUnderline(true);
    return result;
}

QSize FileLink::sizeHint() const
{
    const QFontMetrics metrics(linkFont());
    return {metrics.horizontalAdvance(m_name) + 2 * room, metrics.lineSpacing()};
}

void FileLink::contextMenuEvent(QContextMenuEvent* event)
{
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(u"&Ouvrir l’attestation"_s, this, &QAbstractButton::click);
    menu->addAction(u"Ouvrir le &dossier"_s, this, &FileLink::folderRequested);
    menu->popup(event->globalPos());
}

void FileLink::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void FileLink::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setFont(linkFont());
    painter.setPen(palette().color(QPalette::WindowText));
    const bool isWhole = width() >= sizeHint().width();
    const QString shown =
        isWhole ? m_name : painter.fontMetrics().elidedText(m_name, Qt::ElideMiddle, width() - 2 * room);
    painter.drawText(rect().adjusted(room, 0, -room, 0), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
    // In the text's colour: the style's own ring is not legible on every background.
    if (hasFocus())
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
}
