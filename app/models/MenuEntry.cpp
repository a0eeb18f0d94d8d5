#include "app/models/MenuEntry.h"

using namespace Qt::StringLiterals;

MenuEntry MenuEntry::separator()
{
    MenuEntry entry;
    entry.isSeparator = true;
    return entry;
}

QString MenuEntry::actionText() const
{
    QString text = title;
    text.replace(u'&', "&&"_L1);
    // QAction shows text after a tab as a shortcut.
    text.replace(u'\t', u' ');
    return text;
}
