#include "attestation/viewer/AccessiblePage.h"

#include "attestation/page/AttestationContent.h"
#include "attestation/page/AttestationLayout.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/text/TextBreaking.h"
#include "attestation/viewer/MVNewAttestationView.h"
#include "attestation/viewer/PageElement.h"
#include "attestation/viewer/PageTableElement.h"

namespace {

QAccessibleInterface* interfaceOf(const QString& className, QObject* object)
{
    auto* view = qobject_cast<MVNewAttestationView*>(object);
    const bool isPage = view != nullptr && className == QLatin1StringView(view->metaObject()->className());
    return isPage ? new AccessiblePage(*view) : nullptr;
}

// The text in one line, without the page's line breaks.
QString spoken(const QString& text, const PageFont& font)
{
    return shownText(text, font).replace(u'\n', u' ');
}

void tell(QAccessibleInterface* child, QAccessible::Event what)
{
    QAccessibleEvent event(child, what);
    QAccessible::updateAccessibility(&event);
}

} // namespace

AccessiblePage::AccessiblePage(MVNewAttestationView& view)
    : QAccessibleWidget(&view, QAccessible::Document)
{
    addElements();
    m_following = QObject::connect(&view, &MVNewAttestationView::pageChanged, &view, [this] { replaceElements(); });
}

AccessiblePage::~AccessiblePage()
{
    QObject::disconnect(m_following);
}

void AccessiblePage::install()
{
    QAccessible::installFactory(interfaceOf);
}

MVNewAttestationView& AccessiblePage::view() const
{
    return *qobject_cast<MVNewAttestationView*>(object());
}

void AccessiblePage::addElements()
{
    MVNewAttestationView& page = view();
    const PageFonts* fonts = page.fonts();
    if (fonts == nullptr)
        return;

    const AttestationLayout layout(page.page(), page.documentSize(), *fonts);
    if (const std::optional<QRectF> logo = layout.logoBox()) {
        const QString& scheme = page.page().logo->image->title;
        m_children.add(new PageTextElement(page, *this, {QAccessible::Graphic, scheme, *logo}));
    }
    for (const PageText& text : pageTexts(page.page())) {
        const QString name = spoken(text.text, layout.fontOf(text));
        m_children.add(new PageTextElement(page, *this, {QAccessible::StaticText, name, layout.boxOf(text)}));
    }
    const auto shown = [fonts](const QString& text, double size) {
        return spoken(text, fonts->systemFontOfSize(size));
    };
    for (const PageTable& table : pageTables(page.page(), page.documentSize()))
        m_children.add(new PageTableElement(page, *this, table, shown));
}

// Assistive technology is informed, because it keeps what it has read.
void AccessiblePage::replaceElements()
{
    for (int index = 0; index < childCount(); ++index)
        tell(child(index), QAccessible::ObjectDestroyed);
    m_children.clear();
    addElements();
    for (int index = 0; index < childCount(); ++index)
        tell(child(index), QAccessible::ObjectCreated);
}

int AccessiblePage::indexOfChild(const QAccessibleInterface* child) const
{
    return m_children.indexOf(child);
}

QAccessibleInterface* AccessiblePage::childAt(int x, int y) const
{
    return m_children.under({x, y});
}
