#pragma once

#include <QDialog>

/// The small window that says that the print server is being asked for its printers, with a button to stop that. It
/// blocks all windows, as the dialog that follows does; closing it is the same as the button. Main thread only.
class PrinterSearch final : public QDialog
{
    Q_OBJECT

public:
    explicit PrinterSearch(QWidget* window);

    /// Shows the window unless the printers are known by then, and it is deleted: most often they are there at once.
    void showIfItTakesLong();
};
