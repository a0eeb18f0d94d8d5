#pragma once

#include "attestation/viewer/ClipArithmetic.h"

#include <QPointer>
#include <QRectF>
#include <QWidget>

class DocumentView;

/// The part of a scroll view that shows its document, by a transform from bounds to frame. Main thread only.
class ClipView : public QWidget
{
    Q_OBJECT

public:
    explicit ClipView(QWidget* parent = nullptr);

    [[nodiscard]] DocumentView* documentView() const;
    /// Becomes the view's parent.
    void setDocumentView(DocumentView* documentView);
    /// The document's size in points; null without a document.
    [[nodiscard]] QSizeF documentSize() const;

    /// The view's place in the scroll view, and the visible part of the document.
    [[nodiscard]] const QRectF& frame() const { return m_transform.frame(); }
    [[nodiscard]] QRectF bounds() const { return m_transform.bounds(); }

    void setFrame(const QRect& frame);
    void setFrameOrigin(QPoint origin);
    void setFrameSize(QSize size);
    /// Widgets cannot be rotated: this counts as a change of frame without effect.
    void setFrameRotation(double angle);

    /// Converts sizes between the view's own coordinates and the window.
    [[nodiscard]] QSizeF sizeToWindow(QSizeF size) const { return m_transform.sizeToWindow(size); }
    [[nodiscard]] QSizeF sizeFromWindow(QSizeF size) const { return m_transform.sizeFromWindow(size); }
    void scaleUnitSquareToSize(QSizeF factors);

    /// The allowed origin of the bounds for a proposed one.
    [[nodiscard]] virtual QPointF constrainScrollPoint(QPointF proposed) const;
    void scrollToPoint(QPointF origin);

    /// The bounds have changed: updates the scroll view.
    virtual void viewBoundsChanged();
    /// The document's frame has changed: limits the bounds.
    virtual void viewFrameChanged();

protected:
    /// Removes a layout, which would resize the views inside.
    void turnOffAutoresizing();
    /// Called after each change of the frame.
    virtual void frameWasSet();

    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    /// Updates the scroll view that contains this view, if any.
    void reflectScrolledClipView();

private:
    void documentFrameWasSet();
    void placeDocument();

    QPointer<DocumentView> m_documentView;
    BoundsTransform m_transform;
};
