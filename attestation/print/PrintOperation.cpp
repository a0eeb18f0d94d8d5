#include "attestation/print/PrintOperation.h"

#include "attestation/document/AttestationPdf.h"
#include "attestation/print/PrintDialog.h"
#include "attestation/print/PrinterOptions.h"
#include "attestation/print/PrinterSearch.h"
#include "attestation/print/WithoutPrintServer.h"
#include "platform/ObjectText.h"
#include "platform/files/FileWorker.h"
#include "platform/files/PrivateFile.h"
#include "platform/gui/SavingSheet.h"
#include "platform/gui/WindowActivation.h"
#include "support/MXLog.h"
#include "support/MXUtils.h"

#include <QDir>
#include <QFileInfo>
#include <QMessageBox>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

PrintOperation::PrintOperation(AttestationPage page, Preset preset, const PageFonts& fonts, const QString& printHelper,
                               AlertQueue& alerts, QWidget* window)
    : QObject(window)
    , m_page(std::move(page))
    , m_preset(std::move(preset))
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
    // It may refer to the printer.
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
    const bool isAnswered = printWithoutAsking();
    if (!isAnswered)
        openDialog();
    // Once the dialog blocks the windows in its place.
    delete m_search;
    if (queues || isAnswered)
        return;
    const Error& error = queues.error();
    MXLog::logError("Print server: {}", error.localizedDescription());
    m_question->presentError({error.domain(), error.code(),
                              error.localizedDescription() +
                                  u" Pour l’instant, l’attestation ne peut être imprimée que dans un fichier PDF."_s});
}

bool PrintOperation::printWithoutAsking()
{
    const auto queue = std::ranges::find(m_queues, m_preset.queue, &PrintQueue::name);
    if (!m_preset.isWithoutAsking || queue == m_queues.end())
        return false;
    PrintInfo info = PrintInfo::defaultsOf(*queue);
    info.set("copies", "1");
    print(info, std::nullopt);
    return true;
}

void PrintOperation::openDialog()
{
    auto* dialog = new PrintDialog({m_queues, m_preset.queue, m_preset.file}, m_window);
    connect(dialog, &PrintDialog::optionsWanted, this, [this, dialog] {
        // Qt's dialog waits for the server on the interface thread.
        whenServerAnswers([this, dialog] { openOptions(*dialog); });
    });
    show(dialog);
}

// The same question with every setting, in the place of the small dialog.
void PrintOperation::openOptions(const PrintDialog& chosen)
{
    // Never a server that is known to give nothing.
    if (m_queues.isEmpty())
        m_isolation = std::make_unique<WithoutPrintServer>();
    m_printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    m_printer->setDocName(attestationJobName.toString());
    if (const std::optional<QString> file = chosen.file()) {
        m_printer->setOutputFormat(QPrinter::PdfFormat);
        m_printer->setOutputFileName(*file);
    } else {
        m_printer->setPrinterName(chosen.info().queue);
        m_printer->setCopyCount(chosen.copies());
    }
    const QPointer<QDialog> before = m_dialog;
    disconnect(before, nullptr, this, nullptr);
    show(new PrinterOptions(m_printer.get(), m_queues, m_window));
    before->close();
}

template <typename Dialog>
void PrintOperation::show(Dialog* dialog)
{
    m_dialog = dialog;
    m_question = dialog;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    // People's eyes only: the job's name, which others see, is impersonal.
    dialog->setWindowTitle(u"Imprimer l’attestation – %1"_s.arg(objectText(m_page.insuredName)));
    connect(dialog, &Dialog::acceptanceWanted, this, &PrintOperation::accept);
    connect(dialog, &QDialog::accepted, this, &PrintOperation::printChosen);
    connect(dialog, &QDialog::rejected, this, &PrintOperation::cancel);
    // QDialog::open() would make it block its own window alone, and another card could take this one's place.
    dialog->setWindowModality(Qt::ApplicationModal);
    dialog->show();
}

// The server may have stalled since the dialog opened.
void PrintOperation::whenServerAnswers(std::function<void()> proceed)
{
    // A disabled dialog loses its focus.
    const QPointer<QWidget> focused = m_dialog->focusWidget();
    m_dialog->setEnabled(false);
    m_server.listQueues([this, focused, proceed = std::move(proceed)](const PrintAnswer& queues) {
        m_dialog->setEnabled(true);
        if (focused)
            focused->setFocus();
        if (queues)
            proceed();
        else
            m_question->presentError(queues.error());
    });
}

void PrintOperation::accept()
{
    if (const std::optional<QString> file = m_question->file())
        acceptFile(*file);
    else
        whenServerAnswers([this] { m_question->acceptNow(); });
}

void PrintOperation::acceptFile(const QString& path)
{
    const QFileInfo file(path);
    if (file.fileName().isEmpty() || file.isDir())
        m_question->presentError({printErrorDomain.toString(), 0, u"Indiquez le nom du fichier à enregistrer."_s});
    else if (file.exists())
        askToReplace(path);
    else
        m_question->acceptNow();
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
    connect(question, &QDialog::accepted, m_dialog, [this] { m_question->acceptNow(); });
    question->open();
}

void PrintOperation::printChosen()
{
    print(m_question->info(), m_question->file());
}

void PrintOperation::print(const PrintInfo& info, const std::optional<QString>& file)
{
    m_asking = false;
    // It is for the dialog, and the next print's may open before this page is where it goes.
    m_isolation.reset();
    const std::expected<QByteArray, Error> pdf = renderAttestationPdf(m_page, m_fonts, info.sheet);
    if (!pdf) {
        fail(pdf.error());
    } else if (file) {
        writeFile(*file, *pdf);
    } else {
        m_server.print(info.job(*pdf), [this, queue = info.queue](const PrintAnswer& outcome) {
            if (!outcome) {
                fail(outcome.error());
                return;
            }
            Q_EMIT sent(queue);
            deleteLater();
        });
    }
}

void PrintOperation::writeFile(const QString& path, const QByteArray& pdf)
{
    m_savingSheet = new SavingSheet(m_window);
    m_savingSheet->begin();
    const bool isOffered = path == m_preset.file;
    FileWorker::shared().start(this, [this, path, pdf, isOffered]() -> std::function<void()> {
        // The offered folder need not exist.
        if (isOffered)
            static_cast<void>(MXUtils::checkFolderAtPath(QFileInfo(path).path(), true));
        return [this, path, written = writePrivateFile(path, pdf)] { fileIsWritten(path, written); };
    });
}

void PrintOperation::fileIsWritten(const QString& path, const std::expected<void, WriteFailure>& written)
{
    m_savingSheet->end();
    if (!written) {
        fail(Error(printErrorDomain.toString(), 0,
                   u"« %1 » n’a pas été enregistré : %2."_s.arg(path, written.error().reason)));
        return;
    }
    Q_EMIT saved(path);
    deleteLater();
}

void PrintOperation::fail(const Error& error)
{
    deleteLater();
    MXLog::logError("Printing failed: error {}", error.code());
    m_alerts.presentError(error);
}
