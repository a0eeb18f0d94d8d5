#include "platform/gui/SavingSheet.h"

#include "platform/gui/WindowActivation.h"

#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int margin = 24;
constexpr int textWidth = 44; // average characters of a line

} // namespace

SavingSheet::SavingSheet(QWidget* window, std::chrono::milliseconds patience)
    : QDialog(window, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
    , m_message(new QLabel(this))
{
    setWindowTitle(u"Pelmora"_s);
    setWindowModality(Qt::WindowModal);
    m_message->setTextFormat(Qt::PlainText);
    m_message->setWordWrap(true);
    m_message->setFixedWidth(textWidth * fontMetrics().averageCharWidth());
    auto* bar = new QProgressBar(this);
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    bar->setAccessibleName(u"Enregistrement en cours"_s);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(m_message);
    layout->addWidget(bar);

    m_timer.setSingleShot(true);
    m_timer.setInterval(patience);
    connect(&m_timer, &QTimer::timeout, this, &SavingSheet::showOverWindow);
}

void SavingSheet::begin()
{
    m_message->setText(u"Enregistrement en cours…"_s);
    m_timer.start();
}

void SavingSheet::end()
{
    m_timer.stop();
    if (isVisible())
        done(Accepted);
}

void SavingSheet::announceLeaving()
{
    m_message->setText(u"Enregistrement en cours… Pelmora se fermera ensuite."_s);
    m_timer.stop();
    showOverWindow();
}

void SavingSheet::reject()
{
}

void SavingSheet::showOverWindow()
{
    if (isVisible())
        return;
    QWidget* window = parentWidget();
    if (!window->isVisible() || window->isMinimized())
        bringToFront(*window);
    open();
}
