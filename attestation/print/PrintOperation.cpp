#include "attestation/print/PrintOperation.h"

#include "attestation/document/AttestationPdf.h"
#include "attestation/print/PrintDialog.h"
#include "attestation/print/PrinterSearch.h"
#include "attestation/print/WithoutPrintServer.h"
#include "platform/ObjectText.h"
#include "platform/files/FileWorker.h"
#include "platform/files/PrivateFile.h"
#include "platform/gui/SavingSheet.h"
#include "platform/gui/WindowActivation.h"
#include "support/MXLog.h"

#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QPrintEngine>
#include <QStandardPaths>

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

PrintOperation::PrintOperation(AttestationPage page, const PageFonts& fonts, const QString& printHelper,
                               AlertQueue& alerts, QWidget* window)
    : QObject(window)
    , m_page(std::move(page))
    , m_fonts(fonts)
    , m_alerts(alerts)
    , m_window(window)
    , m_server(printHelper)
{
}

PrintOperation::~PrintOperation()
{
    delete m_search;
    delete m_savingSheet;
    // It refers to the printer.
    delete m_dialog;
}

void PrintOperation::bringToFront()
{
    // What belongs to an iconified window is iconified with it.
    if (m_window->isMinimized())
        ::bringToFront(*m_window);
    if (m_dialog)
        ::bringToFront(*m_dialog);
    else if (m_search)
        ::bringToFront(*m_search);
}

void PrintOperation::run()
{
    m_search = new PrinterSearch(m_window);
    connect(m_search, &QDialog::rejected, this, &PrintOperation::cancel);
    m_search->showIfItTakesLong();
    m_server.listQueues([this](const PrintAnswer& queues) { queuesAreKnown(queues); });
}

// Nothing is printed.
void PrintOperation::cancel()
{
    m_asking = false;
    m_server.cancel();
    deleteLater();
}

void PrintOperation::queuesAreKnown(const PrintAnswer& queues)
{
    m_queues = queues.value_or(QList<PrintQueue>());
    // The dialog asks the server again, on the interface thread: never one that is known to give nothing.
    if (m_queues.isEmpty())
        m_isolation = std::make_unique<WithoutPrintServer>();
    openDialog();
    // Once the dialog blocks the windows in its place.
    delete m_search;
    if (queues)
        return;
    const Error& error = queues.error();
    MXLog::logError("Print server: {}", error.localizedDescription());
    m_dialog->presentError({error.domain(), error.code(),
                            error.localizedDescription() +
                                u" Pour l’instant, l’attestation ne peut être imprimée que dans un fichier PDF."_s});
}

void PrintOperation::openDialog()
{
    m_printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    m_printer->setDocName(attestationJobName.toString());
    m_dialog = new PrintDialog(m_printer.get(), m_window);
    m_dialog->setAttribute(Qt::WA_DeleteOnClose);
    // People's eyes only: the job's name, which others see, is impersonal.
    m_dialog->setWindowTitle(u"Imprimer l’attestation – %1"_s.arg(objectText(m_page.insuredName)));
    // The page is one.
    m_dialog->setOptions(QAbstractPrintDialog::PrintToFile | QAbstractPrintDialog::PrintShowPageSize |
                         QAbstractPrintDialog::PrintCollateCopies);
    // The dialog keeps one paper for all printers, unless it is told that each has its own.
    adoptQueue();
    if (auto* printers = m_dialog->findChild<QComboBox*>(u"printers"_s))
        connect(printers, &QComboBox::currentIndexChanged, this, &PrintOperation::adoptQueue);
    offerFile();
    connect(m_dialog, &PrintDialog::acceptanceWanted, this, &PrintOperation::accept);
    connect(m_dialog, &QDialog::accepted, this, &PrintOperation::print);
    connect(m_dialog, &QDialog::rejected, this, &PrintOperation::cancel);
    // QDialog::open() would make it block its own window alone, and another card could take this one's place.
    m_dialog->setWindowModality(Qt::ApplicationModal);
    m_dialog->show();
}

// A file's name where the dialog would offer a folder alone, which nothing can be written to.
void PrintOperation::offerFile()
{
    const QString offered = m_dialog->fileName();
    if (!offered.isEmpty() && !offered.endsWith(u'/'))
        return;
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString folder = QDir(documents).exists() ? documents : QDir::homePath();
    m_dialog->setFileName(folder + u"/%1.pdf"_s.arg(attestationJobName));
}

PrintInfo PrintOperation::defaultsOfChosenQueue() const
{
    const auto chosen = std::ranges::find(m_queues, m_printer->printerName(), &PrintQueue::name);
    if (m_printer->outputFormat() == QPrinter::NativeFormat && chosen != m_queues.cend())
        return PrintInfo::defaultsOf(*chosen);
    PrintInfo info;
    info.queue = m_printer->printerName();
    return info;
}

