#include "attestation/print/PrintDialog.h"

#include "platform/gui/CurrentEntry.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int mostCopies = 99;
constexpr int usualWidth = 32; // average characters

} // namespace

PrintDialog::PrintDialog(Offer offer, QWidget* parent)
    : QDialog(parent)
    , m_offer(std::move(offer))
    , m_printers(new QComboBox)
    , m_copies(new QSpinBox)
    , m_fileRow(new QWidget)
    , m_file(new QLineEdit(QDir::toNativeSeparators(m_offer.file)))
    , m_alerts(this)
{
    auto* contents = new QVBoxLayout(this);
    contents->setSizeConstraint(QLayout::SetFixedSize);
    auto* form = new QFormLayout;
    contents->addLayout(form);
    offerQueues();
    addFields(*form);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText(u"Imprimer"_s);
    buttons->button(QDialogButtonBox::Cancel)->setText(u"Annuler"_s);
    for (QAbstractButton* button : buttons->buttons())
        button->setIcon({});
    QPushButton* options = buttons->addButton(u"&Options…"_s, QDialogButtonBox::ResetRole);
    options->setAutoDefault(false);
    options->setToolTip(u"Papier, couleur et autres réglages de l’imprimante"_s);
    connect(options, &QPushButton::clicked, this, &PrintDialog::optionsWanted);
    connect(buttons, &QDialogButtonBox::accepted, this, &PrintDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    contents->addWidget(buttons);
    // In reading order. Without this, the Tab key skips the other two buttons.
    setTabOrder(options, buttons->button(QDialogButtonBox::Ok));
    setTabOrder(buttons->button(QDialogButtonBox::Ok), buttons->button(QDialogButtonBox::Cancel));

    connect(m_printers, &QComboBox::currentIndexChanged, this, &PrintDialog::showFields);
    showFields();
    // So that a number and Enter print that many copies.
    m_copies->selectAll();
    (isFileChosen() ? static_cast<QWidget*>(m_file) : m_copies)->setFocus();
}

void PrintDialog::offerQueues()
{
    // Long names do not widen the dialog.
    m_printers->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_printers->setMinimumContentsLength(usualWidth);
    for (const PrintQueue& queue : std::as_const(m_offer.queues))
        m_printers->addItem(queue.name);
    m_printers->addItem(u"Imprimer dans un fichier (PDF)"_s);
    tellCurrentEntry(*m_printers);

    auto chosen = std::ranges::find(m_offer.queues, m_offer.queue, &PrintQueue::name);
    if (chosen == m_offer.queues.end())
        chosen = std::ranges::find(m_offer.queues, true, &PrintQueue::isDefault);
    if (chosen != m_offer.queues.end())
        m_printers->setCurrentIndex(static_cast<int>(chosen - m_offer.queues.begin()));
}

void PrintDialog::addFields(QFormLayout& form)
{
    m_copies->setObjectName(u"copies"_s);
    m_copies->setRange(1, mostCopies);
    m_file->setObjectName(u"filename"_s);
    m_file->setMinimumWidth(usualWidth * m_file->fontMetrics().averageCharWidth());
    auto* choose = new QPushButton(u"C&hoisir…"_s);
    choose->setAutoDefault(false);
    connect(choose, &QPushButton::clicked, this, &PrintDialog::chooseFile);
    auto* row = new QHBoxLayout(m_fileRow);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_file);
    row->addWidget(choose);

    form.addRow(u"I&mprimante\u00A0:"_s, m_printers);
    form.addRow(u"&Copies\u00A0:"_s, m_copies);
    auto* fileLabel = new QLabel(u"&Fichier\u00A0:"_s);
    fileLabel->setBuddy(m_file);
    // Screen readers find a label only among the field's own neighbours.
    m_file->setAccessibleName(u"Fichier"_s);
    form.addRow(fileLabel, m_fileRow);
}

void PrintDialog::showFields()
{
    auto* form = qobject_cast<QFormLayout*>(layout()->itemAt(0)->layout());
    form->setRowVisible(m_copies, !isFileChosen());
    form->setRowVisible(m_fileRow, isFileChosen());
}

bool PrintDialog::isFileChosen() const
{
    return m_printers->currentIndex() >= m_offer.queues.size();
}

PrintInfo PrintDialog::info() const
{
    if (isFileChosen())
        return {};
    PrintInfo info = PrintInfo::defaultsOf(m_offer.queues.at(m_printers->currentIndex()));
    info.set("copies", QByteArray::number(copies()));
    return info;
}

std::optional<QString> PrintDialog::file() const
{
    return isFileChosen() ? std::optional(QDir::fromNativeSeparators(m_file->text())) : std::nullopt;
}

int PrintDialog::copies() const
{
    return m_copies->value();
}

void PrintDialog::chooseFile()
{
    auto* panel = new QFileDialog(this, u"Enregistrer le fichier PDF"_s);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    // The dialog itself asks, when it is accepted.
    panel->setOption(QFileDialog::DontConfirmOverwrite);
    panel->setNameFilter(u"Documents PDF (*.pdf)"_s);
    panel->setDefaultSuffix(u"pdf"_s);
    panel->setSupportedSchemes({u"file"_s});
    panel->selectFile(QDir::fromNativeSeparators(m_file->text()));
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& path) { m_file->setText(QDir::toNativeSeparators(path)); });
    panel->open();
}
