#include "app/AboutBox.h"

#include <QCoreApplication>
#include <QMessageBox>

using namespace Qt::StringLiterals;

void showAboutBox(QWidget* window)
{
    constexpr int iconSide = 64;
    auto* box = new QMessageBox(QMessageBox::NoIcon, u"À propos de Pelmora"_s,
                                u"Pelmora "_s + QCoreApplication::applicationVersion(), QMessageBox::Ok, window);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(
        u"Pelmora lit la carte Vitale d’un patient et en fait une attestation de droits à l’assurance maladie, "
        "à voir, à imprimer ou à enregistrer.\n\n"
        "Les données de la carte ne quittent pas cet ordinateur.\n\n"
        "MORVEL"_s);
    box->setIconPixmap(window->windowIcon().pixmap(iconSide));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}
