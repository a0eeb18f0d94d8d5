#include "app/windows/SpokenNotice.h"

#include <QAccessibleWidget>

namespace {

QAccessibleInterface* interfaceOf(const QString& /*className*/, QObject* object)
{
    auto* notice = qobject_cast<SpokenNotice*>(object);
    return notice ? new QAccessibleWidget(notice, QAccessible::Notification) : nullptr;
}

} // namespace

SpokenNotice::SpokenNotice(QWidget* parent)
    : QWidget(parent)
{
    // Known already when it is installed a second time.
    QAccessible::installFactory(interfaceOf);
    setFixedSize(1, 1);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void SpokenNotice::say(const QString& text)
{
    // It is the appearing that is said.
    hide();
    setAccessibleName(text);
    setVisible(!text.isEmpty());
}
