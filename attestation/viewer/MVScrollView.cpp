#include "attestation/viewer/MVScrollView.h"

#include "attestation/viewer/DocumentView.h"
#include "attestation/viewer/MVClipView.h"

QSizeF MVScrollView::neededSize() const
{
    constexpr QSizeF margins(20, 20); // points: of both sides together
    const DocumentView* document = documentView();
    return (document != nullptr ? document->documentSize() : QSizeF(0, 0)) + margins;
}

void MVScrollView::changeClipViewScale()
{
    auto* clip = qobject_cast<MVClipView*>(contentView());
    if (clip == nullptr)
        return;
    if (const std::optional<double> scale = fittingScale(neededSize(), size()))
        clip->setScale({*scale, *scale});
    else
        clip->resetScaling();
}

QSize MVScrollView::sizeHint() const
{
    return neededSize().toSize();
}
