#include "attestation/print/PrinterOptions.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QLineEdit>
#include <QPrintEngine>
#include <QPrinter>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Where Qt's CUPS engine keeps what the dialog's "options" and "advanced" pages were set to, as name, value, name...
constexpr auto cupsOptionsKey = static_cast<QPrintEngine::PrintEnginePropertyKey>(0xfe00);

QStringList optionsOfDialog(const QPrinter& printer)
{
    return printer.printEngine()->property(cupsOptionsKey).toStringList();
}

} // namespace

PrinterOptions::PrinterOptions(QPrinter* printer, QList<PrintQueue> queues, QWidget* parent)
    : QPrintDialog(printer, parent)
    , m_queues(std::move(queues))
    , m_file(findChild<QLineEdit*>(u"filename"_s))
    , m_alerts(this)
{
    // The page is one.
    setOptions(QAbstractPrintDialog::PrintToFile | QAbstractPrintDialog::PrintShowPageSize |
               QAbstractPrintDialog::PrintCollateCopies);
    // Qt's check of the fields asks about a file that exists in an event loop of its own, and takes the end of the
    // application for a yes.
    if (const auto* buttons = findChild<QDialogButtonBox*>()) {
        disconnect(buttons, &QDialogButtonBox::accepted, this, nullptr);
        connect(buttons, &QDialogButtonBox::accepted, this, &PrinterOptions::accept);
    }
    // The dialog keeps one paper for all printers, unless it is told that each has its own.
    adoptQueue();
    if (auto* printers = findChild<QComboBox*>(u"printers"_s))
        connect(printers, &QComboBox::currentIndexChanged, this, &PrinterOptions::adoptQueue);
}

std::optional<QString> PrinterOptions::file() const
{
    if (printer()->outputFormat() != QPrinter::PdfFormat)
        return std::nullopt;
    return m_file != nullptr ? QDir::fromNativeSeparators(m_file->text()) : QString();
}

PrintInfo PrinterOptions::defaultsOfChosenQueue() const
{
    const auto chosen = std::ranges::find(m_queues, printer()->printerName(), &PrintQueue::name);
    if (printer()->outputFormat() == QPrinter::NativeFormat && chosen != m_queues.cend())
        return PrintInfo::defaultsOf(*chosen);
    PrintInfo info;
    info.queue = printer()->printerName();
    return info;
}

void PrinterOptions::adoptQueue()
{
    const PaperSheet sheet = defaultsOfChosenQueue().sheet;
    // In full page mode first: otherwise a layout without the printer's own margins would be refused.
    printer()->setFullPage(true);
    printer()->setPageSize(QPageSize(sheet.paper, QPageSize::Point));
    printer()->setPageOrientation(sheet.isLandscape ? QPageLayout::Landscape : QPageLayout::Portrait);
    printer()->setPageMargins(QMarginsF());
}

PrintInfo PrinterOptions::info() const
{
    PrintInfo info = defaultsOfChosenQueue();
    const QPageLayout chosen = printer()->pageLayout();
    const QPageSize own(info.sheet.paper, QPageSize::Point);
    // Another paper than the queue's is named as all print servers name it.
    if (!chosen.pageSize().isEquivalentTo(own))
        info.media = chosen.pageSize().key().toUtf8();
    // Of the chosen layout the margins do not count: the whole sheet is the page's.
    info.sheet = {chosen.pageSize().sizePoints(), chosen.orientation() == QPageLayout::Landscape};

    const QStringList options = optionsOfDialog(*printer());
    for (qsizetype index = 0; index + 1 < options.size(); index += 2) {
        if (!options[index + 1].isEmpty())
            info.set(options[index].toUtf8(), options[index + 1].toUtf8());
    }
    info.set("copies", QByteArray::number(printer()->copyCount()));
    if (printer()->copyCount() > 1)
        info.set("Collate", printer()->collateCopies() ? "True" : "False");
    if (printer()->colorMode() == QPrinter::GrayScale)
        info.set("print-color-mode", "monochrome");
    return info;
}
