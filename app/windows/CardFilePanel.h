#pragma once

#include <QPointer>
#include <QString>

class QFileDialog;
class QWidget;

/// The panel over the window in which one card XML file is chosen. Starts in the folder or, where that is none, at
/// home. The caller opens it; it is deleted when it closes, or with the window. Main thread only.
[[nodiscard]] QPointer<QFileDialog> makeCardFilePanel(QWidget& window, const QString& folder);
