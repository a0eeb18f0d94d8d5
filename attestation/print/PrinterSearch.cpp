#include "attestation/print/PrinterSearch.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto usualSearch = 300ms;
constexpr int margin = 24; // pixels

} // namespace

PrinterSearch::PrinterSearch(QWidget* window)
    : QDialog(window)
{
    setWindowTitle(u"Pelmora"_s);
    setWindowModality(Qt::ApplicationModal);
    auto* buttons = new QDialogButtonBox;
    buttons->addButton(u"Annuler"_s, QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* contents = new QVBoxLayout(this);
    contents->setContentsMargins(margin, margin, margin, margin);
    contents->setSpacing(margin);
    contents->setSizeConstraint(QLayout::SetFixedSize);
    contents->addWidget(new QLabel(u"Recherche des imprimantes…"_s));
    contents->addWidget(buttons);
}

void PrinterSearch::showIfItTakesLong()
{
    QTimer::singleShot(usualSearch, this, &QWidget::show);
}
