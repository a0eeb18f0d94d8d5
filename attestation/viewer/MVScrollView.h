#pragma once

#include "attestation/viewer/ScrollView.h"

#include <QSizeF>

/// The viewer's scroll view: scales the page down to fit into the window, and never enlarges it. Main thread only.
class MVScrollView final : public ScrollView
{
    Q_OBJECT

public:
    using ScrollView::ScrollView;

    /// Sets the scale of an MVClipView so that the page with its margin fits into this view.
    void changeClipViewScale();

    /// The size of the unscaled document with its margin.
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void frameWasSet() override { changeClipViewScale(); }

private:
    [[nodiscard]] QSizeF neededSize() const;
};
