#include "app/FrenchTexts.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <memory>

using namespace Qt::StringLiterals;

void installFrenchTexts()
{
    QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
    auto texts = std::make_unique<QTranslator>(QCoreApplication::instance());
    if (texts->load(u"qtbase_fr"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(texts.release()); // the application's from now on
}
