#include "support/move/ShellQuoting.h"

using namespace Qt::StringLiterals;

QString quotedForShell(QString text)
{
    // Between quotes everything stands for itself but a quote: it is written outside of them.
    return u'\'' + text.replace(u'\'', R"('\'')"_L1) + u'\'';
}