void PrintOperation::adoptQueue()
{
    const PaperSheet sheet = defaultsOfChosenQueue().sheet;
    // In full page mode first: otherwise a layout without the printer's own margins would be refused.
    m_printer->setFullPage(true);
    m_printer->setPageSize(QPageSize(sheet.paper, QPageSize::Point));
    m_printer->setPageOrientation(sheet.isLandscape ? QPageLayout::Landscape : QPageLayout::Portrait);
    m_printer->setPageMargins(QMarginsF());
}

PrintInfo PrintOperation::chosenInfo() const
{
    PrintInfo info = defaultsOfChosenQueue();
    const QPageLayout chosen = m_printer->pageLayout();
    const QPageSize own(info.sheet.paper, QPageSize::Point);
    // Another paper than the queue's is named as all print servers name it.
    if (!chosen.pageSize().isEquivalentTo(own))
        info.media = chosen.pageSize().key().toUtf8();
    // Of the chosen layout the margins do not count: the whole sheet is the page's.
    info.sheet = {chosen.pageSize().sizePoints(), chosen.orientation() == QPageLayout::Landscape};

    const QStringList options = optionsOfDialog(*m_printer);
    for (qsizetype index = 0; index + 1 < options.size(); index += 2) {
        if (!options[index + 1].isEmpty())
            info.set(options[index].toUtf8(), options[index + 1].toUtf8());
    }
    info.set("copies", QByteArray::number(m_printer->copyCount()));
    if (m_printer->copyCount() > 1)
        info.set("Collate", m_printer->collateCopies() ? "True" : "False");
    if (m_printer->colorMode() == QPrinter::GrayScale)
        info.set("print-color-mode", "monochrome");
    return info;
}

void PrintOperation::accept()
{
    if (m_printer->outputFormat() == QPrinter::PdfFormat)
        acceptFile();
    else
        acceptPrinter();
}

void PrintOperation::acceptFile()
{
    const QString path = m_dialog->fileName();
    const QFileInfo file(path);
    if (file.fileName().isEmpty() || file.isDir())
        m_dialog->presentError({printErrorDomain.toString(), 0, u"Indiquez le nom du fichier à enregistrer."_s});
    else if (file.exists())
        askToReplace(path);
    else
        m_dialog->acceptNow();
}

void PrintOperation::askToReplace(const QString& path)
{
    auto* question =
        new QMessageBox(QMessageBox::Question, m_dialog->windowTitle(), QString(), QMessageBox::NoButton, m_dialog);
    question->setAttribute(Qt::WA_DeleteOnClose);
    // Names of files are what others chose: nothing in them is markup.
    question->setTextFormat(Qt::PlainText);
    question->setText(u"« %1 » existe déjà.\nVoulez-vous le remplacer\u202F?"_s.arg(QDir::toNativeSeparators(path)));
    question->addButton(u"Remplacer"_s, QMessageBox::AcceptRole);
    question->setDefaultButton(question->addButton(u"Annuler"_s, QMessageBox::RejectRole));
    connect(question, &QDialog::accepted, m_dialog, &PrintDialog::acceptNow);
    question->open();
}

// The server may have stalled since the dialog opened.
void PrintOperation::acceptPrinter()
{
    m_dialog->setEnabled(false);
    m_server.listQueues([this](const PrintAnswer& queues) {
        m_dialog->setEnabled(true);
        if (queues)
            m_dialog->acceptNow();
        else
            m_dialog->presentError(queues.error());
    });
}

void PrintOperation::print()
{
    m_asking = false;
    // It is for the dialog, and the next print's may open before this page is where it goes.
    m_isolation.reset();
    const PrintInfo info = chosenInfo();
    const std::expected<QByteArray, Error> pdf = renderAttestationPdf(m_page, m_fonts, info.sheet);
    if (!pdf)
        finish(std::unexpected(pdf.error()));
    else if (m_printer->outputFormat() == QPrinter::PdfFormat)
        writeFile(*pdf);
    else
        m_server.print(info.job(*pdf), [this](const PrintAnswer& outcome) { finish(outcome); });
}

void PrintOperation::writeFile(const QByteArray& pdf)
{
    const QString path = m_printer->outputFileName();
    m_savingSheet = new SavingSheet(m_window);
    m_savingSheet->begin();
    FileWorker::shared().start(this, [this, path, pdf]() -> std::function<void()> {
        return [this, path, written = writePrivateFile(path, pdf)] { fileIsWritten(path, written); };
    });
}

void PrintOperation::fileIsWritten(const QString& path, const std::expected<void, WriteFailure>& written)
{
    m_savingSheet->end();
    if (written)
        finish({});
    else
        finish(std::unexpected(Error(printErrorDomain.toString(), 0,
                                     u"« %1 » n’a pas été enregistré : %2."_s.arg(path, written.error().reason))));
}

void PrintOperation::finish(const PrintAnswer& outcome)
{
    deleteLater();
    if (outcome)
        return;
    MXLog::logError("Printing failed: error {}", outcome.error().code());
    m_alerts.presentError(outcome.error());
}
