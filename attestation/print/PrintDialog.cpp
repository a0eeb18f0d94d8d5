#include "attestation/print/PrintDialog.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QLineEdit>

using namespace Qt::StringLiterals;

PrintDialog::PrintDialog(QPrinter* printer, QWidget* parent)
    : QPrintDialog(printer, parent)
    , m_file(findChild<QLineEdit*>(u"filename"_s))
    , m_alerts(this)
{
    // Qt's check of the fields asks about a file that exists in an event loop of its own, and takes the end of the
    // application for a yes.
    if (const auto* buttons = findChild<QDialogButtonBox*>()) {
        disconnect(buttons, &QDialogButtonBox::accepted, this, nullptr);
        connect(buttons, &QDialogButtonBox::accepted, this, &PrintDialog::accept);
    }
}

QString PrintDialog::fileName() const
{
    return m_file != nullptr ? QDir::fromNativeSeparators(m_file->text()) : QString();
}

void PrintDialog::setFileName(const QString& fileName)
{
    if (m_file != nullptr)
        m_file->setText(QDir::toNativeSeparators(fileName));
}
