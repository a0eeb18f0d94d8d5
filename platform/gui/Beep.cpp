#include "platform/gui/Beep.h"

#include <QApplication>

void beep()
{
    QApplication::beep();
}
