#pragma once

#include "attestation/viewer/AccessibleChildren.h"

#include <QAccessibleWidget>
#include <QMetaObject>

class MVNewAttestationView;

/// The page for those who cannot see it: a document whose children are the page's texts and its two tables with their
/// cells, in reading order, made of the same description as the ink. Owned by Qt, as every accessible interface. Main
/// thread only.
class AccessiblePage final : public QAccessibleWidget
{
public:
    explicit AccessiblePage(MVNewAttestationView& view);

    /// Lets Qt find this interface for views of the page; calling it again does nothing.
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
    QMetaObject::Connection m_following; // of the view's changes
};
