#include "platform/gui/CurrentEntry.h"

#include <QAbstractItemView>
#include <QComboBox>

void tellCurrentEntry(QComboBox& box)
{
    const auto tell = [&box] {
        // Said when the box gets the focus. A disabled box's description says why it is disabled.
        if (box.isEnabled())
            box.setAccessibleDescription(box.currentText());
        // Said when a key changes the entry while the list is closed. Without the focus, the list must not be said.
        if (box.hasFocus())
            box.view()->setCurrentIndex(box.model()->index(box.currentIndex(), 0));
    };
    QObject::connect(&box, &QComboBox::currentIndexChanged, &box, tell);
    tell();
}
