#pragma once

#include <QRect>
#include <QSizeF>
#include <QTransform>
#include <QWidget>

class QPainter;

/// What a clip view shows: a view with a frame and points of its own, which stay as they are while the clip view scales
/// and moves what is seen of it. It is drawn anew at every scale: vectors and texts stay sharp. Main thread only.
class DocumentView : public QWidget
{
    Q_OBJECT

public:
    explicit DocumentView(QWidget* parent = nullptr);

    /// The view's own frame, in points.
    [[nodiscard]] QSizeF documentSize() const { return m_documentSize; }
    void setDocumentSize(QSizeF size);

    /// Shows the document where that transform takes its points in the parent's coordinates.
    void setPlacement(const QTransform& toParent);
    /// Where a part of the document is in this widget: the whole pixels that it touches.
    [[nodiscard]] QRect placeOf(const QRectF& part) const;

    [[nodiscard]] QSize sizeHint() const override { return m_documentSize.toSize(); }

Q_SIGNALS:
    void documentSizeChanged();

protected:
    void paintEvent(QPaintEvent* event) override;

    /// Draws the document; the painter's unit is its point, with the origin in its top-left corner.
    virtual void drawRect(QPainter& painter) const = 0;

private:
    QSizeF m_documentSize;
    QTransform m_toWidget;
};
