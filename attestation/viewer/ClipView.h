#pragma once

#include "attestation/viewer/ClipArithmetic.h"

#include <QPointF>
#include <QPointer>
#include <QRect>
#include <QRectF>
#include <QSizeF>
#include <QWidget>

class DocumentView;

/// The part of a scroll view that shows its document. What is seen of the document, and at which scale, is the view's
/// own transform from bounds to frame. Main thread only.
class ClipView : public QWidget
{
    Q_OBJECT

public:
    explicit ClipView(QWidget* parent = nullptr);

    [[nodiscard]] DocumentView* documentView() const;
    /// Becomes the view's parent.
    void setDocumentView(DocumentView* documentView);
    /// The document's frame size in points; null when there is none.
    [[nodiscard]] QSizeF documentSize() const;

    /// Where the view lies in the scroll view, and which part of the document's coordinates it shows.
    [[nodiscard]] const QRectF& frame() const { return m_transform.frame(); }
    [[nodiscard]] QRectF bounds() const { return m_transform.bounds(); }

    virtual void setFrame(const QRect& frame);
    virtual void setFrameOrigin(QPoint origin);
    virtual void setFrameSize(QSize size);
    /// Widgets lie upright whatever the angle (degrees): to them this is a change of frame that turns nothing.
    virtual void setFrameRotation(double angle);

    /// A size of the view's own coordinates as it is in the window, and back.
    [[nodiscard]] QSizeF sizeToWindow(QSizeF size) const { return m_transform.sizeToWindow(size); }
    [[nodiscard]] QSizeF sizeFromWindow(QSizeF size) const { return m_transform.sizeFromWindow(size); }
    void scaleUnitSquareToSize(QSizeF factors);

    /// The point where the bounds may begin when that one is asked for.
    [[nodiscard]] virtual QPointF constrainScrollPoint(QPointF proposed) const;
    /// Lets the bounds begin there.
    void scrollToPoint(QPointF origin);

    /// The bounds have changed: the scroll view shows the new position.
    virtual void viewBoundsChanged();
    /// The document's frame has changed: the bounds are kept to where they may be.
    virtual void viewFrameChanged();

protected:
    /// Takes away what would resize the views inside: a layout.
    void turnOffAutoresizing();
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    /// Tells the scroll view that holds this view, if any, where the bounds are.
    void reflectScrolledClipView();

private:
    void frameWasSet();
    void documentFrameWasSet();
    void placeDocument();

    QPointer<DocumentView> m_documentView;
    BoundsTransform m_transform;
};
