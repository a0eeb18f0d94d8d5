#include "app/windows/CardFilePanel.h"

#include "app/windows/ScreenRoom.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>

using namespace Qt::StringLiterals;

QPointer<QFileDialog> makeCardFilePanel(QWidget& window, const QString& folder)
{
    constexpr QSize size(720, 480); // pixels

    // The folder exists once something was saved; the panel would open on the program's own otherwise.
    QPointer<QFileDialog> panel(new QFileDialog(&window, u"Sélectionnez un fichier XML"_s,
                                                QFileInfo(folder).isDir() ? folder : QDir::homePath()));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::ExistingFile);
    // The desktops' own panels enter what is opened in lists of recent documents, and the names are patients'.
    panel->setOption(QFileDialog::DontUseNativeDialog);
    // Names alone: sizes and dates would leave no room for them.
    panel->setViewMode(QFileDialog::List);
    panel->resize(boundedToScreen(window, size));
    return panel;
}
