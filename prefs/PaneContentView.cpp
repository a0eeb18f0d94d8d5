#include "prefs/PaneContentView.h"

#include <QPainter>
#include <QVariantAnimation>

#include <utility>

namespace {

/// A picture that becomes transparent and ignores the mouse.
class FadingPicture final : public QWidget
{
public:
    FadingPicture(QPixmap picture, QWidget* parent)
        : QWidget(parent)
        , m_picture(std::move(picture))
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setGeometry(parent->rect());
    }

    void setOpacity(qreal opacity)
    {
        m_opacity = opacity;
        update();
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        painter.setOpacity(m_opacity);
        painter.drawPixmap(0, 0, m_picture);
    }

private:
    QPixmap m_picture;
    qreal m_opacity = 1;
};

} // namespace

QList<QWidget*> PaneContentView::subviews() const
{
    QList<QWidget*> views;
    for (const QPointer<QWidget>& view : m_subviews) {
        if (view && view->parentWidget() == this)
            views.append(view);
    }
    return views;
}

void PaneContentView::removeAllSubviews()
{
    delete m_overlay;
    for (QWidget* view : subviews())
        view->setParent(nullptr);
    m_subviews.clear();
}

void PaneContentView::setOnlySubview(QWidget& view)
{
    removeAllSubviews();
    put(view);
    showTopOnly();
}

void PaneContentView::addTransparentSubview(QWidget& view)
{
    m_before = grab();
    put(view);
}

void PaneContentView::fadeToTop(std::function<void()> completion)
{
    // m_before contains what an earlier fade still shows.
    delete m_overlay;
    auto* overlay = new FadingPicture(std::exchange(m_before, {}), this);
    m_overlay = overlay;
    showTopOnly();
    overlay->show();

    auto* fade = new QVariantAnimation(this);
    fade->setStartValue(qreal{1});
    fade->setEndValue(qreal{0});
    fade->setDuration(static_cast<int>(fadeTime.count()));
    connect(fade, &QVariantAnimation::valueChanged, overlay,
            [overlay](const QVariant& value) { overlay->setOpacity(value.toReal()); });
    connect(fade, &QVariantAnimation::finished, this,
            [picture = QPointer<QWidget>(overlay), completion = std::move(completion)] {
                delete picture;
                completion();
            });
    fade->start(QAbstractAnimation::DeleteWhenStopped);
}

void PaneContentView::removeSubview(QWidget* view)
{
    if (!subviews().contains(view))
        return;
    view->setParent(nullptr);
    m_subviews.removeAll(view);
    showTopOnly();
}

void PaneContentView::put(QWidget& view)
{
    view.hide();
    view.setParent(this);
    view.raise();
    view.setGeometry(rect());
    // Covers the views below.
    view.setAutoFillBackground(true);
    m_subviews.removeAll(&view);
    m_subviews.append(&view);
}

void PaneContentView::showTopOnly()
{
    QList<QWidget*> views = subviews();
    if (views.isEmpty())
        return;
    QWidget* top = views.takeLast();
    for (QWidget* view : std::as_const(views))
        view->hide();
    top->show();
    if (m_overlay)
        m_overlay->raise();
}
