#pragma once

#include <QRect>
#include <QSizeF>
#include <QTransform>
#include <QWidget>

class QPainter;

/// The document of a clip view. Its frame and its points are independent of the clip view's scale and scrolling. It is
/// painted again at each scale, so that vectors and texts stay sharp. Main thread only.
class DocumentView : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// In points.
    [[nodiscard]] QSizeF documentSize() const { return m_documentSize; }
    void setDocumentSize(QSizeF size);

    /// Shows the document at the place of that transform to the parent's coordinates.
    void setPlacement(const QTransform& toParent);
    /// The whole pixels that a part of the document touches in this widget.
    [[nodiscard]] QRect placeOf(const QRectF& part) const;

    [[nodiscard]] QSize sizeHint() const override { return m_documentSize.toSize(); }

Q_SIGNALS:
    void documentSizeChanged();

protected:
    void paintEvent(QPaintEvent* event) override;

    /// Draws the document in points from its top-left corner.
    virtual void drawRect(QPainter& painter) const = 0;

private:
    QSizeF m_documentSize;
    QTransform m_toWidget;
};
