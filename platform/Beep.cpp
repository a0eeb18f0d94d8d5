#include "platform/Beep.h"

#include <QApplication>

void beep()
{
    QApplication::beep();
}
