#include "support/views/GlyphIcon.h"

#include "support/MXLog.h"

#include <QColor>
#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

class GlyphEngine final : public QIconEngine
{
public:
    explicit GlyphEngine(QString path)
        : m_path(std::move(path))
    {
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode /*mode*/, QIcon::State /*state*/) override
    {
        useInk(painter->pen().color());
        if (!m_drawing.isValid())
            return;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        m_drawing.render(painter, QRectF(rect));
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setPen(QGuiApplication::palette().color(QPalette::WindowText));
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }

    [[nodiscard]] QIconEngine* clone() const override { return new GlyphEngine(m_path); }
    [[nodiscard]] QString key() const override { return u"PelmoraGlyph"_s; }
    bool isNull() override { return m_path.isEmpty(); }

private:
    void useInk(const QColor& ink)
    {
        if (ink == m_ink)
            return;
        m_ink = ink;
        QFile file(m_path);
        QByteArray drawing;
        // Qt would warn of an empty path, which a missing resource has.
        if (!m_path.isEmpty() && file.open(QIODevice::ReadOnly))
            drawing = file.readAll().replace("currentColor", ink.name().toLatin1());
        if (!m_drawing.load(drawing))
            MXLog::logError("Icon {} cannot be drawn", m_path);
    }

    QString m_path;
    QColor m_ink; // invalid until the file has been read
    QSvgRenderer m_drawing;
};

} // namespace

QIcon glyphIcon(const QString& path)
{
    return QIcon(new GlyphEngine(path));
}
