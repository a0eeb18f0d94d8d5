#pragma once

#include "attestation/viewer/AccessibleChildren.h"

#include <QAccessibleWidget>
#include <QMetaObject>

class MVNewAttestationView;

/// The page for assistive technology: a document with the logo, the page's texts and its two tables in reading order,
/// made from the same content as the ink. Qt owns it. Main thread only.
class AccessiblePage final : public QAccessibleWidget
{
public:
    explicit AccessiblePage(MVNewAttestationView& view);

    /// Registers this interface for views of the page; may be called again.
    static void install();

    [[nodiscard]] int childCount() const override { return m_children.count(); }
    [[nodiscard]] QAccessibleInterface* child(int index) const override { return m_children.at(index); }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override;
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override;

protected:
    ~AccessiblePage() override;
    Q_DISABLE_COPY_MOVE(AccessiblePage)

private:
    [[nodiscard]] MVNewAttestationView& view() const;
    void addElements();
    void replaceElements();

    AccessibleChildren m_children;
    QMetaObject::Connection m_following; // to the view's changes
};
