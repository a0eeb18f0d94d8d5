#include "app/models/StatusMenu.h"

std::vector<MenuEntry> StatusMenu::entries()
{
    std::vector<MenuEntry> entries;
    int tag = ReadTag;
    for (const QStringView text : titles) {
        if (text.startsWith(separatorMark))
            entries.push_back(MenuEntry::separator());
        else
            entries.push_back({.title = text.toString(), .tag = tag++});
    }
    return entries;
}
