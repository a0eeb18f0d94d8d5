#include "app/windows/DiagnosisWindow.h"

#include "app/windows/ScreenRoom.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSaveFile>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

DiagnosisWindow::DiagnosisWindow(const QStringList& command, const QStringList& environment, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(u"Diagnostic de la lecture"_s);
    setAttribute(Qt::WA_DeleteOnClose);
    setUpControls();

    // The exit status tells whether cards can be read, not whether there is a text.
    connect(&m_program, &QProcess::finished, this, [this](int, QProcess::ExitStatus end) {
        const QByteArray output = m_program.readAllStandardOutput();
        if (end == QProcess::NormalExit && !output.isEmpty())
            showText(QString::fromUtf8(output).trimmed());
        else
            showFailure();
    });
    connect(&m_program, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            showFailure();
    });
    m_program.setEnvironment(environment);
    m_program.setStandardInputFile(QProcess::nullDevice());
    m_program.setStandardErrorFile(QProcess::nullDevice());
    m_program.start(command.first(), command.sliced(1));
}

DiagnosisWindow::~DiagnosisWindow()
{
    m_program.disconnect(this);
    // A reader's driver may keep it for longer than anybody waits; QProcess then says that it is destroyed running.
    m_program.kill();
    m_program.waitForFinished();
}

void DiagnosisWindow::showOver(QWidget& window, const QStringList& command, const QStringList& environment)
{
    auto* shown = window.findChild<DiagnosisWindow*>();
    if (!shown)
        shown = new DiagnosisWindow(command, environment, &window);
    shown->show();
    shown->raise();
    shown->activateWindow();
}

void DiagnosisWindow::setUpControls()
{
    constexpr QSize size(760, 520); // pixels, for text of the usual size

    m_state = new QLabel(u"Le diagnostic est en cours…"_s, this);
    m_state->setTextFormat(Qt::PlainText);
    m_state->setWordWrap(true);
    m_text = new QPlainTextEdit(this);
    m_text->setReadOnly(true);
    m_text->setAccessibleName(u"Diagnostic"_s);
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    // Tab goes on to the buttons.
    m_text->setTabChangesFocus(true);

    auto* buttons = new QDialogButtonBox(this);
    m_copyButton = buttons->addButton(u"&Copier"_s, QDialogButtonBox::ActionRole);
    m_saveButton = buttons->addButton(u"&Enregistrer…"_s, QDialogButtonBox::ActionRole);
    QPushButton* closeButton = buttons->addButton(u"&Fermer"_s, QDialogButtonBox::RejectRole);
    for (QPushButton* button : {m_copyButton, m_saveButton}) {
        button->setEnabled(false);
        button->setAutoDefault(false);
    }
    closeButton->setDefault(true);
    connect(m_copyButton, &QPushButton::clicked, this, &DiagnosisWindow::copy);
    connect(m_saveButton, &QPushButton::clicked, this, &DiagnosisWindow::chooseFile);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_state);
    layout->addWidget(m_text);
    layout->addWidget(buttons);
    resize(boundedToScreen(*this, size));
    closeButton->setFocus();
}

void DiagnosisWindow::showText(const QString& text)
{
    m_text->setPlainText(text);
    m_state->setText(u"Ce texte ne contient aucune donnée de carte\u00A0: il peut être envoyé à l’assistance."_s);
    m_copyButton->setEnabled(true);
    m_saveButton->setEnabled(true);
    m_text->setFocus();
}

void DiagnosisWindow::showFailure()
{
    m_state->setText(u"Le diagnostic n’a pas pu être fait\u00A0: le service de lecture ne démarre pas."_s);
}

void DiagnosisWindow::copy()
{
    QGuiApplication::clipboard()->setText(m_text->toPlainText());
    m_state->setText(u"Diagnostic copié."_s);
}

void DiagnosisWindow::chooseFile()
{
    auto* panel = new QFileDialog(this, u"Enregistrer le diagnostic"_s, QDir::homePath());
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setOption(QFileDialog::DontUseNativeDialog);
    panel->setDefaultSuffix(u"txt"_s);
    panel->selectFile(u"Diagnostic Pelmora.txt"_s);
    connect(panel, &QFileDialog::fileSelected, this, &DiagnosisWindow::save);
    panel->open();
}

void DiagnosisWindow::save(const QString& path)
{
    QSaveFile file(path);
    const QByteArray text = m_text->toPlainText().toUtf8() + '\n';
    const bool isSaved = file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit();
    m_state->setText(isSaved ? u"Diagnostic enregistré."_s
                             : u"Le diagnostic n’a pas pu être enregistré\u00A0: "_s + file.errorString());
}
