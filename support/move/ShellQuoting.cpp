#include "support/move/ShellQuoting.h"

using namespace Qt::StringLiterals;

QString quotedForShell(QString text)
{
    // Only a quote is special between quotes: it is written outside of them.
    return u'\'' + text.replace(u'\'', R"('\'')"_L1) + u'\'';
}
