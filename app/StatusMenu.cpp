#include "app/StatusMenu.h"

std::vector<MenuEntry> StatusMenu::entries()
{
    std::vector<MenuEntry> entries;
    int tag = ReadTag;
    for (const QStringView title : titles) {
        if (title.startsWith(separatorMark))
            entries.push_back(MenuEntry::separator());
        else
            entries.push_back({.title = title.toString(), .tag = tag++});
    }
    return entries;
}
