#include "app/windows/CardFilePanel.h"

#include "app/windows/ScreenRoom.h"

#include <QDir>
#include <QFileDialog>

using namespace Qt::StringLiterals;

QPointer<QFileDialog> makeCardFilePanel(QWidget& window, const QString& folder)
{
    constexpr QSize size(720, 480); // pixels

    // The folder is missing before the first save; the panel would then start in the current folder.
    QPointer<QFileDialog> panel(new QFileDialog(&window, u"Sélectionnez un fichier XML"_s,
                                                QFileInfo(folder).isDir() ? folder : QDir::homePath()));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::ExistingFile);
    // A card's file may have any name.
    panel->setNameFilters({u"Fichiers de carte (*.xml)"_s, u"Tous les fichiers (*)"_s});
    // Native panels add the file, whose name is a patient's, to the desktop's list of recent documents.
    panel->setOption(QFileDialog::DontUseNativeDialog);
    // Without sizes and dates, which leave little room for names.
    panel->setViewMode(QFileDialog::List);
    panel->resize(boundedToScreen(window, size));
    return panel;
}
