#pragma once

#include <QAbstractScrollArea>
#include <QPoint>
#include <QRect>
#include <QSize>

class ClipView;
class DocumentView;

/// A view that shows a document through its content view, a clip view, and tells by its scroll bars where that is. Main
/// thread only.
class ScrollView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    explicit ScrollView(QWidget* parent = nullptr);

    /// The view that the document is seen through, which this one comes to own; any other than a clip view shows no
    /// document.
    [[nodiscard]] QWidget* contentView() const { return viewport(); }
    void setContentView(QWidget* contentView);

    /// The clip view's document; nothing without a clip view or a document.
    [[nodiscard]] DocumentView* documentView() const;
    void setDocumentView(DocumentView* documentView);

    virtual void setFrame(const QRect& frame);
    virtual void setFrameOrigin(QPoint origin);
    virtual void setFrameSize(QSize size);
    /// Widgets lie upright whatever the angle (degrees): to them this is a change of frame that turns nothing.
    virtual void setFrameRotation(double angle);

    /// Lets the scroll bars follow the clip view's bounds, in the document's points.
    void reflectScrolledClipView();

protected:
    bool viewportEvent(QEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    [[nodiscard]] ClipView* clipView() const;

    bool m_isReflecting = false;
};
