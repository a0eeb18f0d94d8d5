#pragma once

#include <QPointer>
#include <QString>

class QFileDialog;
class QWidget;

/// A panel over the window to choose one card XML file, starting in the folder or, if it does not exist, at home. The
/// caller opens it; it is deleted when it is closed. Main thread only.
[[nodiscard]] QPointer<QFileDialog> makeCardFilePanel(QWidget& window, const QString& folder);
