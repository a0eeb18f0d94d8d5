#pragma once

#include <QAbstractScrollArea>
#include <QRect>

class ClipView;
class DocumentView;

/// A view that shows a document through a clip view, with scroll bars. Main thread only.
class ScrollView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    using QAbstractScrollArea::QAbstractScrollArea;

    /// The clip view, which this view owns; with another widget there is no document.
    [[nodiscard]] QWidget* contentView() const { return viewport(); }
    void setContentView(QWidget* contentView);

    /// The clip view's document, or null.
    [[nodiscard]] DocumentView* documentView() const;
    void setDocumentView(DocumentView* documentView);

    void setFrame(const QRect& frame);
    void setFrameOrigin(QPoint origin);
    void setFrameSize(QSize size);
    /// Widgets cannot be rotated: this counts as a change of frame without effect.
    void setFrameRotation(double angle);

    /// Sets the scroll bars from the clip view's bounds, in points of the document.
    void reflectScrolledClipView();

protected:
    /// Called after each change of the frame.
    virtual void frameWasSet() {}

    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    [[nodiscard]] ClipView* clipView() const;

    bool m_isReflecting = false;
};
