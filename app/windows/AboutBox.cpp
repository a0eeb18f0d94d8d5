#include "app/windows/AboutBox.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>

using namespace Qt::StringLiterals;

void showAboutBox(QWidget* window)
{
    constexpr int iconSide = 64;
    auto* box = new QMessageBox(QMessageBox::NoIcon, u"À propos de Pelmora"_s,
                                u"<big><b>Pelmora "_s + QCoreApplication::applicationVersion() + u"</b></big>"_s,
                                QMessageBox::NoButton, window);
    box->setTextFormat(Qt::RichText);
    box->setInformativeText(
        u"<p>Pelmora lit la carte Vitale d’un patient et en fait une attestation de droits à l’assurance maladie, "
        "à voir, à imprimer ou à enregistrer.</p>"
        "<p>Les données de la carte ne quittent pas cet ordinateur.</p>"
        "<p>MORVEL</p>"
        "<p><small>Avec Qt, FriBidi et libplist (LGPL), PC/SC Lite (BSD), libsodium (ISC), libxml2, HarfBuzz, "
        "libdeflate et fmt (MIT), CUPS (Apache\u00A02.0). La police de l’attestation est tirée de Roboto (Apache\u00A02.0).</small></p>"_s);
    box->setIconPixmap(window->windowIcon().pixmap(iconSide));
    box->setDefaultButton(box->addButton(u"OK"_s, QMessageBox::AcceptRole));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}
