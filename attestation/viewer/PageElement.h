#pragma once

#include "attestation/viewer/AccessibleChildren.h"

#include <QAccessibleInterface>
#include <QPointer>
#include <QRectF>
#include <QString>

class DocumentView;

/// A part of the page for assistive technology. A changed page gets new elements. Main thread only.
class PageElement : public QAccessibleInterface
{
public:
    struct Content
    {
        QAccessible::Role role = QAccessible::StaticText;
        QString name;
        QRectF part; ///< in points of the page
    };

    /// The parent (the view's interface or another element) must outlive it.
    PageElement(DocumentView& view, QAccessibleInterface& parent, Content content);

    [[nodiscard]] bool isValid() const override { return !m_view.isNull(); }
    [[nodiscard]] QObject* object() const override { return nullptr; }
    [[nodiscard]] QWindow* window() const override { return m_parent.window(); }
    [[nodiscard]] QAccessibleInterface* parent() const override { return &m_parent; }
    [[nodiscard]] QAccessibleInterface* child(int index) const override { return m_children.at(index); }
    [[nodiscard]] int childCount() const override { return m_children.count(); }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override;
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override;
    [[nodiscard]] QString text(QAccessible::Text kind) const override;
    /// Does nothing: the page is read-only.
    void setText(QAccessible::Text kind, const QString& text) override;
    /// The part's place on the screen, in logical pixels.
    [[nodiscard]] QRect rect() const override;
    [[nodiscard]] QAccessible::Role role() const override { return m_content.role; }
    [[nodiscard]] QAccessible::State state() const override;

protected:
    ~PageElement() override = default;
    Q_DISABLE_COPY_MOVE(PageElement)

    void addChild(PageElement* child) { m_children.add(child); }

private:
    QPointer<DocumentView> m_view;
    QAccessibleInterface& m_parent;
    Content m_content;
    AccessibleChildren m_children;
};

/// A text, or a picture by its name.
class PageTextElement final : public PageElement
{
public:
    using PageElement::PageElement;
};
