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
    // Installing it twice has no effect.
    QAccessible::installFactory(interfaceOf);
    setFixedSize(1, 1);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void SpokenNotice::say(const QString& text)
{
    // Screen readers announce a notification when it becomes visible.
    hide();
    setAccessibleName(text);
    setVisible(!text.isEmpty());
}
